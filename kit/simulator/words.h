// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef SIMULATOR_WORDS_H
#define SIMULATOR_WORDS_H

#include <QtCore/QStringList>

/**
 * The words of a line, split at blanks. Double quotes keep blanks, also inside a word (name="A B"); within
 * them a backslash takes the next character literally, and \n, \r and \t are what they are in C.
 * False when a quote is left open.
 */
bool splitWords(const QString &line, QStringList *words);

/** `text` in double quotes, on one line, so that splitWords() gives it back. */
QString quoted(const QString &text);

#endif
