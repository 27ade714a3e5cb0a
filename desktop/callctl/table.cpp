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

// A column of no width is left out, with the gap before it.
int Table::excess(const QVector<int> &widths, int columns) const
{
    const int shown = int(std::count_if(widths.cbegin(), widths.cend(), [](int width) { return width > 0; }));
    return columns > 0 ? std::accumulate(widths.cbegin(), widths.cend(), gap * (shown - 1)) - columns : 0;
}

QVector<int> Table::columnWidths(int columns) const
{
    QVector<int> widths(m_rows.constFirst().size(), 0);
    QVector<bool> isEmpty(widths.size(), true);
    for (int row = 0; row < m_rows.size(); ++row) {
        for (int i = 0; i < widths.size(); ++i) {
            widths[i] = qMax(widths[i], PrintableText::width(m_rows.at(row).at(i)));
            isEmpty[i] = isEmpty[i] && (row == 0 || m_rows.at(row).at(i).isEmpty());
        }
    }
    for (auto i = m_flexible.crbegin(); i != m_flexible.crend() && excess(widths, columns) > 0; ++i) {
        if (isEmpty[*i])
            widths[*i] = 0;
    }
    // The widest gives way, column by column, until it fits or nothing can be taken any more.
    for (int left = excess(widths, columns); left > 0 && !m_flexible.isEmpty(); --left) {
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
        for (int i = 0; i < row.size(); ++i) {
            if (widths.at(i) > 0)
                cells.append(PrintableText::padded(PrintableText::elided(row.at(i), widths.at(i)), widths.at(i)));
        }
        QString line = cells.join(QString(gap, QLatin1Char(' ')));
        while (line.endsWith(QLatin1Char(' ')))
            line.chop(1);
        lines.append(columns > 0 ? PrintableText::elided(line, columns) : line);
    }
    return lines;
}
