// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "unixsignals.h"

#include <QtCore/QSocketNotifier>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

// A handler may do next to nothing, but it may write to a pipe that the event loop watches.
static int writeEnd = -1;

static void onSignal(int number)
{
    const int saved = errno;
    const auto byte = static_cast<unsigned char>(number);
    // A full pipe means that as many signals wait to be seen already.
    if (write(writeEnd, &byte, 1) < 0)
        errno = saved;
}

UnixSignals::UnixSignals(std::initializer_list<int> numbers, Second second)
{
    if (pipe2(m_pipe, O_CLOEXEC | O_NONBLOCK) < 0) {
        m_error = QStringLiteral("cannot watch for signals: %1").arg(QString::fromLocal8Bit(std::strerror(errno)));
        return;
    }
    m_numbers = numbers;
    writeEnd = m_pipe[1];
    connect(new QSocketNotifier(m_pipe[0], QSocketNotifier::Read, this), &QSocketNotifier::activated, this,
        &UnixSignals::drain);
    struct sigaction action = {};
    action.sa_handler = onSignal;
    action.sa_flags = second == Second::EndsTheProcess ? int(SA_RESTART | SA_RESETHAND) : SA_RESTART;
    for (int number : numbers)
        sigaction(number, &action, nullptr);
}

UnixSignals::~UnixSignals()
{
    for (int number : qAsConst(m_numbers))
        ::signal(number, SIG_DFL);
    writeEnd = -1;
    for (int end : m_pipe) {
        if (end >= 0)
            close(end);
    }
}

void UnixSignals::drain()
{
    unsigned char number = 0;
    while (read(m_pipe[0], &number, 1) == 1)
        emit received(number);
}
