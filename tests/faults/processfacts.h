// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_PROCESSFACTS_H
#define TESTS_PROCESSFACTS_H

#include <QtCore/QtGlobal>

/** What the kernel knows of a process that is running. */
namespace ProcessFacts {

int openDescriptors(qint64 pid);

/** Resident memory, in KiB. */
int residentMemory(qint64 pid);

/** Processor time used so far, in milliseconds. */
int processorTime(qint64 pid);

bool isStopped(qint64 pid);

/** Sets the soft limit of open files; false when the kernel refused. */
bool limitDescriptors(qint64 pid, int count);

} // namespace ProcessFacts

#endif
