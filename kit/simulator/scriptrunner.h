// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef SIMULATOR_SCRIPTRUNNER_H
#define SIMULATOR_SCRIPTRUNNER_H

#include "commandinterpreter.h"
#include "eventlog.h"
#include "script.h"

#include <QtCore/QTimer>
#include <functional>

/**
 * Runs a script: the interpreter's commands, and four statements of its own, `wait`, `until`, `pause` and
 * `timeout`. What stands between two of the first three is done without the event loop running.
 */
class ScriptRunner : public QObject
{
    Q_OBJECT
public:
    ScriptRunner(const Script &script, CommandInterpreter &interpreter, EventLog &events, QObject *parent = nullptr);

    /** What is wrong with a statement as it is written; empty if nothing. */
    static QString fault(const QStringList &words);

    void start() { proceed(); }

Q_SIGNALS:
    void succeeded();

    /** `message` starts with file and line. */
    void failed(const QString &message);

private:
    enum class State { Running, Waiting, Pausing, Ended };

    struct Verb;
    static const Verb *findVerb(const QString &name);

    void proceed();
    void perform(const Statement &statement);
    void wait(const QStringList &words);
    void until(const QStringList &words);
    void pause(const QStringList &words);
    void setTimeout(const QStringList &words);
    void beginWait(const std::function<bool()> &isOver, const std::function<QString()> &whatIsMissing);
    bool findEvent(const QStringList &pattern);
    void look();
    void onTimer();
    void fail(const QString &message);

    const Script &m_script;
    CommandInterpreter &m_interpreter;
    EventLog &m_events;
    QTimer m_timer;
    State m_state = State::Running;
    int m_next = 0;
    int m_timeoutMs = 10000;
    /** Of the statement that waits. */
    std::function<bool()> m_isOver;
    std::function<QString()> m_whatIsMissing;
    /** Events before this one have been waited for, or been passed over by a later wait. */
};

#endif
