// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "table.h"

#include "programs/printabletext.h"

#include <algorithm>
#include <numeric>

static const int gap = 2;
static const int narrowest = 4;

Table::Table(const QStringList &head, const QVector<int> &flexible) : m_flexible(flexible) { add(head); }

void Table::add(const QStringList &cells)
{
    QStringList row;
    for (const QString &cell : cells)
        row.append(PrintableText::printable(cell));
    m_rows.append(row);
}

QVector<int> Table::columnWidths(int columns) const
{
    QVector<int> widths(m_rows.constFirst().size(), 0);
    for (const QStringList &row : m_rows) {
        for (int i = 0; i < row.size(); ++i)
            widths[i] = qMax(widths[i], PrintableText::width(row.at(i)));
    }
    int excess = std::accumulate(widths.cbegin(), widths.cend(), gap * (widths.size() - 1)) - columns;
    // The widest gives way, column by column, until it fits or nothing can be taken any more.
    for (; columns > 0 && excess > 0 && !m_flexible.isEmpty(); --excess) {
        const int widest = *std::max_element(
            m_flexible.cbegin(), m_flexible.cend(), [&](int a, int b) { return widths[a] < widths[b]; });
        if (widths[widest] <= narrowest)
            break;
        --widths[widest];
    }
    return widths;
}

QStringList Table::lines(int columns) const
{
    const QVector<int> widths = columnWidths(columns);
    QStringList lines;
    for (const QStringList &row : m_rows) {
        QStringList cells;
        for (int i = 0; i < row.size(); ++i)
            cells.append(PrintableText::padded(PrintableText::elided(row.at(i), widths.at(i)), widths.at(i)));
        QString line = cells.join(QString(gap, QLatin1Char(' ')));
        while (line.endsWith(QLatin1Char(' ')))
            line.chop(1);
        lines.append(columns > 0 ? PrintableText::elided(line, columns) : line);
    }
    return lines;
}
