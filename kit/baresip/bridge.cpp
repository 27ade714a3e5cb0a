// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "bridge.h"

#include "baresipcontrol.h"
#include "replytext.h"

#include <QtCore/QSet>

using Ringlet::CallStatus;

Bridge::Bridge(BaresipControl &control, Ringlet::CallManager &manager, const DeviceMap &inputs,
    const DeviceMap &outputs, QObject *parent)
    : QObject(parent),
      m_control(control),
      m_manager(manager),
      m_survey(control),
      m_audio(inputs, outputs, control)
{
    connect(&control, &BaresipControl::connected, &m_survey, &CallSurvey::start);
    connect(&control, &BaresipControl::disconnected, this, &Bridge::onDisconnected);
    connect(&control, &BaresipControl::eventReceived, this, &Bridge::onEvent);
    connect(&m_survey, &CallSurvey::completed, this, &Bridge::onSurvey);
    connect(&m_survey, &CallSurvey::warning, this, &Bridge::warning);
    connect(&m_audio, &AudioSwitch::warning, this, &Bridge::warning);
}

void Bridge::onDisconnected()
{
    m_survey.reset();
    m_audio.reset();
    qDeleteAll(qExchange(m_calls, {}));
}

static CallIdentity identityOf(const QJsonObject &event)
{
    const auto text = [&](const char *key) { return event.value(QLatin1String(key)).toString(); };
    return {text("id"), text("accountaor"), text("direction") == QLatin1String("incoming"), text("peeruri"),
        ReplyText::plainName(text("peerdisplayname"))};
}

void Bridge::onEvent(const QJsonObject &event)
{
    static const QHash<QString, CallStatus> statuses = {{QStringLiteral("CALL_INCOMING"), CallStatus::Incoming},
        {QStringLiteral("CALL_RINGING"), CallStatus::Dialing}, {QStringLiteral("CALL_PROGRESS"), CallStatus::Dialing},
        {QStringLiteral("CALL_ESTABLISHED"), CallStatus::Active},
        {QStringLiteral("CALL_CLOSED"), CallStatus::Disconnected}};
    const QString type = event.value(QStringLiteral("type")).toString();
    const CallIdentity identity = identityOf(event);
    const auto status = statuses.constFind(type);
    if (status != statuses.cend() && !identity.id.isEmpty()) {
        m_survey.invalidate();
        update(identity, *status, SoftphoneCall::Origin::New);
    }
    // An outgoing call begins with an offer, and has no identity in it yet. Later ones go with hold and resume.
    if (status != statuses.cend() || type.endsWith(QLatin1String("_SDP")))
        m_survey.start();
}

void Bridge::onSurvey(const QVector<SurveyedCall> &calls)
{
    QSet<QString> known;
    for (const SurveyedCall &call : calls) {
        known.insert(call.identity.id);
        update(call.identity, call.status, SoftphoneCall::Origin::Found);
    }
    const QStringList ids = m_calls.keys();
    for (const QString &id : ids) {
        if (!known.contains(id))
            remove(id);
    }
}

void Bridge::update(const CallIdentity &identity, CallStatus status, SoftphoneCall::Origin origin)
{
    if (status == CallStatus::Disconnected) {
        remove(identity.id);
        return;
    }
    SoftphoneCall *call = m_calls.value(identity.id);
    if (!call)
        call = add(identity, origin);
    call->setStatus(status);
    followRoute(call);
}

SoftphoneCall *Bridge::add(const CallIdentity &identity, SoftphoneCall::Origin origin)
{
    auto *call = new SoftphoneCall(identity, origin, m_control, m_manager, this);
    m_calls.insert(identity.id, call);
    connect(call, &SoftphoneCall::commandDone, &m_survey, &CallSurvey::start);
    connect(call, &SoftphoneCall::audioRouteChanged, this, [this, call] { followRoute(call); });
    connect(call, &SoftphoneCall::warning, this, &Bridge::warning);
    return call;
}

void Bridge::remove(const QString &id)
{
    m_survey.forget(id);
    delete m_calls.take(id);
}

void Bridge::followRoute(const SoftphoneCall *call)
{
    const std::optional<Ringlet::AudioRoute> route = call->audioRoute();
    if (route && call->status() == CallStatus::Active)
        m_audio.follow(*route, call->selection());
}
