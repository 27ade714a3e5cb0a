// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef SIMULATOR_WORDS_H
#define SIMULATOR_WORDS_H

#include <QtCore/QStringList>

/**
 * The words of a line, split at blanks. Double quotes keep blanks, also inside a word (name="A B"); within
 * them a backslash takes the next character literally; \n, \r and \t are what they are in C, \uXXXX in JSON.
 * False when a quote is left open.
 */
bool splitWords(const QString &line, QStringList *words);

/** `text` in double quotes, on one line that is printable, so that splitWords() gives it back. */
QString quoted(const QString &text);

QString yesNo(bool yes);

/** The truth of `word`, which is one of two; what is wrong with it, empty if nothing. */
QString readChoice(const QString &word, const QString &yes, const QString &no, bool *truth);

/** Reads a time from 0 to a day, in seconds; what is wrong with it, empty if nothing. */
QString readSeconds(const QString &word, int *milliseconds);

#endif
