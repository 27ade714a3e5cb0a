// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef CALLCTL_WATCH_H
#define CALLCTL_WATCH_H

#include "failure.h"
#include "hostmonitor.h"
#include "keyboard.h"
#include "output.h"
#include "watchcontrols.h"

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
    void connectToKeyboard(WatchScreen *screen, const QDBusConnection &connection);
    void stop();
    void update();
    void onSignal(int number);
    void end(ExitCode code, const QString &failure);

    HostMonitor m_monitor;
    std::unique_ptr<WatchView> m_view;
    Output m_output;
    QTimer m_pause;
    /** Both null where nobody can type. */
    std::unique_ptr<Keyboard> m_keyboard;
    std::unique_ptr<WatchControls> m_controls;
    ExitCode m_code = ExitCode::Success;
    QString m_failure;
};

#endif
