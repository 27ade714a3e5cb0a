// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef SIMULATOR_SCENARIOS_H
#define SIMULATOR_SCENARIOS_H

#include <QtCore/QStringList>

/** The scripts that are built into the program, from kit/scenarios. */
namespace Scenarios {

QStringList names();

/** Where a scenario of this name can be read. */
QString file(const QString &name);

/** One line for each: its name, and its first comment. */
QString list();

} // namespace Scenarios

#endif
