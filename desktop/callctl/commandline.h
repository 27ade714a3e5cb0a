// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef CALLCTL_COMMANDLINE_H
#define CALLCTL_COMMANDLINE_H

#include <QtCore/QStringList>

/** What the command line asks for. */
struct CommandLine
{
    /** Empty when only a text was asked for. */
    QString command;
    QStringList arguments;
    /** The options that were given, --help and --version not among them. */
    QStringList options;
    /** Seconds that --timeout allows; negative without it. */
    double timeout = -1;
    bool help = false;
    bool version = false;

    bool has(const char *option) const { return options.contains(QLatin1String(option)); }

    /** Reads the arguments, the program's name not among them; throws Failure for an unknown option. */
    static CommandLine read(const QStringList &arguments);
};

#endif
