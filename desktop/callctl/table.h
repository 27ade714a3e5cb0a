// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef CALLCTL_TABLE_H
#define CALLCTL_TABLE_H

#include <QtCore/QStringList>
#include <QtCore/QVector>

/** A text table with a head line; columns two spaces apart. */
class Table
{
public:
    /** `flexible` columns give way when the table is too wide: empty ones go first, then the widest get narrower. */
    explicit Table(const QStringList &head, const QVector<int> &flexible = {});

    /** Cells may hold any text: it is made printable here. */
    void add(const QStringList &cells);

    /** Lines without their ends, none wider than `columns`; 0 for as wide as they are. */
    QStringList lines(int columns = 0) const;

private:
    int excess(const QVector<int> &widths, int columns) const;
    QVector<int> columnWidths(int columns) const;

    QVector<QStringList> m_rows;
    QVector<int> m_flexible;
};

#endif
