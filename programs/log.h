// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef RINGLET_LOG_H
#define RINGLET_LOG_H

#include <QtCore/QString>

/**
 * The log of our programs, on standard error. What they tell of comes from applications in part, so every
 * entry is one line of limited length in which nothing acts on a terminal, and an entry that comes again and
 * again is counted. All of it may be used from any thread.
 */
namespace Log {

/** Longest line, in columns. */
constexpr int longestLine = 500;

/** `text` as one line: cut, with a mark, and with \uXXXX for what is not printable. */
QString line(const QString &text);

/** Names the program in front of what complain() is given, and sends Qt's own log the same way. */
void begin(const QString &program);

/** Says what is wrong, in a line "PROGRAM: TEXT". */
void complain(const QString &text);

} // namespace Log

#endif
