// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "turns.h"

#include <algorithm>

static void warmUp(const std::vector<Contender> &contenders, const Turns &turns)
{
    const int count = std::min(20, turns.turns * turns.length / 10);
    for (const Contender &contender : contenders) {
        for (int i = 0; i < count; ++i)
            contender.once();
    }
}

static void takeTurns(std::vector<Row> &rows, const std::vector<Contender> &contenders, const Turns &turns, int round)
{
    for (const Contender &contender : contenders) {
        for (int i = 0; i < turns.length; ++i) {
            const Values values = contender.once();
            for (size_t row = 0; row < std::min(rows.size(), values.size()); ++row)
                rows[row].add(contender.who, round, values[row]);
        }
    }
}

std::vector<Row> measure(
    std::vector<Row> rows, const std::function<std::vector<Contender>()> &start, const Turns &turns)
{
    for (int round = 0; round < turns.rounds; ++round) {
        std::vector<Contender> contenders = start();
        if (round % 2 != 0)
            std::reverse(contenders.begin(), contenders.end());
        warmUp(contenders, turns);
        for (int turn = 0; turn < turns.turns; ++turn)
            takeTurns(rows, contenders, turns, round);
    }
    return rows;
}
