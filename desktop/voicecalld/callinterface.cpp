// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "callinterface.h"

#include "call.h"

using Handler = AbstractVoiceCallHandler;
using Command = void (*)(Handler *handler, const QVariant &argument);

static const QHash<QString, Command> &commands()
{
    static const QHash<QString, Command> table = {
        {QStringLiteral("Answer"), [](Handler *handler, const QVariant &) { handler->answer(); }},
        {QStringLiteral("Hangup"), [](Handler *handler, const QVariant &) { handler->hangup(); }},
        {QStringLiteral("Hold"), [](Handler *handler, const QVariant &on) { handler->hold(on.toBool()); }},
        {QStringLiteral("SendDtmf"),
            [](Handler *handler, const QVariant &tones) { handler->sendDtmf(tones.toString()); }},
        {QStringLiteral("Deflect"),
            [](Handler *handler, const QVariant &target) { handler->deflect(target.toString()); }},
        {QStringLiteral("Merge"), [](Handler *handler, const QVariant &other) { handler->merge(other.toString()); }},
        {QStringLiteral("Split"), [](Handler *handler, const QVariant &) { handler->split(); }},
    };
    return table;
}

CallInterface::CallInterface(Call *call) : BusInterface(QStringLiteral("org.tarnwickle.voicecall.Call1")), m_call(call)
{
    connect(call, &Call::changed, this, &BusInterface::propertiesChanged);
}

QDBusMessage CallInterface::call(const QDBusMessage &message)
{
    commands().value(message.member())(m_call->handler(), message.arguments().value(0));
    return message.createReply();
}

QVariantMap CallInterface::properties() const { return m_call->properties(); }
