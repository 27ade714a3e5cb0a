// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// One application sends as much as it can, while the honest one carries a call.

#include "faultcell.h"

#include "printers.h"
#include "processfacts.h"
#include "programs.h"

namespace {

// All of a flood may be handled before the honest application has its turn.
constexpr int floodPatience = 20000;

struct Flood
{
    const char *kind;
    int count;
    /** How much larger the host may stay, in KiB. */
    int memoryBound;
};

void PrintTo(const Flood &flood, std::ostream *stream) { *stream << flood.kind; }

class FloodCell : public FaultCell, public testing::WithParamInterface<Flood>
{
protected:
    FloodCell() : FaultCell(floodPatience) { }
};

// Sanitizers slow the host down, and count all the same.
constexpr int times(int count) { return isSanitized ? count / 10 : count; }

} // namespace

TEST_P(FloodCell, LetsTheHonestCallGoOn)
{
    const Flood &flood = GetParam();
    memoryBound = flood.memoryBound;
    ASSERT_NO_FATAL_FAILURE(bringUpFaulty(5, "active"));
    faulty.type(QStringLiteral("flood %1 %2").arg(flood.kind).arg(flood.count));
    exchangeWhile([&] { return faulty.isRunning() && !faulty.lines().contains("answered"); });
    noteLatencies(QStringLiteral("%1 %2").arg(flood.count).arg(flood.kind));
    honest.makeCall();
}

// What is allowed to remain is what the allocator keeps of the largest moment, when messages have piled up.
constexpr int peak = 24 * 1024;

INSTANTIATE_TEST_SUITE_P(Of, FloodCell,
    testing::Values(Flood{"status", times(20000), peak}, Flood{"announcements", times(500), peak},
        Flood{"calls", times(500), peak}, Flood{"registrations", times(300), peak},
        Flood{"duplicates", times(3000), peak}, Flood{"bogus", times(3000), peak}, Flood{"mebibytes", 64, peak},
        Flood{"mutes", times(2000), peak}),
    [](const auto &info) { return info.param.kind; });

namespace {

/** One application after the other does the same: the host grows with the first of them, if at all. */
class RepetitionCell : public FaultCell, public testing::WithParamInterface<const char *>
{
protected:
    RepetitionCell() : FaultCell(floodPatience) { }

    static constexpr int rounds = 6;
    static constexpr int firstThatCounts = 2;
    static constexpr int growthBound = 1024;

    void floodAndLeave()
    {
        ASSERT_NO_FATAL_FAILURE(bringUpFaulty());
        ASSERT_NO_FATAL_FAILURE(
            tellAndAwait(QStringLiteral("flood %1 %2").arg(GetParam()).arg(times(200)), "answered"));
        honest.roundTrip();
        killFaulty();
        ASSERT_NO_FATAL_FAILURE(waitForDeparture());
    }

    int memory() { return ProcessFacts::residentMemory(host.program().processId()); }
};

} // namespace

TEST_P(RepetitionCell, LeavesNoMoreBehindThanOnce)
{
    memoryBound = peak;
    int settled = 0;
    for (int round = 0; round < rounds; ++round) {
        if (round > 0) {
            faulty.waitForExit();
            ASSERT_NO_FATAL_FAILURE(startFaulty());
        }
        ASSERT_NO_FATAL_FAILURE(floodAndLeave());
        if (round == firstThatCounts)
            settled = memory();
    }
    const int grown = memory() - settled;
    note(QStringLiteral("%1 KiB more after %2 applications than after %3; allowed are %4")
             .arg(grown)
             .arg(rounds)
             .arg(firstThatCounts + 1)
             .arg(growthBound));
    // Under sanitizers the leak checker has the say, at the end of the host.
    EXPECT_TRUE(isSanitized || grown <= growthBound);
}

INSTANTIATE_TEST_SUITE_P(Of, RepetitionCell, testing::Values("registrations", "calls"),
    [](const auto &info) { return std::string(info.param); });
