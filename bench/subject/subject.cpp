// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "subject.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QSocketNotifier>
#include <QtCore/QTimer>
#include <malloc.h>
#include <unistd.h>
#include <valgrind/callgrind.h>

int Subject::run()
{
    QSocketNotifier requests(controlDescriptor, QSocketNotifier::Read);
    connect(&requests, &QSocketNotifier::activated, this, &Subject::serve);
    // Not before the event loop runs: until then, an application's arrival may be delivered behind its registration,
    // and would be taken for its departure.
    QTimer::singleShot(0, this, [] { report(eventNow(EventKind::Ready)); });
    return QCoreApplication::exec();
}

void Subject::serve()
{
    Request request = {};
    if (read(controlDescriptor, &request, sizeof request) == sizeof request)
        carryOut(request);
    else
        QCoreApplication::quit();
}

static int64_t residentBytes()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    return file.open(QIODevice::ReadOnly) ? file.readAll().split(' ').at(1).toLongLong() * sysconf(_SC_PAGESIZE) : 0;
}

static Event memory()
{
    malloc_trim(0);
    const struct mallinfo2 heap = mallinfo2();
    Event event = eventNow(EventKind::Memory);
    event.heap = int64_t(heap.uordblks + heap.hblkhd);
    event.resident = residentBytes();
    return event;
}

void Subject::carryOut(const Request &request)
{
    Event done = eventNow(EventKind::Done);
    const int64_t before = timeOf(CLOCK_THREAD_CPUTIME_ID);
    perform(request);
    done.cost = timeOf(CLOCK_THREAD_CPUTIME_ID) - before;
    report(request.command == Command::Memory ? memory() : done);
}

void Subject::perform(const Request &request)
{
    switch (request.command) {
    case Command::Answer:
    case Command::Hold:
    case Command::SendTones:
        command(request.command, request.call);
        break;
    case Command::ChangeRoute:
        changeRoute();
        break;
    case Command::ChangeDevices:
        changeDevices();
        break;
    case Command::CountFrom:
        CALLGRIND_START_INSTRUMENTATION;
        CALLGRIND_ZERO_STATS;
        break;
    case Command::CountUpTo:
        // It goes on: to begin anew takes longer than to count what nobody asks for.
        CALLGRIND_DUMP_STATS;
        break;
    case Command::Trace:
        trace(request.call);
        break;
    case Command::Memory:
        break;
    }
}
