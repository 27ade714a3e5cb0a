// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "simulatedcall.h"

#include "words.h"

#include <QtCore/QHash>

using Ringlet::Call;
using Ringlet::CallStatus;

QString statusText(CallStatus status)
{
    return QStringLiteral("%1 %2").arg(uint(status)).arg(Ringlet::statusName(status));
}

static QString onOff(bool on) { return on ? QStringLiteral("on") : QStringLiteral("off"); }

// --- Commands as they stand in event lines

static QString acceptText(const QVariantList &) { return QStringLiteral("command accept"); }

static QString rejectText(const QVariantList &arguments)
{
    return QStringLiteral("command reject %1").arg(arguments.at(0).toUInt());
}

static QString holdText(const QVariantList &arguments)
{
    return QStringLiteral("command hold ") + onOff(arguments.at(0).toBool());
}

static constexpr int keptTones = 10000;

static QString tonesText(const QVariantList &arguments)
{
    return QStringLiteral("command tones ") + quoted(arguments.at(0).toString());
}

// The three arguments that both audio updates end with.
static QString routeText(const QVariantList &arguments)
{
    return QStringLiteral("muted=%1 input=%2 output=%3")
        .arg(yesNo(arguments.at(0).toBool()), quoted(arguments.at(1).toString()), quoted(arguments.at(2).toString()));
}

static QString audioRouteText(const QVariantList &arguments)
{
    return QStringLiteral("audio-route ") + routeText(arguments);
}

static QString audioStateText(const QVariantList &arguments)
{
    const auto devices = arguments.at(0).value<Ringlet::AudioDeviceList>();
    QStringList words{
        QStringLiteral("audio-state"), routeText(arguments.mid(1)), QStringLiteral("devices=%1").arg(devices.size())};
    for (const Ringlet::AudioDevice &device : devices)
        words.append(quoted(device.id));
    return words.join(QLatin1Char(' '));
}

void SimulatedCall::onCommand(const QString &method, const QVariantList &arguments)
{
    static const QHash<QString, QString (*)(const QVariantList &arguments)> texts
        = {{QStringLiteral("Accept"), acceptText}, {QStringLiteral("Reject"), rejectText},
            {QStringLiteral("SetHold"), holdText}, {QStringLiteral("SendDTMF"), tonesText},
            {QStringLiteral("UpdateAudioRouteState"), audioStateText},
            {QStringLiteral("UpdateAudioRoute"), audioRouteText}};
    report(texts.value(method)(arguments));
}

// --- The call

SimulatedCall::SimulatedCall(Call &call, const QString &label, EventLog &events)
    : QObject(&call),
      m_call(call),
      m_label(label),
      m_events(events)
{
    connect(&call, &Call::commandReceived, this, &SimulatedCall::onCommand);
    connect(&call, &Call::commandIgnored, this, [this] { report(QStringLiteral("unchanged")); });
    connect(&call, &Call::answerRequested, this, &SimulatedCall::answer);
    connect(&call, &Call::rejectRequested, this, &SimulatedCall::end);
    connect(&call, &Call::holdRequested, this, &SimulatedCall::setHold);
    connect(&call, &Call::tonesRequested, this,
        [this](const QString &tones) { m_tones = (m_tones + tones).right(keptTones); });

    connect(&call, &Call::announced, this, [this] {
        m_isAnnounced = true;
        reportStatus(QStringLiteral("announced"), m_call.status());
    });
    connect(&call, &Call::shown, this, [this](CallStatus seen) { reportStatus(QStringLiteral("shown"), seen); });
    connect(&call, &Call::statusChanged, this,
        [this](CallStatus status) { reportStatus(QStringLiteral("status"), status); });
    connect(&call, &Call::statusRepeated, this,
        [this](CallStatus status) { report(QStringLiteral("status %1 again").arg(statusText(status))); });
    connect(&call, &Call::ended, this, [this] { report(QStringLiteral("removed")); });
}

// Of a call that has not come out yet, nobody has heard anything.
void SimulatedCall::report(const QString &event)
{
    if (m_isAnnounced)
        m_events.add(m_label + QLatin1Char(' ') + event);
}

void SimulatedCall::reportStatus(const QString &event, CallStatus status)
{
    report(event + QLatin1Char(' ') + statusText(status));
}

SimulatedCall::Outcome SimulatedCall::setStatus(CallStatus status)
{
    if (m_call.status() == status)
        return Outcome::Unchanged;
    m_call.setStatus(status);
    return Outcome::Sent;
}

SimulatedCall::Outcome SimulatedCall::answer()
{
    if (m_call.is(CallStatus::Active))
        return Outcome::Unchanged;
    const bool rings = m_call.is(CallStatus::Incoming) || m_call.is(CallStatus::Dialing);
    return rings ? setStatus(CallStatus::Active) : Outcome::WrongStatus;
}

SimulatedCall::Outcome SimulatedCall::setHold(bool hold)
{
    if (m_call.is(hold ? CallStatus::Held : CallStatus::Active))
        return Outcome::Unchanged;
    if (!m_call.description().holdable)
        return Outcome::Unsupported;
    const bool canChange = m_call.is(hold ? CallStatus::Active : CallStatus::Held);
    return canChange ? setStatus(hold ? CallStatus::Held : CallStatus::Active) : Outcome::WrongStatus;
}

SimulatedCall::Outcome SimulatedCall::requestMute(bool mute)
{
    const Outcome outcome = m_call.requestMicrophoneMute(mute);
    if (outcome == Outcome::Sent)
        report(QStringLiteral("request mute ") + onOff(mute));
    return outcome;
}

SimulatedCall::Outcome SimulatedCall::requestRoute(const QString &input, const QString &output)
{
    const Outcome outcome = m_call.requestAudioRoute(input, output);
    if (outcome == Outcome::Sent)
        report(QStringLiteral("request route %1 %2").arg(quoted(input), quoted(output)));
    return outcome;
}
