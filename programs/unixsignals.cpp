// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "unixsignals.h"

#include <QtCore/QSocketNotifier>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <system_error>
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

UnixSignals::UnixSignals(std::initializer_list<int> numbers) : m_numbers(numbers)
{
    if (pipe2(m_pipe, O_CLOEXEC | O_NONBLOCK) < 0)
        throw std::system_error(errno, std::generic_category(), "cannot watch for signals");
    writeEnd = m_pipe[1];
    connect(new QSocketNotifier(m_pipe[0], QSocketNotifier::Read, this), &QSocketNotifier::activated, this,
        &UnixSignals::drain);
    struct sigaction action = {};
    action.sa_handler = onSignal;
    action.sa_flags = SA_RESTART;
    for (int number : numbers)
        sigaction(number, &action, nullptr);
}

UnixSignals::~UnixSignals()
{
    for (int number : qAsConst(m_numbers))
        ::signal(number, SIG_DFL);
    writeEnd = -1;
    close(m_pipe[0]);
    close(m_pipe[1]);
}

void UnixSignals::drain()
{
    unsigned char number = 0;
    while (read(m_pipe[0], &number, 1) == 1)
        emit received(number);
}
