// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "eventlog.h"

#include "programs/printabletext.h"

#include <cstdio>

// Columns of a line: the longest names and addresses that people use are a tenth of it.
static constexpr int longestLine = 4000;
// Characters of all lines that no script has looked at yet.
static constexpr int keptCharacters = 4 * 1024 * 1024;

void EventLog::add(const QString &line)
{
    const QString cut = line.size() > longestLine ? line.left(longestLine) + QChar(0x2026) : line;
    print(cut);
    m_lines.enqueue(cut);
    m_characters += cut.size();
    while (m_characters > keptCharacters)
        take();
    emit added();
}

QString EventLog::take()
{
    const QString line = m_lines.dequeue();
    m_characters -= line.size();
    return line;
}

void EventLog::print(const QString &line)
{
    std::puts(PrintableText::escaped(line).toUtf8().constData());
    std::fflush(stdout);
}
