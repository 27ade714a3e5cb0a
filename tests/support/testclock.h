// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_TESTCLOCK_H
#define TESTS_TESTCLOCK_H

#include <QtCore/QtGlobal>

/**
 * While it lives, the monotonic clock of this process stands still, and goes on only by what a test lets pass: for
 * Qt's timers and QElapsedTimer, for the standard library, and for everything else that asks the C library. The
 * event loop runs timers that have come due when it next looks. Afterwards the clock goes on from where it was left.
 *
 * One at a time. Held for longer than a test waits for anything, the clock runs again, so that such a wait ends.
 */
class TestClock
{
public:
    TestClock();
    ~TestClock();
    TestClock(const TestClock &) = delete;
    TestClock &operator=(const TestClock &) = delete;

    /** Lets so many milliseconds pass at once. */
    void advance(qint64 milliseconds);
};

#endif
