// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BENCH_TURNS_H
#define BENCH_TURNS_H

#include "results.h"

#include <functional>

/** What doing the thing once gives: a value for each row, in its unit; a row behind the last has no such contender. */
using Values = std::vector<double>;

/** One of those that are measured against each other: its name, and how it does the thing once. */
struct Contender
{
    std::string who;
    std::function<Values()> once;
};

/**
 * How often: in each round the contenders take so many turns, and do the thing `length` times in each, so that what
 * disturbs the machine disturbs them all.
 */
struct Turns
{
    int rounds;
    int turns = 1;
    int length = 1;
};

/**
 * Measures contenders against each other, and fills the rows. They are started anew for every round: what is drawn
 * when a process begins, such as where its memory lies, is drawn once for each. Every other round has them in the
 * opposite order. What a round does first is thrown away, since it warms up.
 */
std::vector<Row> measure(
    std::vector<Row> rows, const std::function<std::vector<Contender>()> &start, const Turns &turns);

#endif
