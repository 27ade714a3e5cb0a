// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_WAITFOR_H
#define TESTS_WAITFOR_H

#include "program.h"

#include <QtCore/QCoreApplication>
#include <QtTest/QTest>

/** How long a test waits for what must come, in milliseconds; generous, since machines are shared. */
constexpr int waitLimitMs = 20000;

/** The same, as many times as RINGLET_TEST_PATIENCE in the environment says, for programs that a checker slows down. */
inline int patientWaitLimitMs() { return waitLimitMs * qMax(1, qEnvironmentVariableIntValue("RINGLET_TEST_PATIENCE")); }

/**
 * Runs the event loop until `condition` holds; false when it did not come to hold in time, and at once when a
 * program that the test has started is lost: what is true of the dead says nothing.
 */
template <typename Condition>
bool waitFor(Condition condition)
{
    bool isLost = false;
    const auto isOver = [&] { return condition() || (isLost = Program::reportLost()); };
    return QTest::qWaitFor(isOver, patientWaitLimitMs()) && !isLost && !Program::reportLost();
}

#endif
