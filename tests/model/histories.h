// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_HISTORIES_H
#define TESTS_HISTORIES_H

#include "step.h"

#include <cstdint>
#include <functional>

struct HistoriesResult
{
    /** Histories in which plug-in and model agreed. */
    int passed = 0;
    /** The history that failed, as small as it would get, and what differed; the latter is empty if none failed. */
    History failed;
    std::string difference;
};

/**
 * Random histories of some twenty steps that can be done. One that fails is shrunk to fewer and simpler steps.
 *
 * `run` says what differed in a history, or nothing. The same seed gives the same histories.
 */
HistoriesResult checkHistories(std::uint64_t seed, int count, const std::function<std::string(const History &)> &run);

#endif
