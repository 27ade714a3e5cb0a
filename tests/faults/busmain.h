// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_BUSMAIN_H
#define TESTS_BUSMAIN_H

#include <QtCore/QStringList>

/** Runs the tests on a private bus with these further elements in its configuration; the exit code. */
int runTestsOnBus(const QString &configuration, int argc, char *argv[]);

/** Bytes of the largest message that the tests' bus lets through. */
int largestMessage();

/** What voicecalld has to be told on the tests' bus, beyond what it takes for granted. */
QStringList optionsOnBus();

/** What docs/limits.md advises for the configuration of the bus, as it stands there. Throws std::runtime_error without
 * any. */
QString advisedLimits();

#endif
