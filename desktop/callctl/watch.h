// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef CALLCTL_WATCH_H
#define CALLCTL_WATCH_H

#include "hostmonitor.h"
#include "watchscreen.h"

/** The command `watch`: shows the host until SIGINT or SIGTERM, also across a restart of it. */
class Watch : public QObject
{
    Q_OBJECT

public:
    explicit Watch(const QDBusConnection &connection);

    /** Returns when it is told to end; throws Failure when there is no host to begin with, or no bus. */
    void run();

private:
    void show();
    void showGone();
    void printChanges();
    void onSignal(int number);
    void end(const QString &failure);

    HostMonitor m_monitor;
    /** Only on a terminal that can move its cursor; otherwise lines are printed. */
    bool m_onScreen;
    WatchScreen m_screen;
    HostState m_printed;
    bool m_hostSeen = false;
    QString m_failure;
};

#endif
