// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "watch.h"

#include "programs/unixsignals.h"
#include "watchlines.h"
#include "watchscreen.h"

#include <QtCore/QCoreApplication>
#include <csignal>
#include <unistd.h>

// On a terminal that can move its cursor there is a table; otherwise lines are printed.
static std::unique_ptr<WatchView> makeView()
{
    if (isatty(STDOUT_FILENO) && qgetenv("TERM") != "dumb")
        return std::make_unique<WatchScreen>();
    return std::make_unique<WatchLines>();
}

Watch::Watch(const QDBusConnection &connection) : m_monitor(connection), m_view(makeView())
{
    m_pause.setSingleShot(true);
    connect(&m_pause, &QTimer::timeout, this, &Watch::update);
    connect(&m_output, &Output::idle, this, &Watch::update);
    connect(&m_output, &Output::failed, this, [this](const QString &reason) { end(ExitCode::NotDone, reason); });
    connectToHost();
}

void Watch::connectToHost()
{
    const auto show = [this](auto signal, auto note) {
        connect(&m_monitor, signal, this, [=](const auto &...arguments) {
            note(arguments...);
            update();
        });
    };
    show(&HostMonitor::ready, [this] { m_view->noteReady(m_monitor.state()); });
    show(&HostMonitor::callChanged, [this](const QString &path) { m_view->noteCall(m_monitor.state(), path); });
    show(&HostMonitor::providerChanged, [this](const QString &id) { m_view->noteProvider(m_monitor.state(), id); });
    show(&HostMonitor::audioChanged, [this] { m_view->noteAudio(m_monitor.state()); });
    show(&HostMonitor::gone, [this] { m_view->noteGone(); });
    show(&HostMonitor::failed, [this](const QString &reason) { m_view->noteFailure(reason); });
    connect(&m_monitor, &HostMonitor::busLost, this,
        [this] { end(ExitCode::NoHost, QStringLiteral("the session bus is gone")); });
}

void Watch::run()
{
    const UnixSignals signalWatch({SIGINT, SIGTERM, SIGWINCH, SIGCONT});
    if (!signalWatch.errorString().isEmpty())
        throw Failure(ExitCode::NotDone, signalWatch.errorString());
    connect(&signalWatch, &UnixSignals::received, this, &Watch::onSignal);
    m_monitor.start();
    QCoreApplication::exec();
    m_output.finish();
    if (!m_failure.isEmpty())
        throw Failure(m_code, m_failure);
}

void Watch::end(ExitCode code, const QString &failure)
{
    m_code = code;
    m_failure = failure;
    QCoreApplication::quit();
}

void Watch::onSignal(int number)
{
    if (number == SIGINT || number == SIGTERM)
        return QCoreApplication::quit();
    m_view->noteTerminalChange();
    update();
}

void Watch::update()
{
    if (m_pause.isActive() || !m_output.isIdle())
        return;
    const QByteArray bytes = m_view->take(m_monitor.state());
    if (bytes.isEmpty())
        return;
    m_output.write(bytes);
    if (m_view->pause().count() > 0)
        m_pause.start(m_view->pause());
}
