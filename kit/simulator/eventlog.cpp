// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "eventlog.h"

#include <cstdio>

void EventLog::add(const QString &line)
{
    print(line);
    m_lines.append(line);
    emit added();
}

void EventLog::print(const QString &line)
{
    std::puts(line.toUtf8().constData());
    std::fflush(stdout);
}
