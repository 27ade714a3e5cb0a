// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "callobject.h"

#include "callstatus.h"
#include "propertiesinterface.h"
#include "words.h"

#include <QtDBus/QDBusError>
#include <algorithm>

static const QString callInterface = QStringLiteral("zelkovar.Call.Call1");
static const QString dtmfInterface = QStringLiteral("zelkovar.Call.DTMF1");
static const QString audioInterface = QStringLiteral("zelkovar.Call.AudioControl1");

static QString onOff(bool on) { return on ? QStringLiteral("on") : QStringLiteral("off"); }

static QString routeText(const AudioRoute &route)
{
    return QStringLiteral("muted=%1 input=%2 output=%3")
        .arg(route.muted ? QStringLiteral("yes") : QStringLiteral("no"), quoted(route.input), quoted(route.output));
}

// The three arguments that both audio updates end with.
static AudioRoute readRoute(const QVariantList &arguments)
{
    AudioRoute route;
    route.muted = arguments.at(0).toBool();
    route.input = arguments.at(1).toString();
    route.output = arguments.at(2).toString();
    return route;
}

static QVariantMap callProperties(const Call &call)
{
    const CallDescription &description = call.description();
    return {{QStringLiteral("Holdable"), description.holdable}, {QStringLiteral("Incoming"), description.incoming},
        {QStringLiteral("LocalHandle"), QStringLiteral("sip:simulator@localhost")},
        {QStringLiteral("LocalName"), QStringLiteral("Ringlet Simulator")},
        {QStringLiteral("RemoteHandle"), description.address}, {QStringLiteral("RemoteName"), description.remoteName},
        {QStringLiteral("Status"), call.status()}, {QStringLiteral("Uri"), description.address}};
}

struct CallObject::Method
{
    QString interface;
    QString member;
    QString signature;
    void (CallObject::*handle)(const QVariantList &arguments);
};

const QList<CallObject::Method> &CallObject::methods()
{
    static const QList<Method> methods = {
        {callInterface, QStringLiteral("Accept"), QString(), &CallObject::onAccept},
        {callInterface, QStringLiteral("Reject"), QStringLiteral("u"), &CallObject::onReject},
        {callInterface, QStringLiteral("SetHold"), QStringLiteral("b"), &CallObject::onSetHold},
        {dtmfInterface, QStringLiteral("SendDTMF"), QStringLiteral("s"), &CallObject::onSendDtmf},
        {audioInterface, QStringLiteral("UpdateAudioRouteState"), QStringLiteral("a(sibbsa{sv})bss"),
            &CallObject::onUpdateAudioRouteState},
        {audioInterface, QStringLiteral("UpdateAudioRoute"), QStringLiteral("bss"), &CallObject::onUpdateAudioRoute},
    };
    return methods;
}

CallObject::CallObject(
    Call &call, const QString &path, const QDBusConnection &connection, EventLog &events, QObject *parent)
    : QObject(parent),
      m_call(call),
      m_path(path),
      m_connection(connection),
      m_events(events)
{
    connect(&call, &Call::statusChanged, this, &CallObject::sendStatus);
    connect(&call, &Call::muteRequested, this, [this](bool mute) {
        report(QStringLiteral("request mute ") + onOff(mute));
        sendSignal(audioInterface, QStringLiteral("RequestMute"), {mute});
    });
    connect(&call, &Call::routeRequested, this, [this](const QString &input, const QString &output) {
        report(QStringLiteral("request route %1 %2").arg(quoted(input), quoted(output)));
        sendSignal(audioInterface, QStringLiteral("RequestAudioRoute"), {input, output});
    });
}

InterfaceMap CallObject::interfaces() const
{
    InterfaceMap interfaces{{callInterface, callProperties(m_call)}};
    if (m_call.description().tones)
        interfaces.insert(dtmfInterface, {});
    if (m_call.description().audio)
        interfaces.insert(audioInterface, {});
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
    const InterfaceMap offered = interfaces();
    const auto method = std::find_if(methods().begin(), methods().end(), [&](const Method &candidate) {
        return offered.contains(candidate.interface) && message.member() == candidate.member
            && (message.interface().isEmpty() || message.interface() == candidate.interface);
    });
    if (method == methods().end())
        return message.createErrorReply(QDBusError::UnknownMethod,
            QStringLiteral("%1 has no method %2.%3").arg(m_path, message.interface(), message.member()));
    if (message.signature() != method->signature)
        return message.createErrorReply(QDBusError::InvalidArgs,
            QStringLiteral("%1 takes \"%2\", not \"%3\"").arg(method->member, method->signature, message.signature()));
    (this->*method->handle)(message.arguments());
    return message.createReply();
}

void CallObject::onAccept(const QVariantList &)
{
    report(QStringLiteral("command accept"));
    report(m_call.accept());
}

void CallObject::onReject(const QVariantList &arguments)
{
    report(QStringLiteral("command reject %1").arg(arguments.constFirst().toUInt()));
    m_call.end();
}

void CallObject::onSetHold(const QVariantList &arguments)
{
    const bool hold = arguments.constFirst().toBool();
    report(QStringLiteral("command hold ") + onOff(hold));
    report(m_call.setHold(hold));
}

void CallObject::onSendDtmf(const QVariantList &arguments)
{
    const QString tones = arguments.constFirst().toString();
    report(QStringLiteral("command tones ") + quoted(tones));
    m_call.addTones(tones);
}

void CallObject::onUpdateAudioRouteState(const QVariantList &arguments)
{
    const QStringList devices = deviceIds(arguments.constFirst());
    const AudioRoute route = readRoute(arguments.mid(1));
    m_call.setAudioState(devices, route);
    QStringList words{
        QStringLiteral("audio-state"), routeText(route), QStringLiteral("devices=%1").arg(devices.size())};
    for (const QString &device : devices)
        words.append(quoted(device));
    report(words.join(QLatin1Char(' ')));
}

void CallObject::onUpdateAudioRoute(const QVariantList &arguments)
{
    const AudioRoute route = readRoute(arguments);
    m_call.setAudioRoute(route);
    report(QStringLiteral("audio-route ") + routeText(route));
}

void CallObject::onShown(uint status)
{
    m_call.setShown(true);
    report(QStringLiteral("shown ") + CallStatus::text(status));
    if (status != m_call.status()) {
        report(QStringLiteral("status %1 again").arg(CallStatus::text(m_call.status())));
        sendSignal(callInterface, QStringLiteral("StatusChanged"), {m_call.status()});
    }
}

void CallObject::sendStatus(uint status)
{
    report(QStringLiteral("status ") + CallStatus::text(status));
    sendSignal(callInterface, QStringLiteral("StatusChanged"), {status});
}

void CallObject::sendSignal(const QString &interface, const QString &member, const QVariantList &arguments)
{
    QDBusMessage signal = QDBusMessage::createSignal(m_path, interface, member);
    signal.setArguments(arguments);
    m_connection.send(signal);
}

void CallObject::report(const QString &event) { m_events.add(m_call.name() + QLatin1Char(' ') + event); }

void CallObject::report(Call::Outcome outcome)
{
    if (outcome != Call::Outcome::Done)
        report(QStringLiteral("unchanged"));
}
