// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef SIMULATOR_HOSTLINK_H
#define SIMULATOR_HOSTLINK_H

#include "eventlog.h"
#include "wiretypes.h"

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusServiceWatcher>
#include <optional>

/**
 * Follows the host's name, and registers call managers each time a host takes it. Nothing here waits: a
 * host that is not there is an ordinary state.
 */
class HostLink : public QObject
{
    Q_OBJECT
public:
    /** `managers` are the object paths to register; `name` is the host's name on the bus. */
    HostLink(const QString &name, const QStringList &managers, const QDBusConnection &connection, EventLog &events,
        QObject *parent);

    /** Looks for the host, and never stops. */
    void start();

    /** Whether every manager is registered with the host that is there now. */
    bool isRegistered() const { return m_registered.size() == m_managers.size(); }

    bool isPresent() const { return m_owner && !m_owner->isEmpty(); }

Q_SIGNALS:
    /** Emitted right before the request for `manager` leaves. */
    void registering(const QString &manager);

    /** The request has been answered, in whatever way, or its host has gone. */
    void settled(const QString &manager);

    /** The host that was there has gone. What it knew, it knows no more. */
    void gone();

    /** The host shows the object at `path` of this application, which it saw with these interfaces. */
    void shown(const QString &path, const InterfaceMap &interfaces);

private Q_SLOTS:
    void onInterfacesAdded(const QDBusMessage &message);

private:
    void setOwner(const QString &owner);
    void leave();
    void enter();
    void registerManager(const QString &manager);
    void onAnswer(const QString &manager, const QDBusMessage &answer);

    const QString m_name;
    const QStringList m_managers;
    QDBusConnection m_connection;
    EventLog &m_events;
    QDBusServiceWatcher m_watcher;
    /** Unique name of the host, empty when there is none; unset until the bus has told. */
    std::optional<QString> m_owner;
    QStringList m_registered;
};

#endif
