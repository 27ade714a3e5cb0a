// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "awake.h"

#include "processor.h"

#include <csignal>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

[[noreturn]] static void spin(long processor)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    runOn(processor);
    const sched_param priority = {};
    if (sched_setscheduler(0, SCHED_IDLE, &priority) != 0)
        _exit(1);
    for (volatile unsigned i = 0;; i = i + 1) { }
}

Awake::Awake()
{
    for (long processor = 0; processor < processorCount(); ++processor) {
        const pid_t spinner = fork();
        if (spinner == 0)
            spin(processor);
        if (spinner > 0)
            m_spinners.push_back(spinner);
    }
}

Awake::~Awake()
{
    for (const pid_t spinner : m_spinners) {
        kill(spinner, SIGKILL);
        waitpid(spinner, nullptr, 0);
    }
}
