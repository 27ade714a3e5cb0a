// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "condition.h"

#include "failure.h"
#include "hostaccess.h"
#include "hostmonitor.h"

#include <QtCore/QEventLoop>
#include <algorithm>

static const QString host = QStringLiteral("host");
static const QString gone = QStringLiteral("gone");
static const QString call = QStringLiteral("call");
static const QString ringing = QStringLiteral("ringing");

QStringList Condition::words()
{
    return {host, call, ringing, QStringLiteral("incoming"), QStringLiteral("waiting"), QStringLiteral("dialing"),
        QStringLiteral("alerting"), QStringLiteral("active"), QStringLiteral("held"), QStringLiteral("disconnected"),
        gone};
}

Condition::Condition(const QString &word, const QString &call) : m_word(word), m_call(call)
{
    if (!words().contains(word)) {
        throw Failure(ExitCode::WrongCommandLine,
            QStringLiteral("there is no condition '%1'; there are: %2").arg(word, words().join(QLatin1String(", "))));
    }
    if (word == host && !call.isEmpty())
        throw Failure(ExitCode::WrongCommandLine, QStringLiteral("the condition 'host' is about no call"));
}

// An id that has been seen is meant as an id, also when its call has gone.
void Condition::learn(const HostState &state)
{
    m_isId = m_isId || std::any_of(state.calls.cbegin(), state.calls.cend(), [&](const CallInfo &info) {
        return info.id() == m_call;
    });
}

bool Condition::isMeant(const CallInfo &call) const
{
    if (m_isId)
        return call.id() == m_call;
    return m_call.isEmpty() || call.text("LineId").contains(m_call, Qt::CaseInsensitive)
        || call.text("Uri").contains(m_call, Qt::CaseInsensitive);
}

static bool isIn(const CallInfo &info, const QString &word)
{
    const QString status = info.status();
    if (word == ringing)
        return status == QLatin1String("incoming") || status == QLatin1String("waiting");
    return word == call || word == gone || status == word;
}

// `gone` is the opposite of `call`.
bool Condition::holds(const HostState &state, QString *id) const
{
    if (m_word == host)
        return state.isPresent;
    for (const CallInfo &info : state.calls) {
        if (!isMeant(info) || !isIn(info, m_word))
            continue;
        *id = info.id();
        return m_word != gone;
    }
    return m_word == gone;
}

QString Condition::text() const
{
    return m_call.isEmpty() ? QStringLiteral("'%1'").arg(m_word) : QStringLiteral("'%1 %2'").arg(m_word, m_call);
}

QString Condition::wait(double seconds)
{
    HostMonitor monitor(HostAccess::bus());
    QEventLoop loop;
    QString id;
    QString reason;
    bool isMet = false;
    // Without a host nothing is known; of one that has gone all calls have gone.
    const auto look = [&] {
        learn(monitor.state());
        isMet = isMet || holds(monitor.state(), &id);
        if (isMet)
            loop.quit();
    };
    QObject::connect(&monitor, &HostMonitor::ready, &loop, look);
    QObject::connect(&monitor, &HostMonitor::callChanged, &loop, look);
    QObject::connect(&monitor, &HostMonitor::gone, &loop, look);
    QObject::connect(&monitor, &HostMonitor::failed, &loop, [&](const QString &failure) { reason = failure; });
    QObject::connect(&monitor, &HostMonitor::busLost, &loop, [&] { loop.exit(1); });
    monitor.start();
    if (seconds >= 0)
        QTimer::singleShot(std::chrono::milliseconds(qint64(seconds * 1000)), &loop, [&] { loop.exit(2); });
    const int end = loop.exec();
    if (isMet)
        return m_word == gone ? QString() : id;
    if (end == 1)
        throw Failure(ExitCode::NoHost, QStringLiteral("the session bus is gone"));
    if (!monitor.state().isPresent && !reason.isEmpty())
        throw Failure(ExitCode::NoHost, reason);
    throw Failure(ExitCode::NotDone, QStringLiteral("%1 did not come within %2 s").arg(text()).arg(seconds));
}
