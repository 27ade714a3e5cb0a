// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef SIMULATOR_RAWCOMMANDS_H
#define SIMULATOR_RAWCOMMANDS_H

#include <QtCore/QStringList>

class RawApplication;

/** The commands that drive a raw application: what stands behind `raw NAME`. */
namespace RawCommands {

/** What is wrong with a command as it is written; empty if nothing. */
QString fault(const QStringList &words);

/** Carries out a command that has no fault. */
void execute(const QStringList &words, RawApplication &application);

/** One line for each. */
QString help();

} // namespace RawCommands

#endif
