// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_FAULTCELL_H
#define TESTS_FAULTCELL_H

#include "desktophost.h"
#include "honestapplication.h"
#include "program.h"

#include <QtCore/QElapsedTimer>
#include <gtest/gtest.h>

/**
 * One cell of the table of faults: a fresh bus, the host with the plug-in, an honest application with a call,
 * and a faulty one that does what the test makes it do.
 *
 * The honest application makes a call before the test begins. When the test has done its worst, the faulty
 * application is killed, unless it is gone already, and all has to be as before: its calls and providers are
 * gone, the honest application makes a further call and ends the one that lasted, the host has given back
 * descriptors and memory, and it ends cleanly. What was measured is printed in one line for scripts/check faults.
 *
 * Under sanitizers the size of the host says nothing, as freed memory is kept back to find its uses. It is
 * printed and not judged; the leak checker looks at the host when it ends, and a leak fails the cell.
 */
class FaultCell : public testing::Test
{
protected:
    /** Patience in milliseconds with each step of host and honest application: beyond it, the host hangs. */
    explicit FaultCell(int patience = 8000) : honest(patience), m_patience(patience) { }

    void SetUp() override;
    void TearDown() override;

    /** Starts a faulty application; it is connected when this returns. */
    void startFaulty();

    /** Types a command and waits until it is done. */
    void tell(const QString &command);

    /** Types a command and waits for a line that it causes behind it. */
    void tellAndAwait(const QString &command, const QString &line);

    /** Types a command after which the faulty application is stopped, or no longer there. */
    void tellLast(const QString &command);

    /** Registers /bad and brings up the call /bad/1 with this status, shown so by the host. */
    void bringUpFaulty(uint status = 3, const QString &shown = QStringLiteral("incoming"));

    /** The faulty call's StatusText in the host; empty when it is not shown. */
    QString faultyStatus(const QString &path = QStringLiteral("/bad/1")) const;

    void waitForFaultyStatus(const QString &shown, const QString &path = QStringLiteral("/bad/1"));

    /** Gives the host a command for the faulty call, which must be shown. */
    void commandFaulty(const QString &method, const QVariantList &arguments = {});

    /** Kills the faulty application; its departure is timed from here. */
    void killFaulty();

    /** From now on the faulty application counts as gone. */
    void beginDeparture();

    /** Waits until nothing but the honest application and its call is left, and keeps the time it took. */
    void waitForDeparture();

    /** Exchanges with the honest application's lasting call while the condition holds, at least once. */
    template <typename Condition>
    void exchangeWhile(Condition condition)
    {
        do {
            ASSERT_NO_FATAL_FAILURE(honest.exchange());
        } while (condition());
    }

    /** Prints "p50 and worst latency so far" of the exchanges, and forgets their times. */
    void noteLatencies(const QString &during);

    /** Prints a line that scripts/check faults shows below the cell. */
    void note(const QString &text) const;

    /** The host is expected to be gone at the end; nothing is judged of it. */
    void expectNoHost() { m_expectsHost = false; }

    /** How much larger than before the host may be at the end, in KiB. */
    int memoryBound = 4096;

    /** Further options of the host, set before it is started. */
    QStringList hostOptions;
    DesktopHost host;
    Program faulty;
    HonestApplication honest;

private:
    bool onlyTheHonestIsLeft() const;
    void judgeResources();
    void report() const;

    int m_patience;
    bool m_expectsHost = true;
    bool m_isReady = false;
    QElapsedTimer m_departure;
    int m_departureMs = -1;
    qint64 m_worstUs = 0;
    int m_memoryBefore = 0;
    int m_memoryAfter = 0;
    int m_descriptorsBefore = 0;
    int m_descriptorsAfter = 0;
};

#endif
