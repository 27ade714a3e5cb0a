// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "supervisor.h"

#include <algorithm>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

// In milliseconds; 0 when nobody watches this process.
static int watchdogInterval()
{
    const QByteArray pid = qgetenv("WATCHDOG_PID");
    if (!pid.isEmpty() && pid.toLongLong() != getpid())
        return 0;
    const qlonglong interval = qgetenv("WATCHDOG_USEC").toLongLong() / 1000 / 2;
    return interval > 0 ? int(std::clamp<qlonglong>(interval, 1, 3600000)) : 0;
}

Supervisor::Supervisor() : m_socket(qgetenv("NOTIFY_SOCKET"))
{
    m_watchdog.setInterval(watchdogInterval());
    connect(&m_watchdog, &QTimer::timeout, this, [this] { notify("WATCHDOG=1"); });
}

void Supervisor::isReady()
{
    notify("READY=1");
    if (!m_socket.isEmpty() && m_watchdog.interval() > 0)
        m_watchdog.start();
}

void Supervisor::isStopping() { notify("STOPPING=1"); }

void Supervisor::notify(const QByteArray &state)
{
    sockaddr_un address = {};
    if (m_socket.isEmpty() || std::size_t(m_socket.size()) >= sizeof address.sun_path)
        return;
    address.sun_family = AF_UNIX;
    std::copy(m_socket.cbegin(), m_socket.cend(), address.sun_path);
    // A name that is in no file system begins with a null character, which is written so.
    if (address.sun_path[0] == '@')
        address.sun_path[0] = '\0';
    const int socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (socket < 0)
        return;
    const auto length = socklen_t(offsetof(sockaddr_un, sun_path) + std::size_t(m_socket.size()));
    // One that does not listen cannot be told that it does not.
    static_cast<void>(sendto(socket, state.constData(), std::size_t(state.size()), MSG_NOSIGNAL,
        reinterpret_cast<const sockaddr *>(&address), length));
    close(socket);
}
