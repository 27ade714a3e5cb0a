// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "hearingcheck.h"

#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusPendingCall>
#include <climits>

// One could be that the daemon stood still, and was seen at the moment in which it went on.
static constexpr int silentRoundsOfTheDeaf = 2;

HearingCheck::HearingCheck(const QDBusConnection &watched, const QDBusConnection &other)
    : m_watched(watched),
      m_other(other)
{
    connect(&m_timer, &QTimer::timeout, this, &HearingCheck::look);
}

void HearingCheck::start(int interval)
{
    if (interval == 0)
        return;
    m_question = ask(m_watched);
    m_timer.start(interval);
}

QDBusPendingCallWatcher *HearingCheck::ask(const QDBusConnection &connection)
{
    const QString daemon = QStringLiteral("org.freedesktop.DBus");
    const QDBusMessage question = QDBusMessage::createMethodCall(
        daemon, QStringLiteral("/org/freedesktop/DBus"), daemon, QStringLiteral("GetId"));
    // Without an end of its own: a question is open as long as nothing is heard.
    return new QDBusPendingCallWatcher(connection.asyncCall(question, INT_MAX), this);
}

bool HearingCheck::isAnswered(const QDBusPendingCallWatcher *question)
{
    return question && question->isFinished() && !question->isError();
}

void HearingCheck::look()
{
    const bool hears = m_question->isFinished();
    m_silentRounds = !hears && isAnswered(m_counterQuestion) ? m_silentRounds + 1 : 0;
    delete m_counterQuestion;
    m_counterQuestion = nullptr;
    if (hears) {
        delete m_question;
        m_question = ask(m_watched);
    } else if (m_silentRounds == silentRoundsOfTheDeaf) {
        m_timer.stop();
        emit isDeaf();
    } else {
        m_counterQuestion = ask(m_other);
    }
}
