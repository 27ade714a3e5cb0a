// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// One application makes the host's messages large: each of its own, or all of them together.

#include "faultcell.h"

#include "printers.h"
#include "programs.h"
#include "textoutput.h"

#include <gmock/gmock.h>

using testing::HasSubstr;

namespace {

constexpr int sizePatience = 20000;

class SizeCell : public FaultCell
{
protected:
    // The allocator keeps some of the moment when most was waiting.
    SizeCell() : FaultCell(sizePatience) { memoryBound = 256 * 1024; }

    /** Whoever asks is answered: with all there is, or with an error. */
    void askForEverything()
    {
        ScriptedApplication client;
        EXPECT_FALSE(host.providers().isEmpty()) << "the providers are not told";
        EXPECT_NE(client.call(DesktopHost::name(), "/zelkovar/call/service", "zelkovar.Call.ServiceManager1",
                      "ListCallManagers"),
            QString());
        EXPECT_FALSE(host.calls().isEmpty()) << "the calls are not told";
        honest.makeCall();
    }

    void flood(const QString &kindAndCount)
    {
        tellAndAwait(QStringLiteral("flood ") + kindAndCount, "answered");
        honest.roundTrip();
    }
};

} // namespace

// --- Nothing may make the host's connection deaf

TEST_F(SizeCell, AHundredRegistrationsWithLongPathsInABurst)
{
    memoryBound = 64 * 1024;
    ASSERT_NO_FATAL_FAILURE(flood("paths 100 900000"));
    honest.makeCall();
}

// --- Lists of what applications have said

TEST_F(SizeCell, TwoRegistrationsWithLongPaths)
{
    ASSERT_NO_FATAL_FAILURE(flood("paths 2 600000"));
    askForEverything();
}

TEST_F(SizeCell, ElevenHundredRegistrations)
{
    ASSERT_NO_FATAL_FAILURE(flood("paths 1100 920"));
    askForEverything();
    EXPECT_THAT(host.program().errorOutput().toStdString(), HasSubstr("Too many call managers: "));
}

TEST_F(SizeCell, TwoCallsWithLongNames)
{
    ASSERT_NO_FATAL_FAILURE(bringUpFaulty());
    ASSERT_NO_FATAL_FAILURE(flood("names 2 600000"));
    askForEverything();
    EXPECT_TRUE(host.table().contains("faulty:/bad/flood1=incoming"));
}

TEST_F(SizeCell, EighteenHundredCalls)
{
    ASSERT_NO_FATAL_FAILURE(bringUpFaulty());
    // Taking down so many takes sanitizers longer than anybody waits for an answer.
    ASSERT_NO_FATAL_FAILURE(flood(isSanitized ? "calls 600" : "calls 1800"));
    askForEverything();
}

TEST_F(SizeCell, ACallOfWhichMuchIsAskedIsLoggedInShort)
{
    ASSERT_NO_FATAL_FAILURE(bringUpFaulty(5, "active"));
    ASSERT_NO_FATAL_FAILURE(flood("routes 200 425000"));
    honest.roundTrip();
    EXPECT_LT(host.program().errorOutput().size(), 300000);
}
