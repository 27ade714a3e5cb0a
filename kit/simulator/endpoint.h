// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef SIMULATOR_ENDPOINT_H
#define SIMULATOR_ENDPOINT_H

#include "eventlog.h"

#include <QtDBus/QDBusConnection>

/**
 * One simulated application as the bus and the user see it: a connection of its own, and the name under
 * which commands and events speak of it. The name is empty for the first application.
 */
class Endpoint
{
public:
    /** Connects; isConnected() tells whether it worked. */
    Endpoint(const QString &name, EventLog &events);
    ~Endpoint();
    Q_DISABLE_COPY(Endpoint)

    bool isConnected() const { return m_connection.isConnected(); }

    QDBusConnection connection() const { return m_connection; }
    QString uniqueName() const { return m_connection.baseService(); }

    /** What commands and events call a call of this application. */
    QString label(const QString &call) const;

    /** Tells of something that happened to the application as a whole. */
    void report(const QString &event) const;

    EventLog &events() const { return m_events; }

    /**
     * Closes the connection when everything that was sent has reached the bus, as the death of a process
     * would. Nothing is reported any more.
     */
    void cut();

    /** Calls the slot, which takes nothing, when the connection has closed. */
    void onDisconnected(QObject *receiver, const char *slot);

private:
    const QString m_name;
    EventLog &m_events;
    QDBusConnection m_connection;
    bool m_isCut = false;
};

#endif
