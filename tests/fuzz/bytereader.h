// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_BYTEREADER_H
#define TESTS_BYTEREADER_H

#include <cstddef>
#include <cstdint>

/**
 * Turns the bytes of an input into choices, one after the other. Behind the end every byte is 0, and the first
 * choice is the plainest one: a truncated input means the same as before, up to where it ends.
 */
class ByteReader
{
public:
    ByteReader(const std::uint8_t *data, std::size_t size) : m_next(data), m_end(data + size) { }

    bool atEnd() const { return m_next == m_end; }

    std::uint8_t byte() { return atEnd() ? 0 : *m_next++; }

    /** A number of this many bytes, little-endian. */
    std::uint64_t number(int bytes);

    /** A number from 0 to limit - 1; takes one byte, or two where one would not reach. */
    unsigned below(unsigned limit);

    /** True for one byte value in `n`; false at the end. */
    bool oneIn(unsigned n) { return n <= 1 || byte() % n == n - 1; }

    /** An element of a fixed table. */
    template <typename T, std::size_t size>
    const T &oneOf(const T (&table)[size])
    {
        return table[below(size)];
    }

private:
    const std::uint8_t *m_next;
    const std::uint8_t *m_end;
};

#endif
