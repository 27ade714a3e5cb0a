// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALLD_OPTIONS_H
#define VOICECALLD_OPTIONS_H

#include "bounds.h"

#include <QtCore/QStringList>

/** What the command line asks for. */
struct Options
{
    QStringList pluginFiles;
    QStringList pluginDirectories;
    QString audio;
    bool trace = false;
    Bounds bounds;
    /** Milliseconds between two looks whether the bus is still heard; 0 for never. */
    int hearingCheckInterval = 60000;

    /**
     * Reads the arguments of the application object. Ends the program where the command line asks for a
     * text (exit code 0) or is wrong (exit code 2, with the reason on standard error).
     */
    static Options read();
};

#endif
