// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "stopsignals.h"

#include "programs/log.h"
#include "programs/unixsignals.h"

#include <QtCore/QCoreApplication>
#include <csignal>
#include <unistd.h>

// What the plug-ins have to do at their end may take a moment, too.
static constexpr int patienceMs = 5000;

StopSignals::StopSignals() : m_signals(std::make_unique<UnixSignals>(std::initializer_list<int>{SIGINT, SIGTERM}))
{
    if (!errorString().isEmpty())
        return;
    m_patience.setSingleShot(true);
    m_patience.setInterval(patienceMs);
    m_signals->moveToThread(&m_thread);
    m_patience.moveToThread(&m_thread);
    connect(m_signals.get(), &UnixSignals::received, &m_patience, [this] {
        if (!m_patience.isActive())
            m_patience.start();
    });
    connect(m_signals.get(), &UnixSignals::received, QCoreApplication::instance(), [] { QCoreApplication::exit(0); });
    connect(&m_patience, &QTimer::timeout, &m_patience, [] {
        Log::complain(QStringLiteral("ended in the middle of its work, which had to wait"));
        _exit(0);
    });
    connect(&m_thread, &QThread::finished, &m_patience, &QTimer::stop);
    m_thread.start();
}

StopSignals::~StopSignals()
{
    m_thread.quit();
    m_thread.wait();
}

QString StopSignals::errorString() const { return m_signals->errorString(); }
