// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "remotecontrol.h"

#include "fakehandler.h"
#include "fakeprovider.h"

#include <voicecallmanagerinterface.h>

#include <QtCore/QThread>
#include <QtDBus/QDBusConnection>
#include <dbus/dbus.h>

RemoteControl::RemoteControl(const QString &path)
    : m_published(QDBusConnection::sessionBus().registerObject(path, this, QDBusConnection::ExportAllSlots))
{
}

RemoteControl::~RemoteControl()
{
    // As a plug-in may go in any state, it tells the host nothing here.
    qDeleteAll(m_providers);
}

void RemoteControl::configure(VoiceCallManagerInterface *manager)
{
    m_manager = manager;
    const auto record = [this](const char *signal) { return [=] { noteAudio(QLatin1String(signal)); }; };
    connect(manager, &VoiceCallManagerInterface::devicesChanged, this, record("devices"));
    connect(manager, &VoiceCallManagerInterface::selectedInputDeviceChanged, this, record("input"));
    connect(manager, &VoiceCallManagerInterface::selectedOutputDeviceChanged, this, record("output"));
    connect(manager, &VoiceCallManagerInterface::microphoneMutedChanged, this, record("mute"));
}

void RemoteControl::noteAudio(const QString &signal)
{
    const AudioRouteState state = m_manager->audioRouteState();
    QStringList ids;
    for (const AudioDevice &device : state.devices)
        ids.append(device.id);
    note(QStringLiteral("%1: %2 %3 %4 %5")
             .arg(signal, ids.join(QLatin1Char(',')), state.inputDeviceId, state.outputDeviceId,
                 state.microphoneMuted ? QStringLiteral("muted") : QStringLiteral("open")));
}

QStringList RemoteControl::TakeNotes()
{
    QStringList taken;
    taken.swap(m_notes);
    return taken;
}

// --- Providers

FakeProvider *RemoteControl::makeProvider(const QString &id) { return m_providers[id] = new FakeProvider(id, nullptr); }

void RemoteControl::AddProvider(const QString &id) { m_manager->addProvider(makeProvider(id)); }

void RemoteControl::AddProviderWithCall(const QString &id, const QVariantMap &state)
{
    FakeProvider *provider = makeProvider(id);
    makeHandler(provider, state);
    m_manager->addProvider(provider);
}

void RemoteControl::AddTwinOfProvider(const QString &id)
{
    FakeProvider twin(id, nullptr);
    m_manager->addProvider(&twin);
}

void RemoteControl::RemoveProvider(const QString &id)
{
    FakeProvider *provider = m_providers.take(id);
    m_manager->removeProvider(provider);
    provider->deleteLater();
}

void RemoteControl::DestroyProvider(const QString &id) { delete m_providers.take(id); }

// --- Calls

FakeHandler *RemoteControl::makeHandler(FakeProvider *provider, const QVariantMap &state)
{
    const QString id = state.value(QStringLiteral("HandlerId"), m_manager->newHandlerId()).toString();
    auto *handler = new FakeHandler(id, state, provider, [this](const QString &text) { note(text); });
    connect(handler, &FakeHandler::leaving, this, [=] { RemoveCall(id); });
    provider->handlers.insert(id, handler);
    return handler;
}

QString RemoteControl::AddCall(const QString &providerId, const QVariantMap &state)
{
    FakeProvider *provider = m_providers.value(providerId);
    FakeHandler *handler = makeHandler(provider, state);
    emit provider->voiceCallAdded(handler);
    emit provider->voiceCallsChanged();
    return handler->handlerId();
}

FakeProvider *RemoteControl::providerOf(const QString &id) const
{
    for (FakeProvider *provider : m_providers) {
        if (provider->handlers.contains(id))
            return provider;
    }
    return nullptr;
}

void RemoteControl::ChangeCall(const QString &id, const QVariantMap &changes, const QString &signal)
{
    providerOf(id)->handlers.value(id)->change(changes, signal);
}

FakeHandler *RemoteControl::takeCall(const QString &id)
{
    FakeProvider *provider = providerOf(id);
    FakeHandler *handler = provider->handlers.take(id);
    handler->deleteLater();
    emit provider->voiceCallRemoved(id);
    emit provider->voiceCallsChanged();
    return handler;
}

void RemoteControl::RemoveCall(const QString &id) { takeCall(id); }

void RemoteControl::RemoveCallThatGoesOnTalking(const QString &id)
{
    takeCall(id)->change({{QStringLiteral("Status"), 1}}, QStringLiteral("statusChanged"));
}

void RemoteControl::DestroyCall(const QString &id) { delete providerOf(id)->handlers.take(id); }

void RemoteControl::RepeatCall(const QString &id)
{
    FakeProvider *provider = providerOf(id);
    emit provider->voiceCallAdded(provider->handlers.value(id));
}

void RemoteControl::AnnounceNull(const QString &provider) { emit m_providers.value(provider)->voiceCallAdded(nullptr); }

// --- Audio

void RemoteControl::RequestMute(bool mute) { emit m_manager->setMuteMicrophoneRequested(mute); }

void RemoteControl::SelectInput(const QString &id) { m_manager->selectInputDevice(id); }

void RemoteControl::SelectOutput(const QString &id) { m_manager->selectOutputDevice(id); }

void RemoteControl::SelectInputWheneverDevicesChange(const QString &id)
{
    connect(m_manager, &VoiceCallManagerInterface::devicesChanged, this, [=] { m_manager->selectInputDevice(id); });
}

// --- What goes wrong around the host

void RemoteControl::Deafen()
{
    dbus_connection_set_max_received_size(
        static_cast<DBusConnection *>(QDBusConnection::sessionBus().internalPointer()), 1);
}

void RemoteControl::KeepBusy(int milliseconds) { QThread::msleep(ulong(milliseconds)); }
