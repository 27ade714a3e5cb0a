// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_EXPECTEDLOG_H
#define TESTS_EXPECTEDLOG_H

#include <string>
#include <vector>

using Lines = std::vector<std::string>;

/**
 * Lines that must come in their order. Where the order of a few is free, they stand as blocks of which any may
 * come first; a block is never torn apart.
 */
class ExpectedLog
{
public:
    void then(const std::string &line) { m_parts.push_back({{line}}); }
    void inAnyOrder(std::vector<Lines> blocks) { m_parts.push_back(std::move(blocks)); }

    bool matches(const Lines &actual) const;

    /** All lines, in one of the orders. */
    Lines lines() const;

private:
    std::vector<std::vector<Lines>> m_parts;
};

#endif
