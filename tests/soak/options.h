// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_SOAK_OPTIONS_H
#define TESTS_SOAK_OPTIONS_H

#include <QtCore/QString>

/** The command line. */
struct Options
{
    int registrations = 100000;
    int calls = 200000;
    unsigned seed = 1;
    int patience = 20; // seconds for what is left to go away
    QString plugin = QStringLiteral(RINGLET_PLUGIN);
    QString log; // where the host's log goes; nowhere when empty
    QString report; // where the table of what was found goes; nowhere when empty
    QString leak; // what the probe loses at each look or call, to see that it is noticed

    /** Reads it. Where it is wrong, says so and ends the program with exit code 2. */
    static Options read();
};

#endif
