// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef SIMULATOR_TYPEDVALUE_H
#define SIMULATOR_TYPEDVALUE_H

#include <QtCore/QStringList>
#include <QtCore/QVariant>

/**
 * Reads a value of a D-Bus type, written TYPE:TEXT, such as u:3, s:Ann or as:one,two; what is wrong with it,
 * empty if nothing. docs/simulator.md lists the types.
 */
QString readValue(const QString &word, QVariant *value);

/** Reads several. */
QString readValues(const QStringList &words, QVariantList *values);

/** A value that came over the bus, in the same form; only its type if it is none of the plain ones. */
QString valueText(const QVariant &value);

/** What is wrong with an object path, a bus or error name, or a member name; empty if nothing. */
QString pathFault(const QString &path);
QString dottedNameFault(const QString &name);
QString memberFault(const QString &name);

#endif
