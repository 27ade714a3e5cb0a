// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "analysis/spelling.h"

#include <algorithm>
#include <cctype>
#include <numeric>
#include <vector>

static int distance(std::string_view left, std::string_view right)
{
    std::vector<int> row(right.size() + 1);
    std::iota(row.begin(), row.end(), 0);
    for (const char letter : left) {
        int diagonal = row[0]++;
        for (std::size_t i = 0; i < right.size(); ++i) {
            const bool isSame = std::tolower(static_cast<unsigned char>(letter))
                == std::tolower(static_cast<unsigned char>(right[i]));
            const int best = std::min({row[i + 1] + 1, row[i] + 1, diagonal + (isSame ? 0 : 1)});
            diagonal = row[i + 1];
            row[i + 1] = best;
        }
    }
    return row.back();
}

bool Spelling::isSlip(std::string_view written, std::string_view meant)
{
    constexpr std::size_t longestName = 255;
    if (written == meant || written.size() > longestName)
        return false;
    // One letter in four, as far as two.
    const int allowed = std::clamp(static_cast<int>(meant.size()) / 4, 0, 2);
    return distance(written, meant) <= allowed;
}
