// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef CALLCTL_HOSTMONITOR_H
#define CALLCTL_HOSTMONITOR_H

#include "hoststate.h"

#include <QtCore/QSet>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusServiceWatcher>

class QDBusPendingCallWatcher;

/**
 * Follows the host: reads its state when it is there, keeps it up to date, and does so again when the
 * host comes back after it was gone.
 */
class HostMonitor : public QObject
{
    Q_OBJECT

public:
    static QString serviceName();
    static QString rootPath();

    /** What to tell people who want a host where there is none. */
    static QString notRunning();

    explicit HostMonitor(const QDBusConnection &connection);

    /** Starts; ready() or failed() follows. */
    void start();

    /** Empty while the host is not there. */
    const HostState &state() const { return m_state; }

Q_SIGNALS:
    /** The state is complete. */
    void ready();

    /** After ready(), one message from the host has changed the state. */
    void changed();

    /** The host has left the bus. */
    void gone();

    /** The host could not be read. */
    void failed(const QString &reason);

    /** The bus itself has gone: nothing comes any more. */
    void busLost();

private Q_SLOTS:
    void onInterfacesAdded(const QDBusMessage &message);
    void onInterfacesRemoved(const QDBusMessage &message);
    void onPropertiesChanged(const QDBusMessage &message);

private:
    enum class Source { Calls, Manager, Audio };

    void subscribe();
    void read();
    void forget();
    void ask(Source source, const QDBusMessage &question);
    void take(Source source, const QDBusMessage &answer);
    void takeObjects(const QDBusMessage &answer);
    void takeProperties(const QVariantMap &properties);
    bool isKnown(Source source) const { return m_known.contains(int(source)); }
    void tellChange();

    QDBusConnection m_connection;
    QDBusServiceWatcher m_owner;
    HostState m_state;
    /** What has been read so far: signals sent before that are part of it already. */
    QSet<int> m_known;
    /** Answers of a host that is gone are not for the state of the next one. */
    int m_round = 0;
};

#endif
