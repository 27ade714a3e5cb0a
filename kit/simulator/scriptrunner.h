// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef SIMULATOR_SCRIPTRUNNER_H
#define SIMULATOR_SCRIPTRUNNER_H

#include "commandinterpreter.h"
#include "eventlog.h"
#include "script.h"

#include <QtCore/QTimer>

/**
 * Runs a script: the interpreter's commands, and three statements of its own, `wait`, `pause` and
 * `timeout`. What stands between two of the first two is done without the event loop running.
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

    void proceed();
    void perform(const Statement &statement);
    void beginWait(const QStringList &pattern);
    void lookForEvent();
    void onTimer();
    void fail(const QString &message);

    const Script &m_script;
    CommandInterpreter &m_interpreter;
    EventLog &m_events;
    QTimer m_timer;
    State m_state = State::Running;
    int m_next = 0;
    int m_timeoutMs = 10000;
    QStringList m_pattern;
    /** Events before this one have been waited for, or been passed over by a later wait. */
    int m_nextEvent = 0;
};

#endif
