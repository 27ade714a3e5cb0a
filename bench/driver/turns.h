// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BENCH_TURNS_H
#define BENCH_TURNS_H

#include "results.h"

#include <functional>

/** One of those that are measured against each other: its name, and how it does the thing once. */
struct Contender
{
    std::string who;
    /** One value, in the row's unit. */
    std::function<double()> once;
};

/** How often: the contenders take turns, `length` times each, so that what disturbs the machine disturbs them all. */
struct Turns
{
    int count;
    int length;
};

/** Measures them against each other; what comes first is thrown away, since it warms up. */
Row measure(const std::string &name, int size, const std::string &unit, const std::vector<Contender> &contenders,
    const Turns &turns);

#endif
