// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "processfacts.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QStringList>
#include <sys/resource.h>
#include <unistd.h>

static QByteArray contents(qint64 pid, const char *name)
{
    QFile file(QStringLiteral("/proc/%1/%2").arg(pid).arg(QLatin1String(name)));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Fields of "stat" behind the program's name, which may hold anything; the first is the state.
static QList<QByteArray> statistics(qint64 pid)
{
    const QByteArray text = contents(pid, "stat");
    return text.mid(text.lastIndexOf(')') + 2).split(' ');
}

int ProcessFacts::openDescriptors(qint64 pid)
{
    return QDir(QStringLiteral("/proc/%1/fd").arg(pid)).entryList(QDir::System | QDir::Files).size();
}

int ProcessFacts::residentMemory(qint64 pid)
{
    return contents(pid, "statm").split(' ').value(1).toInt() * int(sysconf(_SC_PAGESIZE) / 1024);
}

int ProcessFacts::processorTime(qint64 pid)
{
    const QList<QByteArray> fields = statistics(pid);
    return (fields.value(11).toInt() + fields.value(12).toInt()) * 1000 / int(sysconf(_SC_CLK_TCK));
}

bool ProcessFacts::isStopped(qint64 pid) { return statistics(pid).value(0) == "T"; }

bool ProcessFacts::limitDescriptors(qint64 pid, int count)
{
    rlimit limit;
    if (prlimit(pid_t(pid), RLIMIT_NOFILE, nullptr, &limit) != 0)
        return false;
    limit.rlim_cur = rlim_t(count);
    return prlimit(pid_t(pid), RLIMIT_NOFILE, &limit, nullptr) == 0;
}
