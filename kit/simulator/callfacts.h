// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef SIMULATOR_CALLFACTS_H
#define SIMULATOR_CALLFACTS_H

#include "simulatedcall.h"

/** Reads one of the facts that `check` knows of a call; what is wrong with its name, empty if nothing. */
QString readFact(const SimulatedCall &call, const QString &fact, QString *value);

#endif
