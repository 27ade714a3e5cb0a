// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "callobject.h"

#include "commandinterface.h"
#include "logging.h"

#include <QtDBus/QDBusMessage>

namespace Ringlet {

CallObject::CallObject(const QString &path, const CallDescription &description, const QDBusConnection &connection,
    CommandReceiver &receiver)
    : m_path(path),
      m_description(description),
      m_status(description.incoming ? CallStatus::Incoming : CallStatus::Dialing),
      m_connection(connection),
      m_receiver(receiver)
{
}

QVariantMap CallObject::properties() const
{
    return {{QStringLiteral("Holdable"), m_description.holdable}, {QStringLiteral("Incoming"), m_description.incoming},
        {QStringLiteral("LocalHandle"), m_description.localAddress},
        {QStringLiteral("LocalName"), m_description.localName}, {QStringLiteral("RemoteHandle"), m_description.address},
        {QStringLiteral("RemoteName"), m_description.remoteName}, {QStringLiteral("Status"), quint32(m_status)},
        {QStringLiteral("Uri"), m_description.address}};
}

BusObject::Interfaces CallObject::makeInterfaces(const HostLink &host) const
{
    BusObject::Interfaces interfaces;
    interfaces.push_back(std::make_unique<CommandInterface>(callInterface, *this, host));
    if (m_description.tones)
        interfaces.push_back(std::make_unique<CommandInterface>(dtmfInterface, *this, host));
    if (m_description.audioControl)
        interfaces.push_back(std::make_unique<CommandInterface>(audioInterface, *this, host));
    return interfaces;
}

void CallObject::sendStatus() { sendSignal(callInterface, QStringLiteral("StatusChanged"), {quint32(m_status)}); }

void CallObject::sendMuteRequest(bool mute) { sendSignal(audioInterface, QStringLiteral("RequestMute"), {mute}); }

void CallObject::sendRouteRequest(const QString &input, const QString &output)
{
    sendSignal(audioInterface, QStringLiteral("RequestAudioRoute"), {input, output});
}

void CallObject::sendSignal(const QString &interface, const QString &member, const QVariantList &arguments)
{
    qCDebug(client).noquote() << m_path << "sends" << member << arguments;
    QDBusMessage signal = QDBusMessage::createSignal(m_path, interface, member);
    signal.setArguments(arguments);
    m_connection.send(signal);
}

} // namespace Ringlet
