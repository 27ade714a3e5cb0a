// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef RINGLET_PRINTABLETEXT_H
#define RINGLET_PRINTABLETEXT_H

#include <QtCore/QString>

/**
 * Text from applications, made fit for a terminal. Names and addresses are other people's: they may hold
 * anything, escape sequences and marks that turn the writing direction included.
 */
namespace PrintableText {

/** Whether the character can do nothing to a terminal but show. */
bool isPrintable(uint character);

/**
 * With a replacement character for each that is not printable, and with one for the marks of a letter that are
 * too many: they would take no column, and all lines around.
 */
QString printable(const QString &text);

/**
 * With \uXXXX for each character that is not printable, line ends excepted, and for each mark too many; what JSON
 * strings allow.
 */
QString escaped(const QString &text);

/** Columns that a printable text takes on a terminal. */
int width(const QString &text);

/** Cut to at most `columns`, with an ellipsis where something is cut off. */
QString elided(const QString &text, int columns);

/**
 * Filled up with spaces to `columns`; what comes behind keeps its place on terminals that write from right to
 * left where letters ask for it.
 */
QString padded(const QString &text, int columns);

} // namespace PrintableText

#endif
