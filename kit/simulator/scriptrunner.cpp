// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "scriptrunner.h"

#include "words.h"

#include <algorithm>

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

static QString usage(const char *statement) { return QStringLiteral("usage: ") + QLatin1String(statement); }

static QString waitFault(const QStringList &words) { return words.isEmpty() ? usage("wait WORD...") : QString(); }

static QString untilFault(const QStringList &words)
{
    return CommandInterpreter::fault(QStringList(QStringLiteral("check")) + words);
}

static QString pauseFault(const QStringList &words)
{
    int milliseconds = 0;
    return words.size() == 1 ? readSeconds(words.constFirst(), &milliseconds) : usage("pause SECONDS");
}

static QString timeoutFault(const QStringList &words)
{
    int milliseconds = 0;
    return words.size() == 1 ? readSeconds(words.constFirst(), &milliseconds) : usage("timeout SECONDS");
}

struct ScriptRunner::Verb
{
    const char *name;
    QString (*fault)(const QStringList &words);
    void (ScriptRunner::*perform)(const QStringList &words);
};

const ScriptRunner::Verb *ScriptRunner::findVerb(const QString &name)
{
    static const Verb verbs[] = {
        {"wait", waitFault, &ScriptRunner::wait},
        {"until", untilFault, &ScriptRunner::until},
        {"pause", pauseFault, &ScriptRunner::pause},
        {"timeout", timeoutFault, &ScriptRunner::setTimeout},
    };
    const auto found = std::find_if(
        std::begin(verbs), std::end(verbs), [&](const Verb &verb) { return name == QLatin1String(verb.name); });
    return found == std::end(verbs) ? nullptr : found;
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
    connect(&events, &EventLog::added, this, &ScriptRunner::look, Qt::QueuedConnection);
    connect(&interpreter, &CommandInterpreter::quitRequested, this, [this] { m_state = State::Ended; });
}

QString ScriptRunner::fault(const QStringList &words)
{
    const Verb *verb = findVerb(words.constFirst());
    return verb ? verb->fault(words.mid(1)) : CommandInterpreter::fault(words);
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
    if (const Verb *verb = findVerb(statement.words.constFirst()))
        return (this->*verb->perform)(statement.words.mid(1));
    const QString error = m_interpreter.execute(statement.words);
    if (!error.isEmpty())
        fail(error);
}

void ScriptRunner::wait(const QStringList &words)
{
    beginWait([this, words] { return findEvent(words); },
        [words] { return QStringLiteral("no \"%1\"").arg(words.join(QLatin1Char(' '))); });
}

void ScriptRunner::until(const QStringList &words)
{
    const auto check = [this, words] { return m_interpreter.execute(QStringList(QStringLiteral("check")) + words); };
    beginWait([check] { return check().isEmpty(); }, check);
}

void ScriptRunner::pause(const QStringList &words)
{
    int milliseconds = 0;
    readSeconds(words.constFirst(), &milliseconds);
    m_state = State::Pausing;
    m_timer.start(milliseconds);
}

void ScriptRunner::setTimeout(const QStringList &words) { readSeconds(words.constFirst(), &m_timeoutMs); }

void ScriptRunner::beginWait(const std::function<bool()> &isOver, const std::function<QString()> &whatIsMissing)
{
    m_isOver = isOver;
    m_whatIsMissing = whatIsMissing;
    m_state = State::Waiting;
    m_timer.start(m_timeoutMs);
    QMetaObject::invokeMethod(this, &ScriptRunner::look, Qt::QueuedConnection);
}

bool ScriptRunner::findEvent(const QStringList &pattern)
{
    while (!m_events.isEmpty()) {
        if (matches(m_events.take(), pattern))
            return true;
    }
    return false;
}

void ScriptRunner::look()
{
    if (m_state != State::Waiting || !m_isOver())
        return;
    m_timer.stop();
    proceed();
}

void ScriptRunner::onTimer()
{
    if (m_state == State::Pausing)
        proceed();
    else
        fail(QStringLiteral("%1 within %2 s").arg(m_whatIsMissing()).arg(m_timeoutMs / 1000.0));
}

void ScriptRunner::fail(const QString &message)
{
    m_state = State::Ended;
    emit failed(m_script.place(m_script.statements().at(m_next - 1)) + message);
}
