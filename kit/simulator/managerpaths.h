// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef SIMULATOR_MANAGERPATHS_H
#define SIMULATOR_MANAGERPATHS_H

#include <QtCore/QStringList>

/** What is wrong with the object paths of an application's call managers; empty if nothing. */
QString managersFault(const QStringList &paths);

#endif
