// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef SIMULATOR_OPTIONS_H
#define SIMULATOR_OPTIONS_H

#include "newcall.h"

#include <QtCore/QList>

/** What the command line asks for. */
struct Options
{
    QString host;
    QStringList managers;
    QList<NewCall> calls;
    /** File of a script, and what messages call it; empty when there is none. */
    QString script;
    QString scriptName;
    bool stay = false;
    /** Whether everybody may command the calls, and not the host alone. */
    bool obeysAnyone = false;
    /** What to print instead of doing anything: help, the scenarios or the version. */
    QString answer;

    /** Reads the command line; what is wrong with it, empty if nothing. */
    QString read(const QStringList &arguments);
};

#endif
