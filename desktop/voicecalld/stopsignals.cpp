// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "stopsignals.h"

#include "programs/log.h"

#include <QtCore/QCoreApplication>
#include <unistd.h>

// What the plug-ins have to do at their end may take a moment, too.
static constexpr timespec patience = {5, 0};

StopSignals::StopSignals()
{
    sigemptyset(&m_signals);
    sigaddset(&m_signals, SIGINT);
    sigaddset(&m_signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &m_signals, nullptr);
    m_thread = std::thread(&StopSignals::watch, this);
}

StopSignals::~StopSignals()
{
    m_isOver = true;
    pthread_kill(m_thread.native_handle(), SIGINT);
    m_thread.join();
}

void StopSignals::watch()
{
    int number = 0;
    sigwait(&m_signals, &number);
    if (m_isOver)
        return;
    QMetaObject::invokeMethod(
        QCoreApplication::instance(), [] { QCoreApplication::exit(0); }, Qt::QueuedConnection);
    sigtimedwait(&m_signals, nullptr, &patience);
    if (m_isOver)
        return;
    Log::complain(QStringLiteral("ended in the middle of its work, which had to wait"));
    _exit(0);
}
