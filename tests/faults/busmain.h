// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_BUSMAIN_H
#define TESTS_BUSMAIN_H

#include <QtCore/QString>

/** Runs the tests on a private bus with these further elements in its configuration; the exit code. */
int runTestsOnBus(const QString &configuration, int argc, char *argv[]);

/** The limits that docs/limits.md advises, as they stand there. Throws std::runtime_error without any. */
QString advisedLimits();

#endif
