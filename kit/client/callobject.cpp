// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "callobject.h"

#include "logging.h"
#include "propertiesinterface.h"

#include <QtDBus/QDBusError>
#include <algorithm>

namespace Ringlet {

struct CallObject::Method
{
    QString interface;
    QString member;
    /** Of the arguments; of their end, where the host decides how the first looks. */
    QString signature;
    bool beginsWithDevices;
    void (*handle)(CommandReceiver &receiver, const QVariantList &arguments);

    bool takes(const QString &given) const
    {
        return beginsWithDevices ? given.startsWith(QLatin1Char('a')) && given.endsWith(signature) : given == signature;
    }
};

// The three arguments that both audio updates end with.
static AudioRoute readRoute(const QVariantList &arguments)
{
    AudioRoute route;
    route.microphoneMuted = arguments.at(0).toBool();
    route.input = arguments.at(1).toString();
    route.output = arguments.at(2).toString();
    return route;
}

const QVector<CallObject::Method> &CallObject::methods()
{
    static const QVector<Method> methods = {
        {callInterface, QStringLiteral("Accept"), QString(), false,
            [](CommandReceiver &receiver, const QVariantList &) { receiver.accept(); }},
        {callInterface, QStringLiteral("Reject"), QStringLiteral("u"), false,
            [](CommandReceiver &receiver, const QVariantList &arguments) {
                receiver.reject(arguments.at(0).toUInt());
            }},
        {callInterface, QStringLiteral("SetHold"), QStringLiteral("b"), false,
            [](CommandReceiver &receiver, const QVariantList &arguments) {
                receiver.setHold(arguments.at(0).toBool());
            }},
        {dtmfInterface, QStringLiteral("SendDTMF"), QStringLiteral("s"), false,
            [](CommandReceiver &receiver, const QVariantList &arguments) {
                receiver.sendTones(arguments.at(0).toString());
            }},
        {audioInterface, QStringLiteral("UpdateAudioRouteState"), QStringLiteral("bss"), true,
            [](CommandReceiver &receiver, const QVariantList &arguments) {
                receiver.updateAudio(readDevices(arguments.at(0)), readRoute(arguments.mid(1)));
            }},
        {audioInterface, QStringLiteral("UpdateAudioRoute"), QStringLiteral("bss"), false,
            [](CommandReceiver &receiver, const QVariantList &arguments) {
                receiver.updateAudioRoute(readRoute(arguments));
            }},
    };
    return methods;
}

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

bool CallObject::offers(const QString &interface) const
{
    return interface == callInterface || (interface == dtmfInterface && m_description.tones)
        || (interface == audioInterface && m_description.audioControl);
}

InterfaceMap CallObject::interfaces() const
{
    InterfaceMap interfaces;
    interfaces.insert(callInterface, properties());
    for (const QString &interface : {dtmfInterface, audioInterface}) {
        if (offers(interface))
            interfaces.insert(interface, {});
    }
    return interfaces;
}

QDBusMessage CallObject::handle(const QDBusMessage &message)
{
    if (message.interface() == QLatin1String("org.freedesktop.DBus.Properties"))
        return answerPropertiesCall(message, interfaces());
    return dispatch(message);
}

// A call without an interface name is legal, and means the first method of that name.
QDBusMessage CallObject::dispatch(const QDBusMessage &message)
{
    const auto method = std::find_if(methods().begin(), methods().end(), [&](const Method &candidate) {
        return message.member() == candidate.member && offers(candidate.interface)
            && (message.interface().isEmpty() || message.interface() == candidate.interface);
    });
    if (method == methods().end())
        return message.createErrorReply(QDBusError::UnknownMethod,
            QStringLiteral("%1 has no method %2.%3").arg(m_path, message.interface(), message.member()));
    if (!method->takes(message.signature()))
        return message.createErrorReply(QDBusError::InvalidArgs,
            QStringLiteral("%1 takes \"%2%3\", not \"%4\"")
                .arg(method->member, QLatin1String(method->beginsWithDevices ? "a(sibbsa{sv})" : ""), method->signature,
                    message.signature()));
    qCDebug(client).noquote() << m_path << "received" << message.member() << message.arguments();
    method->handle(m_receiver, message.arguments());
    return message.createReply();
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
