// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "processor.h"

#include <sched.h>
#include <unistd.h>

void runOn(Side side)
{
    const long last = sysconf(_SC_NPROCESSORS_ONLN) - 1;
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(side == Side::Applications ? 0 : size_t(last), &set);
    sched_setaffinity(0, sizeof set, &set);
}
