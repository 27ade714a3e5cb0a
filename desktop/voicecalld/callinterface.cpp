// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "callinterface.h"

#include "call.h"

using Handler = AbstractVoiceCallHandler;
using Command = void (*)(Handler *handler, const QVariant &argument);

static const struct
{
    const char *method;
    Command run;
} commands[] = {
    {"Answer", [](Handler *handler, const QVariant &) { handler->answer(); }},
    {"Hangup", [](Handler *handler, const QVariant &) { handler->hangup(); }},
    {"Hold", [](Handler *handler, const QVariant &on) { handler->hold(on.toBool()); }},
    {"SendDtmf", [](Handler *handler, const QVariant &tones) { handler->sendDtmf(tones.toString()); }},
    {"Deflect", [](Handler *handler, const QVariant &target) { handler->deflect(target.toString()); }},
    {"Merge", [](Handler *handler, const QVariant &other) { handler->merge(other.toString()); }},
    {"Split", [](Handler *handler, const QVariant &) { handler->split(); }},
};

static BusInterface::Methods methods(const QPointer<Call> &call)
{
    BusInterface::Methods methods;
    for (const auto &command : commands) {
        methods.insert(QLatin1String(command.method), [call, run = command.run](const QDBusMessage &message) {
            run(call->handler(), message.arguments().value(0));
            return message.createReply();
        });
    }
    return methods;
}

CallInterface::CallInterface(Call *call)
    : BusInterface(QStringLiteral("org.tarnwickle.voicecall.Call1"), methods(call)),
      m_call(call)
{
    connect(call, &Call::changed, this, &BusInterface::propertiesChanged);
}

QVariantMap CallInterface::properties() const { return m_call->properties(); }
