// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "commandinterface.h"

#include "callobject.h"
#include "hostlink.h"

namespace Ringlet {

using Handle = void (*)(CommandReceiver &receiver, const QVariantList &arguments);

// The three arguments that both audio updates end with.
static AudioRoute readRoute(const QVariantList &arguments)
{
    AudioRoute route;
    route.microphoneMuted = arguments.at(0).toBool();
    route.input = arguments.at(1).toString();
    route.output = arguments.at(2).toString();
    return route;
}

// Of all interfaces: no two have a method of the same name.
static const struct
{
    const char *method;
    Handle handle;
} commands[] = {
    {"Accept", [](CommandReceiver &receiver, const QVariantList &) { receiver.accept(); }},
    {"Reject",
        [](CommandReceiver &receiver, const QVariantList &arguments) { receiver.reject(arguments.at(0).toUInt()); }},
    {"SetHold",
        [](CommandReceiver &receiver, const QVariantList &arguments) { receiver.setHold(arguments.at(0).toBool()); }},
    {"SendDTMF",
        [](CommandReceiver &receiver, const QVariantList &arguments) {
            receiver.sendTones(arguments.at(0).toString());
        }},
    {"UpdateAudioRouteState",
        [](CommandReceiver &receiver, const QVariantList &arguments) {
            receiver.updateAudio(readDevices(arguments.at(0)), readRoute(arguments.mid(1)));
        }},
    {"UpdateAudioRoute",
        [](CommandReceiver &receiver, const QVariantList &arguments) {
            receiver.updateAudioRoute(readRoute(arguments));
        }},
};

// A command may be the end of the call: when it has been handled, nothing of the call is touched.
static BusInterface::Methods methodsOf(const QString &interface, CommandReceiver &receiver)
{
    const QStringList described = InterfaceDescription::of(interface).methods.keys();
    BusInterface::Methods methods;
    for (const auto &command : commands) {
        const QString method = QLatin1String(command.method);
        if (!described.contains(method))
            continue;
        methods.insert(method, [&receiver, handle = command.handle](const QDBusMessage &message) {
            handle(receiver, message.arguments());
            return message.createReply();
        });
    }
    return methods;
}

CommandInterface::CommandInterface(const QString &name, const CallObject &call, const HostLink &host)
    : BusInterface(name, methodsOf(name, call.receiver())),
      m_call(call),
      m_host(host)
{
}

QVariantMap CommandInterface::properties() const
{
    return name() == callInterface ? m_call.properties() : QVariantMap();
}

QString CommandInterface::refusal(const QDBusMessage &call) const { return m_host.refusal(call.service()); }

// What a device looks like is the host's to say: here it is one array, of whatever.
bool CommandInterface::takes(const QString &method, const QStringList &types) const
{
    QStringList expected = description().methods.value(method);
    if (method == QLatin1String("UpdateAudioRouteState") && !types.isEmpty()
        && types.constFirst().startsWith(QLatin1Char('a')))
        expected.first() = types.constFirst();
    return types == expected;
}

} // namespace Ringlet
