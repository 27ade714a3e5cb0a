// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "testclock.h"

#include "waitfor.h"

#include <atomic>
#include <ctime>
#include <sys/syscall.h>
#include <unistd.h>

static constexpr qint64 second = 1000000000;
static constexpr qint64 millisecond = 1000000;

// In nanoseconds: what the clock shows while it is held, since when that is (0 when it is not), and how far it is
// ahead of the real one otherwise.
static std::atomic<qint64> shown{0};
static std::atomic<qint64> heldSince{0};
static std::atomic<qint64> ahead{0};
static std::atomic<qint64> limit{0}; // of being held

// Past the C library, whose function is the one below.
static qint64 realTime()
{
    timespec now;
    syscall(SYS_clock_gettime, CLOCK_MONOTONIC, &now);
    return now.tv_sec * second + now.tv_nsec;
}

static qint64 testTime()
{
    const qint64 since = heldSince;
    const qint64 now = realTime();
    return since == 0 ? now + ahead : shown + qMax<qint64>(0, now - since - limit);
}

// The program's own definition stands before the C library's for all libraries that it loads.
extern "C" Q_DECL_EXPORT int clock_gettime(clockid_t clock, timespec *time) noexcept
{
    if (clock != CLOCK_MONOTONIC)
        return int(syscall(SYS_clock_gettime, clock, time));
    const qint64 now = testTime();
    time->tv_sec = now / second;
    time->tv_nsec = now % second;
    return 0;
}

TestClock::TestClock()
{
    shown = testTime();
    limit = patientWaitLimitMs() * millisecond;
    heldSince = realTime();
}

TestClock::~TestClock()
{
    ahead = testTime() - realTime();
    heldSince = 0;
}

void TestClock::advance(qint64 milliseconds) { shown += milliseconds * millisecond; }
