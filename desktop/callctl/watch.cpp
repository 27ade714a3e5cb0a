// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "watch.h"

#include "failure.h"
#include "programs/unixsignals.h"
#include "watchlines.h"

#include <QtCore/QCoreApplication>
#include <csignal>
#include <cstdio>
#include <unistd.h>

static bool isCapableTerminal() { return isatty(STDOUT_FILENO) && qgetenv("TERM") != "dumb"; }

static void printLine(const QString &line)
{
    std::printf("%s\n", qUtf8Printable(line));
    std::fflush(stdout);
}

Watch::Watch(const QDBusConnection &connection) : m_monitor(connection), m_onScreen(isCapableTerminal())
{
    connect(&m_monitor, &HostMonitor::changed, this, &Watch::show);
    connect(&m_monitor, &HostMonitor::ready, this, [this] {
        m_hostSeen = true;
        show();
        if (!m_onScreen)
            printLine(QStringLiteral("host ready"));
    });
    connect(&m_monitor, &HostMonitor::gone, this, &Watch::showGone);
    connect(&m_monitor, &HostMonitor::failed, this, [this](const QString &reason) {
        // A host that goes again while it is being read comes back, or does not; that is waited for.
        if (!m_hostSeen)
            end(reason);
    });
    connect(&m_monitor, &HostMonitor::busLost, this, [this] { end(QStringLiteral("the session bus is gone")); });
}

void Watch::run()
{
    const UnixSignals signalWatch({SIGINT, SIGTERM, SIGWINCH});
    connect(&signalWatch, &UnixSignals::received, this, &Watch::onSignal);
    m_monitor.start();
    QCoreApplication::exec();
    if (!m_failure.isEmpty())
        throw Failure(ExitCode::NoHost, m_failure);
}

void Watch::end(const QString &failure)
{
    m_failure = failure;
    QCoreApplication::quit();
}

void Watch::onSignal(int number)
{
    if (number != SIGWINCH)
        return end(QString());
    if (!m_onScreen || !m_hostSeen)
        return;
    m_screen.reset();
    show();
}

void Watch::show()
{
    if (m_onScreen)
        m_screen.show(m_monitor.state());
    else
        printChanges();
}

void Watch::showGone()
{
    if (m_onScreen)
        return m_screen.showGone();
    printChanges();
    printLine(QStringLiteral("host gone"));
}

void Watch::printChanges()
{
    const QStringList lines = WatchLines::between(m_printed, m_monitor.state());
    for (const QString &line : lines)
        printLine(line);
    m_printed = m_monitor.state();
}
