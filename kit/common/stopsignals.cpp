// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "stopsignals.h"

#include <QtCore/QSocketNotifier>
#include <array>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

static std::array<int, 2> wakeUp;

// Nothing but what a signal handler may do.
static void onSignal(int)
{
    const char byte = 0;
    const ssize_t written = write(wakeUp[1], &byte, 1);
    static_cast<void>(written);
}

StopSignals::StopSignals(QObject *parent) : QObject(parent)
{
    if (pipe2(wakeUp.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        qFatal("no pipe for signals");
    auto *notifier = new QSocketNotifier(wakeUp[0], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this, notifier] {
        notifier->setEnabled(false);
        emit received();
    });
    struct sigaction action = {};
    action.sa_handler = onSignal;
    action.sa_flags = int(SA_RESTART | SA_RESETHAND);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}
