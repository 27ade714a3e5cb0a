// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_INVENTORY_H
#define TESTS_INVENTORY_H

#include <QtCore/QStringList>
#include <QtCore/QVector>
#include <QtDBus/QDBusConnection>

/** What the host's process holds at one moment, counted by the process itself, the bus daemon and the kernel. */
struct Inventory
{
    struct Count
    {
        const char *name;
        qint64 value;
    };

    /** Counts that come back to where they were. */
    QVector<Count> counts;
    /** The host's match rules, as the bus daemon has them, sorted. */
    QStringList matchRules;
    qint64 heap = 0; // bytes that are allocated; 0 when nobody knows
    qint64 resident = 0; // bytes of memory in use, the kernel's RSS

    /** Counts it; throws std::runtime_error when somebody does not answer. */
    static Inventory take(const QDBusConnection &bus, qint64 host);

    /** Whether nothing has come or gone. Memory is not compared. */
    bool operator==(const Inventory &other) const;

    /** A table of counts, with what `other` has beside it, and of the rules that only one of them has. */
    QString comparedWith(const Inventory &other) const;
};

#endif
