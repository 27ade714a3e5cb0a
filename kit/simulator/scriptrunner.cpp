// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "scriptrunner.h"

#include "words.h"

#include <algorithm>

static bool readSeconds(const QString &word, int *milliseconds)
{
    bool isNumber = false;
    const double seconds = word.toDouble(&isNumber);
    if (!isNumber || !(seconds >= 0 && seconds <= 86400))
        return false;
    *milliseconds = int(seconds * 1000);
    return true;
}

// A pattern matches an event that starts with its words; the word * stands for any one.
static bool matches(const QString &event, const QStringList &pattern)
{
    QStringList words;
    splitWords(event, &words);
    return words.size() >= pattern.size()
        && std::equal(pattern.begin(), pattern.end(), words.begin(), [](const QString &expected, const QString &word) {
               return expected == QLatin1String("*") || expected == word;
           });
}

ScriptRunner::ScriptRunner(const Script &script, CommandInterpreter &interpreter, EventLog &events, QObject *parent)
    : QObject(parent),
      m_script(script),
      m_interpreter(interpreter),
      m_events(events)
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &ScriptRunner::onTimer);
    // Queued: an event may come in the middle of a command, which has to be done before the next begins.
    connect(&events, &EventLog::added, this, &ScriptRunner::lookForEvent, Qt::QueuedConnection);
    connect(&interpreter, &CommandInterpreter::quitRequested, this, [this] { m_state = State::Ended; });
}

QString ScriptRunner::fault(const QStringList &words)
{
    const QString &verb = words.constFirst();
    if (verb == QLatin1String("wait"))
        return words.size() > 1 ? QString() : QStringLiteral("usage: wait WORD...");
    if (verb == QLatin1String("pause") || verb == QLatin1String("timeout")) {
        int milliseconds = 0;
        const bool isRight = words.size() == 2 && readSeconds(words.at(1), &milliseconds);
        return isRight ? QString() : QStringLiteral("usage: %1 SECONDS").arg(verb);
    }
    return CommandInterpreter::fault(words);
}

void ScriptRunner::proceed()
{
    m_state = State::Running;
    while (m_state == State::Running) {
        if (m_next == m_script.statements().size()) {
            m_state = State::Ended;
            emit succeeded();
        } else {
            perform(m_script.statements().at(m_next++));
        }
    }
}

void ScriptRunner::perform(const Statement &statement)
{
    const QString &verb = statement.words.constFirst();
    if (verb == QLatin1String("wait")) {
        beginWait(statement.words.mid(1));
    } else if (verb == QLatin1String("timeout")) {
        readSeconds(statement.words.at(1), &m_timeoutMs);
    } else if (verb == QLatin1String("pause")) {
        int milliseconds = 0;
        readSeconds(statement.words.at(1), &milliseconds);
        m_state = State::Pausing;
        m_timer.start(milliseconds);
    } else {
        const QString error = m_interpreter.execute(statement.words);
        if (!error.isEmpty())
            fail(error);
    }
}

void ScriptRunner::beginWait(const QStringList &pattern)
{
    m_pattern = pattern;
    m_state = State::Waiting;
    m_timer.start(m_timeoutMs);
    QMetaObject::invokeMethod(this, &ScriptRunner::lookForEvent, Qt::QueuedConnection);
}

void ScriptRunner::lookForEvent()
{
    while (m_state == State::Waiting && m_nextEvent < m_events.count()) {
        if (matches(m_events.at(m_nextEvent++), m_pattern)) {
            m_timer.stop();
            proceed();
        }
    }
}

void ScriptRunner::onTimer()
{
    if (m_state == State::Pausing)
        proceed();
    else
        fail(QStringLiteral("no \"%1\" within %2 s").arg(m_pattern.join(QLatin1Char(' '))).arg(m_timeoutMs / 1000.0));
}

void ScriptRunner::fail(const QString &message)
{
    m_state = State::Ended;
    emit failed(m_script.place(m_script.statements().at(m_next - 1)) + message);
}
