// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "turns.h"

#include <algorithm>

static void warmUp(const std::vector<Contender> &contenders, const Turns &turns)
{
    const int count = std::min(20, turns.count * turns.length / 10);
    for (const Contender &contender : contenders) {
        for (int i = 0; i < count; ++i)
            contender.once();
    }
}

Row measure(const std::string &name, int size, const std::string &unit, const std::vector<Contender> &contenders,
    const Turns &turns)
{
    Row row = {name, size, unit, {}};
    for (const Contender &contender : contenders)
        row.samples.push_back({contender.who, {}});
    warmUp(contenders, turns);
    for (int turn = 0; turn < turns.count; ++turn) {
        for (size_t i = 0; i < contenders.size(); ++i) {
            for (int j = 0; j < turns.length; ++j)
                row.samples[i].values.push_back(contenders[i].once());
        }
    }
    return row;
}
