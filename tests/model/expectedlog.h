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
    void then(const std::string &line) { m_parts.push_back({{{line}}, false}); }
    void perhaps(const std::string &line) { m_parts.push_back({{{line}}, true}); }
    void inAnyOrder(std::vector<Lines> blocks) { m_parts.push_back({std::move(blocks), false}); }

    bool matches(const Lines &actual) const;

    /** All lines, in one of the orders; "perhaps " stands before those that need not come. */
    Lines lines() const;

private:
    struct Part
    {
        std::vector<Lines> blocks;
        bool isOptional;
    };

    std::vector<Part> m_parts;
};

#endif
