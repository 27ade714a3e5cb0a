// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef CALLCTL_COMMANDS_H
#define CALLCTL_COMMANDS_H

struct CommandLine;

/** The commands; what they take stands in the table of commands. All throw Failure when they cannot do it. */
namespace Commands {

void calls(const CommandLine &line);
void providers(const CommandLine &line);
void devices(const CommandLine &line);
void answer(const CommandLine &line);
void hangup(const CommandLine &line);
void hold(const CommandLine &line);
void swap(const CommandLine &line);
void dtmf(const CommandLine &line);
void dial(const CommandLine &line);
void mute(const CommandLine &line);
void input(const CommandLine &line);
void output(const CommandLine &line);
void wait(const CommandLine &line);
void watch(const CommandLine &line);

} // namespace Commands

#endif
