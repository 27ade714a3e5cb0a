// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALLD_HEARINGCHECK_H
#define VOICECALLD_HEARINGCHECK_H

#include <QtCore/QTimer>
#include <QtDBus/QDBusConnection>

class QDBusPendingCallWatcher;

/**
 * Finds out when a bus connection hears nothing any more although the bus is well: the bus layer does not
 * tell. The daemon is asked something now and then, and when it does not answer, the same on a second
 * connection. A thread that has no time to look at answers does not look at the clock either, and a daemon
 * that stands still answers nobody: neither is taken for deafness.
 */
class HearingCheck : public QObject
{
    Q_OBJECT

public:
    /** Nothing is done until start(). Both connections are to the same bus. */
    HearingCheck(const QDBusConnection &watched, const QDBusConnection &other);

    /** Asks every so many milliseconds; 0 for never. */
    void start(int interval);

Q_SIGNALS:
    /** A question is unanswered, after four intervals at most, and two others since have been answered. */
    void isDeaf();

private:
    void look();
    QDBusPendingCallWatcher *ask(const QDBusConnection &connection);
    static bool isAnswered(const QDBusPendingCallWatcher *question);

    QDBusConnection m_watched;
    QDBusConnection m_other;
    QTimer m_timer;
    QDBusPendingCallWatcher *m_question = nullptr;
    QDBusPendingCallWatcher *m_counterQuestion = nullptr;
    int m_silentRounds = 0;
};

#endif
