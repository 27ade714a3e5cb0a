// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_OBJECTWATCH_H
#define TESTS_OBJECTWATCH_H

#include <QtCore/QObject>
#include <QtCore/QStringList>

/**
 * Knows every QObject that is made on this thread while it lives, also those without a parent. One at a time.
 *
 * It stands on the hook table that Qt keeps for inspection tools.
 */
class ObjectWatch
{
public:
    ObjectWatch();
    ~ObjectWatch();

    ObjectWatch(const ObjectWatch &) = delete;
    ObjectWatch &operator=(const ObjectWatch &) = delete;

    /** Class names, ending in `suffix`, of the objects that live, in the order of their making. */
    QStringList living(const QString &suffix);

    /** The same of those that were destroyed since living() last saw them, in the order of their end. */
    QStringList destroyed(const QString &suffix) const;
};

#endif
