// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "softphonecall.h"

#include "baresipcontrol.h"
#include "replytext.h"

#include <QtCore/QRegularExpression>

using Ringlet::Call;
using Ringlet::CallStatus;

static Ringlet::CallDescription describe(const CallIdentity &identity)
{
    Ringlet::CallDescription description;
    description.incoming = identity.isIncoming;
    description.address = identity.address;
    description.remoteName = identity.name;
    description.localAddress = identity.account;
    return description;
}

SoftphoneCall::SoftphoneCall(const CallIdentity &identity, Origin origin, BaresipControl &control,
    Ringlet::CallManager &manager, QObject *parent)
    : QObject(parent),
      m_identity(identity),
      m_control(control),
      m_call(manager.addCall(describe(identity)))
{
    if (origin == Origin::New)
        m_isMuted = false;
    connect(m_call, &Call::answerRequested, this, [this] { command(QStringLiteral("accept")); });
    connect(m_call, &Call::rejectRequested, this, [this] { command(QStringLiteral("hangup")); });
    connect(m_call, &Call::holdRequested, this,
        [this](bool hold) { command(hold ? QStringLiteral("hold") : QStringLiteral("resume")); });
    connect(m_call, &Call::tonesRequested, this, &SoftphoneCall::sendTones);
    connect(m_call, &Call::audioRouteChanged, this, &SoftphoneCall::followMute);
    connect(m_call, &Call::audioRouteChanged, this, &SoftphoneCall::audioRouteChanged);
}

SoftphoneCall::~SoftphoneCall()
{
    if (m_call)
        m_call->end();
}

CallStatus SoftphoneCall::status() const { return m_call ? m_call->status() : CallStatus::Disconnected; }

std::optional<Ringlet::AudioRoute> SoftphoneCall::audioRoute() const
{
    return m_call ? m_call->audioRoute() : std::nullopt;
}

void SoftphoneCall::setStatus(CallStatus status)
{
    if (m_call)
        m_call->setStatus(status);
}

QVector<Command> SoftphoneCall::selection() const
{
    return {{QStringLiteral("uafind"), m_identity.account, QStringLiteral("ua: ")},
        {QStringLiteral("callfind"), m_identity.id, QStringLiteral("setting current call")}};
}

void SoftphoneCall::command(const QString &name, const QString &parameter)
{
    m_control.run({selection() + QVector<Command>{{name, parameter, {}}},
        [self = QPointer<SoftphoneCall>(this)](const CommandSequence::Result &) {
            if (self)
                emit self->commandDone();
        }});
}

// baresip sends what it knows up to the first character that it does not, and never ends that last tone.
void SoftphoneCall::sendTones(const QString &tones)
{
    static const QRegularExpression unknown(QStringLiteral("[^0-9A-D*#]"));
    const QString sendable = tones.toUpper().remove(unknown);
    if (sendable.size() != tones.size())
        emit warning(QStringLiteral("of the tones \"%1\" only \"%2\" can be sent").arg(tones, sendable));
    if (!sendable.isEmpty())
        command(QStringLiteral("sndcode"), sendable);
}

void SoftphoneCall::followMute()
{
    const std::optional<Ringlet::AudioRoute> route = audioRoute();
    if (!route || m_isTogglingMute || m_isMuted == route->microphoneMuted)
        return;
    m_isTogglingMute = true;
    m_control.run({selection() + QVector<Command>{{QStringLiteral("mute"), {}, {}}},
        [self = QPointer<SoftphoneCall>(this)](const CommandSequence::Result &result) {
            if (self)
                self->onMuteToggled(result);
        }});
}

void SoftphoneCall::onMuteToggled(const CommandSequence::Result &result)
{
    m_isTogglingMute = false;
    if (!result.isComplete)
        return;
    m_isMuted = ReplyText::muted(result.replies.constLast().text);
    // Twice at most, if it was the other way round than thought.
    if (m_isMuted)
        followMute();
    else
        emit warning(QStringLiteral("baresip does not tell whether the microphone is muted"));
}
