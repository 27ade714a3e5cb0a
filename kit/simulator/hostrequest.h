// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef SIMULATOR_HOSTREQUEST_H
#define SIMULATOR_HOSTREQUEST_H

#include <QtCore/QStringList>

/** What is wrong with what a script asks of whoever sits at the host; empty if nothing. */
QString hostRequestFault(const QStringList &words);

#endif
