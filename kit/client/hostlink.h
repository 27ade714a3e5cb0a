// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef RINGLETCLIENT_HOSTLINK_H
#define RINGLETCLIENT_HOSTLINK_H

#include "busserver/bustypes.h"

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusServiceWatcher>
#include <optional>

namespace Ringlet {

/**
 * Follows the host's name, and registers a call manager each time a host takes it. Nothing here waits: a
 * host that is not there is an ordinary state.
 */
class HostLink : public QObject
{
    Q_OBJECT
public:
    /** `manager` is the object path to register; `name` is the host's name on the bus. */
    HostLink(const QString &name, const QString &manager, const QDBusConnection &connection, QObject *parent);

    /** Looks for the host, and never stops. */
    void start();

    QString name() const { return m_name; }

    /** Unique name of the host, empty when there is none. */
    QString owner() const { return m_owner.value_or(QString()); }

    /** Whether everybody may command, and not the host alone; at first not. */
    void setObeysAnyone(bool obeysAnyone) { m_obeysAnyone = obeysAnyone; }
    bool obeysAnyone() const { return m_obeysAnyone; }

    /**
     * Why the connection of this unique name may not command a call; empty if it may. The bus tells of a new owner
     * before it delivers anything that the new owner sends, and both are handled in the order in which they came:
     * the first command of a new host is the host's.
     */
    QString refusal(const QString &caller) const;

    /** Registers with the host that is there; its answer comes as registered() or refused(). */
    void registerManager();

Q_SIGNALS:
    /** There is none: at first, or after vanished(). */
    void absent();

    void appeared(const QString &owner);

    /** The host that was there has gone. What it knew, it knows no more. */
    void vanished();

    /** Emitted right before the request leaves. */
    void registering();
    void registered();

    /** It has answered with an error, or not at all. */
    void refused(const QString &errorName, const QString &text);

    /** The host shows the object at `path` of this application, which it saw with these interfaces. */
    void shown(const QString &path, const BusInterfaceMap &interfaces);

    /** Nothing can be sent or received any more. */
    void busLost();

private Q_SLOTS:
    void onInterfacesAdded(const QDBusMessage &message);

private:
    void setOwner(const QString &owner);
    void onAnswer(const QDBusMessage &answer);

    const QString m_name;
    const QString m_manager;
    QDBusConnection m_connection;
    QDBusServiceWatcher m_watcher;
    /** Empty when there is no host; unset until the bus has told. */
    std::optional<QString> m_owner;
    bool m_obeysAnyone = false;
};

} // namespace Ringlet

#endif
