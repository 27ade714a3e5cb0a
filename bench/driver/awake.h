// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BENCH_AWAKE_H
#define BENCH_AWAKE_H

#include <sys/types.h>
#include <vector>

/**
 * Keeps every processor busy with work that yields to any other, while this lives. A processor that has gone to
 * sleep takes longer to wake than a message takes, in a virtual machine above all, and each time another while.
 */
class Awake
{
public:
    Awake();
    ~Awake();
    Awake(const Awake &) = delete;
    Awake &operator=(const Awake &) = delete;

private:
    std::vector<pid_t> m_spinners;
};

#endif
