// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "barereceiver.h"

#include "audiostate.h"

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>

static const AudioRouteState &audioState()
{
    static const AudioRouteState state = usualAudioState();
    return state;
}

static void sendAudioState(const BareCall *call)
{
    call->audioControlProxy->UpdateAudioRouteState(
        audioState().devices, audioState().microphoneMuted, audioState().inputDeviceId, audioState().outputDeviceId);
}

static void broadcast(const char *member, const BareCall *call, const QVariant &what)
{
    QDBusMessage message = QDBusMessage::createSignal(QStringLiteral("/zelkovar/call/service"),
        QStringLiteral("zelkovar.Call.ServiceManager1"), QLatin1String(member));
    message << call->callProxy->service() << QVariant::fromValue(QDBusObjectPath(call->callProxy->path())) << what;
    QDBusConnection::sessionBus().send(message);
}

BareReceiver::BareReceiver(bool sends) : m_sends(sends)
{
    connect(&m_registry, &BareRegistry::managerAdded, this, &BareReceiver::addManager);
}

void BareReceiver::addManager(BareManager *manager)
{
    connect(manager, &BareManager::callAdded, this, &BareReceiver::addCall);
    connect(manager, &BareManager::callRemoved, this, &BareReceiver::removeCall);
    connect(manager, &QObject::destroyed, this, [] { report(EventKind::ManagerGone); });
}

void BareReceiver::addCall(BareCall *call)
{
    if (m_sends && call->audioControlProxy)
        sendAudioState(call);
    if (m_sends)
        broadcast("InterfacesAdded", call, QVariant::fromValue(call->interfaces()));
    report(EventKind::CallAdded);
    connect(call, &BareCall::statusChanged, this, [call] {
        const Event event = {EventKind::Status, now(), 0, 0, 0};
        if (!call->isFlood())
            report(event);
    });
    connect(call, &QObject::destroyed, this, [] { report(EventKind::CallGone); });
    m_calls.append(call);
}

void BareReceiver::removeCall(BareCall *call)
{
    if (m_sends)
        broadcast("InterfacesRemoved", call, QStringList(call->interfaces().keys()));
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
    for (const BareCall *call : qAsConst(m_calls))
        call->audioControlProxy->UpdateAudioRoute(
            audioState().microphoneMuted, audioState().inputDeviceId, audioState().outputDeviceId);
}

void BareReceiver::changeDevices()
{
    for (const BareCall *call : qAsConst(m_calls))
        sendAudioState(call);
}
