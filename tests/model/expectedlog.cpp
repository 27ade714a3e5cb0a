// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "expectedlog.h"

#include <algorithm>

using Position = Lines::const_iterator;

static bool isNext(const Lines &block, Position position, Position end)
{
    return std::size_t(end - position) >= block.size() && std::equal(block.begin(), block.end(), position);
}

// Takes the longest block that fits: the only one that can fit, unless one is the beginning of another.
static bool takeBlocks(std::vector<Lines> blocks, Position &position, Position end)
{
    std::sort(blocks.begin(), blocks.end(), [](const Lines &a, const Lines &b) { return a.size() > b.size(); });
    while (!blocks.empty()) {
        const auto next = std::find_if(
            blocks.begin(), blocks.end(), [&](const Lines &block) { return isNext(block, position, end); });
        if (next == blocks.end())
            return false;
        position += std::ptrdiff_t(next->size());
        blocks.erase(next);
    }
    return true;
}

bool ExpectedLog::matches(const Lines &actual) const
{
    Position position = actual.begin();
    for (const Part &part : m_parts)
        if (!takeBlocks(part.blocks, position, actual.end()) && !part.isOptional)
            return false;
    return position == actual.end();
}

Lines ExpectedLog::lines() const
{
    Lines all;
    for (const Part &part : m_parts)
        for (const Lines &block : part.blocks)
            for (const std::string &line : block)
                all.push_back((part.isOptional ? "perhaps " : "") + line);
    return all;
}
