// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef CALLCTL_WATCH_H
#define CALLCTL_WATCH_H

#include "failure.h"
#include "hostmonitor.h"
#include "output.h"
#include "watchview.h"

/** The command `watch`: shows the host until SIGINT or SIGTERM, and waits for it where there is none. */
class Watch : public QObject
{
    Q_OBJECT

public:
    explicit Watch(const QDBusConnection &connection);

    /** Returns when it is told to end; throws Failure when the bus goes, or nothing can be written. */
    void run();

private:
    void connectToHost();
    void update();
    void onSignal(int number);
    void end(ExitCode code, const QString &failure);

    HostMonitor m_monitor;
    std::unique_ptr<WatchView> m_view;
    Output m_output;
    QTimer m_pause;
    ExitCode m_code = ExitCode::Success;
    QString m_failure;
};

#endif
