// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef KIT_CHECKER_COMMANDS_H
#define KIT_CHECKER_COMMANDS_H

#include "commands/options.h"

/** What the program can be told to do; each returns the exit code. */
namespace Commands {
int why(const Options &options);
int watch(const Options &options);
int record(const Options &options);
int read(const Options &options);
int run(const Options &options);
int explain(const Options &options);
int rules(const Options &options);
} // namespace Commands

#endif
