// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "processor.h"

#include <sched.h>
#include <unistd.h>

static bool isBound = true;

void runAnywhere() { isBound = false; }

void runOn(Side side)
{
    if (isBound)
        runOn(side == Side::Applications ? 0 : processorCount() - 1);
}

void runOn(long processor)
{
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(size_t(processor), &set);
    sched_setaffinity(0, sizeof set, &set);
}

long processorCount() { return sysconf(_SC_NPROCESSORS_ONLN); }
