// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef SIMULATOR_COMMANDINTERPRETER_H
#define SIMULATOR_COMMANDINTERPRETER_H

#include "application.h"

#include <functional>

/** Carries out commands, typed or from a script. docs/simulator.md lists them. */
class CommandInterpreter : public QObject
{
    Q_OBJECT
public:
    explicit CommandInterpreter(Application &application, QObject *parent = nullptr);

    /** What is wrong with a command as it is written: unknown, or too few or too many words. Empty if nothing. */
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
    QString answer(const QStringList &words);
    QString hangUp(const QStringList &words);
    QString hold(const QStringList &words);
    QString mute(const QStringList &words);
    QString route(const QStringList &words);
    QString status(const QStringList &words);
    QString listCalls(const QStringList &words);
    QString check(const QStringList &words);
    QString showHelp(const QStringList &words);
    QString quit(const QStringList &words);

    QString addCall(const QStringList &words, bool incoming);
    QString withCall(const QString &name, const std::function<QString(Call &)> &action) const;

    Application &m_application;
};

#endif
