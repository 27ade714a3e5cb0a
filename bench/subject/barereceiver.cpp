// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "barereceiver.h"

#include "audiostate.h"

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>

static void sendAudioState(const BareCall *call)
{
    const AudioRouteState &state = usualAudioState();
    call->audioControlProxy->UpdateAudioRouteState(
        state.devices, state.microphoneMuted, state.inputDeviceId, state.outputDeviceId);
}

static void broadcast(const char *member, const BareCall *call, const QVariant &what)
{
    QDBusMessage message = QDBusMessage::createSignal(QStringLiteral("/zelkovar/call/service"),
        QStringLiteral("zelkovar.Call.ServiceManager1"), QLatin1String(member));
    message << call->callProxy->service() << QVariant::fromValue(QDBusObjectPath(call->callProxy->path())) << what;
    QDBusConnection::sessionBus().send(message);
}

BareReceiver::BareReceiver(Broadcasts broadcasts)
    : m_broadcasts(broadcasts),
      m_registry(broadcasts == Broadcasts::Relayed)
{
    connect(&m_registry, &BareRegistry::managerAdded, this, &BareReceiver::addManager);
}

void BareReceiver::addManager(BareManager *manager)
{
    connect(manager, &BareManager::callAdded, this, &BareReceiver::addCall);
    connect(manager, &BareManager::callRemoved, this, &BareReceiver::removeCall);
    connect(manager, &QObject::destroyed, this, [] { report(eventNow(EventKind::ManagerGone)); });
}

void BareReceiver::addCall(BareCall *call)
{
    if (m_broadcasts != Broadcasts::None && call->audioControlProxy)
        sendAudioState(call);
    if (m_broadcasts == Broadcasts::Sent)
        broadcast("InterfacesAdded", call, QVariant::fromValue(call->interfaces()));
    else if (m_broadcasts == Broadcasts::Relayed)
        emit m_registry.InterfacesAdded(
            call->callProxy->service(), QDBusObjectPath(call->callProxy->path()), call->interfaces());
    report(eventNow(EventKind::CallAdded));
    connect(call, &BareCall::statusChanged, this, [call] {
        const Event event = eventNow(EventKind::Status);
        if (!call->isFlood())
            report(event);
    });
    connect(call, &QObject::destroyed, this, [] { report(eventNow(EventKind::CallGone)); });
    m_calls.append(call);
}

void BareReceiver::removeCall(BareCall *call)
{
    const QStringList interfaces = call->interfaces().keys();
    if (m_broadcasts == Broadcasts::Sent)
        broadcast("InterfacesRemoved", call, interfaces);
    else if (m_broadcasts == Broadcasts::Relayed)
        emit m_registry.InterfacesRemoved(
            call->callProxy->service(), QDBusObjectPath(call->callProxy->path()), interfaces);
    m_calls.removeOne(call);
}

void BareReceiver::command(Command command, uint32_t call)
{
    const BareCall *bare = m_calls.at(int(call));
    if (command == Command::Answer)
        bare->callProxy->asyncCall(QStringLiteral("Accept"));
    else if (command == Command::Hold)
        bare->callProxy->asyncCall(QStringLiteral("SetHold"), true);
    else
        bare->dtmfProxy->asyncCall(QStringLiteral("SendDTMF"), QStringLiteral("1"));
}

void BareReceiver::changeRoute()
{
    const AudioRouteState &state = usualAudioState();
    for (const BareCall *call : qAsConst(m_calls))
        call->audioControlProxy->UpdateAudioRoute(state.microphoneMuted, state.inputDeviceId, state.outputDeviceId);
}

void BareReceiver::changeDevices()
{
    for (const BareCall *call : qAsConst(m_calls))
        sendAudioState(call);
}
