// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "call.h"

#include "callstatus.h"

Call::Call(const CallDescription &description, QObject *parent)
    : QObject(parent),
      m_description(description),
      m_status(description.incoming ? CallStatus::Incoming : CallStatus::Dialing)
{
}

Call::Outcome Call::setStatus(uint status)
{
    if (status == m_status)
        return Outcome::Unchanged;
    m_status = status;
    emit statusChanged(status);
    return Outcome::Done;
}

bool Call::means(uint status) const { return CallStatus::canonical(m_status) == status; }

Call::Outcome Call::accept()
{
    if (means(CallStatus::Active))
        return Outcome::Unchanged;
    return means(CallStatus::Incoming) ? setStatus(CallStatus::Active) : Outcome::Impossible;
}

Call::Outcome Call::answer() { return means(CallStatus::Dialing) ? setStatus(CallStatus::Active) : accept(); }

Call::Outcome Call::setHold(bool hold)
{
    if (means(hold ? CallStatus::Held : CallStatus::Active))
        return Outcome::Unchanged;
    if (!m_description.holdable || !means(hold ? CallStatus::Active : CallStatus::Held))
        return Outcome::Impossible;
    return setStatus(hold ? CallStatus::Held : CallStatus::Active);
}

void Call::end()
{
    if (!means(CallStatus::Disconnected))
        setStatus(CallStatus::Disconnected);
    emit ended();
}

void Call::setAudioState(const QStringList &devices, const AudioRoute &route)
{
    m_audioDevices = devices;
    m_audioRoute = route;
}

// An update without a state before it does not tell that the host listens.
void Call::setAudioRoute(const AudioRoute &route)
{
    if (m_audioRoute)
        m_audioRoute = route;
}

void Call::forgetAudio()
{
    m_audioDevices.clear();
    m_audioRoute.reset();
}

Call::Outcome Call::askForMute(bool mute)
{
    if (!m_description.audio)
        return Outcome::Impossible;
    if (!m_audioRoute)
        return Outcome::TooEarly;
    if (m_audioRoute->muted == mute)
        return Outcome::Unchanged;
    emit muteRequested(mute);
    return Outcome::Done;
}

bool Call::hasRoute(const QString &input, const QString &output) const
{
    return m_audioRoute->input == input && m_audioRoute->output == output;
}

Call::Outcome Call::askForRoute(const QString &input, const QString &output)
{
    if (!m_description.audio)
        return Outcome::Impossible;
    if (!m_audioRoute)
        return Outcome::TooEarly;
    if (hasRoute(input, output))
        return Outcome::Unchanged;
    emit routeRequested(input, output);
    return Outcome::Done;
}
