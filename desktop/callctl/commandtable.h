// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef CALLCTL_COMMANDTABLE_H
#define CALLCTL_COMMANDTABLE_H

#include <QtCore/QStringList>

struct CommandLine;

/** A row of the one table that the command line, --help, completion and the documentation come from. */
struct Command
{
    const char *name;
    /**
     * The arguments as people are told of them. Completion offers what the words stand for: CALL, PROVIDER,
     * INPUT, OUTPUT, CONDITION; words with a bar between them stand for themselves. Options are allowed that
     * stand here.
     */
    const char *usage;
    const char *help;
    /** How many arguments it takes, options not counted. */
    int least;
    int most;
    /** Returns when it is done; throws Failure when it cannot be. */
    void (*run)(const CommandLine &line);
};

namespace CommandTable {

/** Throws Failure, which lists those there are, when there is none of this name. */
const Command &find(const QString &name);

/** Throws Failure, which tells the right use, when the command does not take these arguments or options. */
void check(const Command &command, const CommandLine &line);

QStringList names();

/** One screen. */
QString helpText();

} // namespace CommandTable

#endif
