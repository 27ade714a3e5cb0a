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
    bool json = false;
    bool help = false;
    bool version = false;

    /** Reads the arguments, the program's name not among them; throws Failure for an unknown option. */
    static CommandLine read(const QStringList &arguments);

    /** One screen of help. */
    static QString helpText();
};

#endif
