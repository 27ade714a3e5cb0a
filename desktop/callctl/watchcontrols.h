// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef CALLCTL_WATCHCONTROLS_H
#define CALLCTL_WATCHCONTROLS_H

#include "callchoice.h"
#include "hostmonitor.h"
#include "watchscreen.h"

/** What keys do in `watch`: they drive the chosen call, or else the only one that makes sense. */
class WatchControls : public QObject
{
    Q_OBJECT

public:
    /** Both outlive it. */
    WatchControls(const HostMonitor &monitor, WatchScreen &screen, const QDBusConnection &connection);

    /** A key as Keyboard tells it. */
    void press(int key);

Q_SIGNALS:
    /** The screen has something new to show. */
    void changed();

    void quitRequested();

private:
    void choose(int step);
    void drive(Deed deed);
    Deed holdOrTakeBack() const;
    void toggleMute();
    void send(const QString &path, const char *interface, const char *method, const QVariantList &arguments = {});

    const HostMonitor &m_monitor;
    WatchScreen &m_screen;
    QDBusConnection m_connection;
};

#endif
