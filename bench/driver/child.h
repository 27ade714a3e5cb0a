// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BENCH_CHILD_H
#define BENCH_CHILD_H

#include "processor.h"

#include <string>
#include <sys/types.h>
#include <vector>

/** A process of ours, which ends with this object and with our own process. Its standard output is dropped. */
class Child
{
public:
    /**
     * Descriptor 3, 4, … of the process are these; the caller's stay open. Standard error goes to the file, and is
     * dropped by default. Throws std::runtime_error when it cannot be started.
     */
    Child(Side side, const std::vector<std::string> &command, const std::vector<int> &descriptors,
        const std::vector<std::string> &environment = {}, const std::string &errors = "/dev/null");
    ~Child();

    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;

    pid_t id() const { return m_id; }

    /** Waits until it has ended by itself. */
    void wait();

private:
    pid_t m_id;
};

/** A pair of connected sockets, each closed with this object or by hand. */
struct SocketPair
{
    SocketPair();
    ~SocketPair();
    SocketPair(const SocketPair &) = delete;
    SocketPair &operator=(const SocketPair &) = delete;

    void closeFar();

    int near = -1;
    int far = -1;
};

#endif
