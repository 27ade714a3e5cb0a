// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "pluginstage.h"

#include "finding.h"

#include <QtCore/QCoreApplication>

PluginStage::PluginStage(TestBed &bed)
    : m_bed(bed),
      m_plugin(new CallProviderFactory),
      m_addedBefore(bed.bus().broadcastsOfAdded()),
      m_removedBefore(bed.bus().broadcastsOfRemoved()),
      m_descriptorsBefore(TestBed::openDescriptors())
{
}

std::string PluginStage::name(int application)
{
    std::string &name = m_names[application];
    if (name.empty())
        name = m_bed.bus().join();
    return name;
}

void PluginStage::send(int application, Message message) { m_bed.bus().send(name(application), std::move(message)); }

Message PluginStage::takeRequest(int application)
{
    settle();
    return m_bed.bus().takeRequest(name(application));
}

void PluginStage::leave(int application)
{
    const auto leaving = m_names.find(application);
    if (leaving == m_names.end())
        return;
    m_bed.bus().leave(leaving->second);
    m_names.erase(leaving);
}

void PluginStage::settle() { m_bed.settle(); }

void PluginStage::announceOwner(const std::string &name, const std::string &before, const std::string &after)
{
    m_bed.bus().announceOwner(name, before, after);
}

void PluginStage::distort(Query query, Answer answer) { m_bed.bus().distort(query, answer); }

void PluginStage::act(const HostStep &step)
{
    // To what is there when the messages before have been handled.
    m_bed.settle();
    if (step.kind == HostStep::React)
        m_host.reactWith({HostStep::Kind(step.target % (HostStep::ToggleMute + 1)), step.target, step.text});
    else if (!actOnPlugin(step))
        m_host.act(step);
}

bool PluginStage::actOnPlugin(const HostStep &step)
{
    switch (step.kind) {
    case HostStep::Initialize:
        m_isExported = m_plugin->initialize() || m_isExported;
        return true;
    case HostStep::Configure:
        m_plugin->configure(&m_host);
        return true;
    case HostStep::ConfigureWithoutHost:
        m_plugin->configure(nullptr);
        return true;
    case HostStep::Idle:
        require(!m_plugin->pluginId().isEmpty() && m_plugin->start() && m_plugin->suspend() && m_plugin->resume(),
            "the plug-in refuses to idle");
        m_plugin->finalize();
        return true;
    case HostStep::Reload:
        m_plugin.reset();
        m_host.forget();
        m_plugin.reset(new CallProviderFactory);
        m_isExported = false;
        return true;
    default:
        return false;
    }
}

void PluginStage::finish()
{
    m_bed.settle();
    requireNoDescriptorHeld();
    while (!m_names.empty())
        leave(m_names.begin()->first);
    m_bed.settle();
    m_bed.settle(); // what was deleted behind the first has sent its farewells
    m_host.requireEmpty();
    requireBroadcasts();
    if (m_isExported)
        requireNobodyListed();
    m_plugin.reset();
    m_host.forget();
    m_bed.settle();
    m_bed.bus().forget();
    requireNoDescriptorHeld();
}

/** Nothing of a message outlives its handling, not even while the call is up. */
void PluginStage::requireNoDescriptorHeld() const
{
    require(TestBed::openDescriptors() <= m_descriptorsBefore, "a descriptor that came in a message is held");
}

void PluginStage::requireNobodyListed()
{
    const Message list = m_bed.call(
        makeCall(StubBus::clientName(), "/zelkovar/call/service", "zelkovar.Call.ServiceManager1", "ListCallManagers"));
    require(dbus_message_has_signature(list.get(), "a(so)"), "ListCallManagers is not answered with a list");
    DBusMessageIter arguments;
    dbus_message_iter_init(list.get(), &arguments);
    require(dbus_message_iter_get_element_count(&arguments) == 0, "somebody is registered who is gone");
}

/** Whatever a report held: who listens hears of the call. */
void PluginStage::requireBroadcasts() const
{
    require(m_bed.bus().broadcastsOfAdded() - m_addedBefore >= m_host.added(), "a call was added and not broadcast");
    require(m_bed.bus().broadcastsOfRemoved() - m_removedBefore >= m_host.removed(),
        "a call was removed and not broadcast");
}
