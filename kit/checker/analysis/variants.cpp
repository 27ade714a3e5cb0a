// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "analysis/variants.h"

static constexpr std::size_t longestPrint = 60;

std::string printed(GVariant *value)
{
    char *text = g_variant_print(value, FALSE);
    std::string result = text;
    g_free(text);
    if (result.size() <= longestPrint)
        return result;
    std::size_t end = longestPrint;
    // Never in the middle of a character.
    while (end > 0 && (static_cast<unsigned char>(result[end]) & 0xc0) == 0x80)
        --end;
    return result.substr(0, end) + "…";
}
