// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef CALLCTL_COMPLETION_H
#define CALLCTL_COMPLETION_H

#include <QtCore/QStringList>

struct CommandLine;

/** What a shell offers for the word that is being typed. */
namespace Completion {

/** The command `complete`: prints the candidates for the last word of its argument, a line each. */
void print(const CommandLine &line);

} // namespace Completion

#endif
