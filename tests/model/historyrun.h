// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_HISTORYRUN_H
#define TESTS_HISTORYRUN_H

#include "busmonitor.h"
#include "step.h"

#include <string>

struct HistoryResult
{
    /** What the plug-in did otherwise than the model, and after which steps; empty when they agree. */
    std::string difference;
    /** Steps that could be done. */
    int steps = 0;
};

/** Does the history with a plug-in of its own and with the model, and compares after each pause. */
HistoryResult runHistory(BusMonitor &monitor, const History &history);

#endif
