// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BENCH_MEASUREMENTS_H
#define BENCH_MEASUREMENTS_H

#include "turns.h"

/** What the measurements share: the address of the bus, and where the rows go. */
struct Bench
{
    std::string address;
    Results &results;
    /** Fewer and smaller, to see that it works. */
    bool isShort = false;
    /** Where callgrind's files are kept, for callgrind_annotate; empty to drop them. */
    std::string profiles;

    /** Measures, as often as this run wants it, and adds the rows to the results. */
    void measure(
        const std::vector<Row> &rows, const std::function<std::vector<Contender>()> &start, const Turns &turns) const
    {
        for (const Row &row : ::measure(rows, start, isShort ? Turns{2, 1, turns.length} : turns))
            results.add(row);
    }
};

// Each adds its rows; what they mean stands in docs/performance.md.
void measureStatus(const Bench &bench);
void measureCommands(const Bench &bench);
void measureRegistration(const Bench &bench);
void measureAnnouncement(const Bench &bench);
void measureAudio(const Bench &bench);
void measureScale(const Bench &bench);
void measureDeparture(const Bench &bench);
void measureFlood(const Bench &bench);
void measureIdle(const Bench &bench);
void measureLoading(const Bench &bench);
void measureLog(const Bench &bench);
void countInstructions(const Bench &bench);

#endif
