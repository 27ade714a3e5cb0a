// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef SIMULATOR_COMMANDINTERPRETER_H
#define SIMULATOR_COMMANDINTERPRETER_H

#include "newcall.h"
#include "simulation.h"

#include <functional>

/** Carries out commands, typed or from a script. docs/simulator.md lists them. */
class CommandInterpreter : public QObject
{
    Q_OBJECT
public:
    CommandInterpreter(Simulation &simulation, EventLog &events);

    /** What is wrong with a command as it is written; empty if nothing. */
    static QString fault(const QStringList &words);

    /** Carries out a command; what went wrong, empty if nothing. */
    QString execute(const QStringList &words);

    /** One line for each command. */
    static QString help();

Q_SIGNALS:
    /** By the command `quit`. */
    void quitRequested();

private:
    struct Command;
    static const QList<Command> &commands();
    static const Command *findCommand(const QString &name);

    // Each gets the words behind its name, as many as the command takes.
    QString addIncoming(const QStringList &words);
    QString addOutgoing(const QStringList &words);
    QString addMany(const QStringList &words);
    QString answer(const QStringList &words);
    QString hangUp(const QStringList &words);
    QString hold(const QStringList &words);
    QString mute(const QStringList &words);
    QString route(const QStringList &words);
    QString status(const QStringList &words);
    QString listCalls(const QStringList &words);
    QString check(const QStringList &words);
    QString addApplication(const QStringList &words);
    QString leave(const QStringList &words);
    QString raw(const QStringList &words);
    QString ask(const QStringList &words);
    QString die(const QStringList &words);
    QString showHelp(const QStringList &words);
    QString quit(const QStringList &words);

    QString addCall(const QStringList &words, bool incoming);
    QString checkCalls(const Application &application, const QStringList &words) const;
    QString withApplication(const QString &name, const std::function<QString(Application &)> &action) const;
    QString withCalls(const QString &label, const std::function<QString(SimulatedCall &)> &action) const;

    Simulation &m_simulation;
    EventLog &m_events;
};

#endif
