// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "commands/commands.h"

int Commands::run(const Options &) { return Exit::impossible; }
