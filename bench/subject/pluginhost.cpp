// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "pluginhost.h"

#include "audiostate.h"

#include <QtCore/QDebug>
#include <QtCore/QPluginLoader>
#include <abstractvoicecallhandler.h>
#include <abstractvoicecallmanagerplugin.h>
#include <abstractvoicecallprovider.h>
#include <common/trace.h>

void CallList::addProvider(AbstractVoiceCallProvider *provider)
{
    connect(provider, &AbstractVoiceCallProvider::voiceCallAdded, this, &CallList::addCall);
    connect(provider, &QObject::destroyed, this, &CallList::managerGone);
}

void CallList::addCall(AbstractVoiceCallHandler *call)
{
    emit callAdded(call);
    connect(call, &AbstractVoiceCallHandler::statusChanged, this, [=] { emit statusChanged(call); });
    connect(call, &QObject::destroyed, this, [=] {
        m_calls.removeOne(call);
        emit callGone();
    });
    m_calls.append(call);
}

QString CallList::newHandlerId() { return QString::number(++m_ids); }

AudioRouteState CallList::audioRouteState() const { return usualAudioState(); }

PluginHost::PluginHost()
{
    // The time is taken first of all; what a flooder's call does is then passed over.
    connect(&m_callList, &CallList::statusChanged, this, [](AbstractVoiceCallHandler *call) {
        const Event event = eventNow(EventKind::Status);
        if (!call->uri().startsWith(QLatin1String(floodUri)))
            report(event);
    });
    connect(&m_callList, &CallList::callAdded, this, [] { report(eventNow(EventKind::CallAdded)); });
    connect(&m_callList, &CallList::callGone, this, [] { report(eventNow(EventKind::CallGone)); });
    connect(&m_callList, &CallList::managerGone, this, [] { report(eventNow(EventKind::ManagerGone)); });
}

AbstractVoiceCallManagerPlugin *PluginHost::load(const QString &file)
{
    QPluginLoader loader(file);
    auto *plugin = qobject_cast<AbstractVoiceCallManagerPlugin *>(loader.instance());
    if (!plugin)
        qCritical() << "cannot load" << file << loader.errorString();
    else if (plugin->initialize())
        return plugin;
    else
        qCritical() << "the plug-in's object could not be exported";
    return nullptr;
}

void PluginHost::command(Command command, uint32_t call)
{
    AbstractVoiceCallHandler *handler = m_callList.calls().at(int(call));
    if (command == Command::Answer)
        handler->answer();
    else if (command == Command::Hold)
        handler->hold(true);
    else
        handler->sendDtmf(QStringLiteral("1"));
}

void PluginHost::changeRoute() { emit m_callList.selectedInputDeviceChanged(); }

void PluginHost::changeDevices() { emit m_callList.devicesChanged(); }

// The plug-in's own macro, in a loop of its own.
void PluginHost::trace(uint32_t lines)
{
    for (uint32_t i = 0; i < lines; ++i)
        RINGLET_TRACE();
}
