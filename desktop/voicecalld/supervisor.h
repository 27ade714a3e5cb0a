// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALLD_SUPERVISOR_H
#define VOICECALLD_SUPERVISOR_H

#include <QtCore/QTimer>

/**
 * Tells the service manager that has started this program how it does, over the socket that NOTIFY_SOCKET
 * names; without one it does nothing. If WATCHDOG_USEC asks for it, the service manager hears twice in that
 * time that the thread of this object runs its event loop, from isReady() on.
 */
class Supervisor : public QObject
{
    Q_OBJECT

public:
    Supervisor();

    void isReady();
    void isStopping();

private:
    void notify(const QByteArray &state);

    QByteArray m_socket;
    QTimer m_watchdog;
};

#endif
