// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef CALLCTL_COMMANDS_H
#define CALLCTL_COMMANDS_H

struct CommandLine;

/** Carries out what the command line asks for, other than texts. */
namespace Commands {

/** Returns when it is done; throws Failure when it cannot be. */
void run(const CommandLine &line);

} // namespace Commands

#endif
