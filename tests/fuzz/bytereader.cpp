// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "bytereader.h"

std::uint64_t ByteReader::number(int bytes)
{
    std::uint64_t number = 0;
    for (int i = 0; i < bytes; ++i)
        number |= std::uint64_t(byte()) << (8 * i);
    return number;
}

unsigned ByteReader::below(unsigned limit)
{
    if (limit <= 1)
        return 0;
    return unsigned(number(limit > 256 ? 2 : 1)) % limit;
}
