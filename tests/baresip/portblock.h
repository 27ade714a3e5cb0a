// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_PORTBLOCK_H
#define TESTS_PORTBLOCK_H

#include <QtCore/QtGlobal>

/**
 * A hundred ports of the loopback interface for this process alone: tests that run at the same time, and ask
 * for a block too, get other ones. They lie below those that the system gives out by itself.
 *
 * Constructing it throws std::runtime_error when there is no free block.
 */
class PortBlock
{
public:
    PortBlock();
    ~PortBlock();
    PortBlock(const PortBlock &) = delete;
    PortBlock &operator=(const PortBlock &) = delete;

    /** From 1 to 99. */
    quint16 port(int number) const;

private:
    /** Whoever listens on the block's first port has it. */
    int m_socket = -1;
    quint16 m_first = 0;
};

#endif
