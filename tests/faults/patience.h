// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_PATIENCE_H
#define TESTS_PATIENCE_H

#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>
#include <QtCore/QTimer>

/**
 * Runs the event loop until `condition` holds or the time is over; whether it came to hold. Looks every
 * millisecond, for times are measured with it.
 */
template <typename Condition>
bool holdsWithin(int milliseconds, Condition condition)
{
    QElapsedTimer clock;
    clock.start();
    QTimer tick;
    tick.setTimerType(Qt::PreciseTimer);
    tick.start(1);
    while (!condition()) {
        if (clock.elapsed() > milliseconds)
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

/** For a fault that lasts: runs the event loop for so long. */
inline void endure(int milliseconds)
{
    holdsWithin(milliseconds, [] { return false; });
}

#endif
