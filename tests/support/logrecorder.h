// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_LOGRECORDER_H
#define TESTS_LOGRECORDER_H

#include <QtCore/QStringList>

/**
 * Records all that is logged while it lives, every level of every category. One at a time.
 *
 * An entry is "LEVEL CATEGORY: TEXT", for example "info voicecall: void CallHandler::answer():12 0x55d0".
 */
class LogRecorder
{
public:
    LogRecorder();
    ~LogRecorder();

    /** All entries so far. */
    QStringList entries() const;

    /** Entries that start with `prefix`, such as "warning voicecall: ". */
    QStringList startingWith(const QString &prefix) const;

    void clear();
};

#endif
