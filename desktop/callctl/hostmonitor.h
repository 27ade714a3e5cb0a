// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef CALLCTL_HOSTMONITOR_H
#define CALLCTL_HOSTMONITOR_H

#include "hoststate.h"

#include <QtCore/QSet>
#include <QtCore/QTimer>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusServiceWatcher>

/**
 * Follows the host: reads its state when it is there, keeps it up to date, and does so again when the
 * host comes back after it was gone. What it tells of a change is what has changed, and no more.
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

    /** After ready(): this call has come, changed or gone. */
    void callChanged(const QString &path);

    /** After ready(): this provider has come or gone. */
    void providerChanged(const QString &id);

    /** After ready(): devices, selection or mute have changed. */
    void audioChanged();

    /** The host has left the bus after ready(). */
    void gone();

    /**
     * The host could not be read: it is not there, has gone meanwhile, answers with errors or not at all.
     * ready() may follow nevertheless, since a host that comes, or answers late, is read.
     */
    void failed(const QString &reason);

    /** The bus itself has gone: nothing comes any more. */
    void busLost();

private Q_SLOTS:
    void onInterfacesAdded(const QDBusMessage &message);
    void onInterfacesRemoved(const QDBusMessage &message);
    void onPropertiesChanged(const QDBusMessage &message);
    void onProviderAdded(const QString &id, const QString &type);
    void onProviderRemoved(const QString &id);

private:
    enum class Source { Calls, Manager, Audio };

    void subscribe();
    void read();
    void readManager();
    void onOwnerChanged(const QString &newOwner);
    void ask(Source source, const QDBusMessage &question);
    void take(Source source, const QDBusMessage &answer);
    void takeObjects(const QDBusMessage &answer);
    void takeManager(const QVariantMap &properties);
    void takeAudio(const QVariantMap &properties);
    void changeCall(const QString &path, const QVariantMap &changes);
    void onProvidersInvalidated();
    void setProviders(const ProviderList &providers);
    void refuse(const QDBusMessage &answer);
    bool isKnown(Source source) const { return m_known.contains(int(source)); }

    QDBusConnection m_connection;
    QDBusServiceWatcher m_owner;
    HostState m_state;
    /** What has been read so far: signals sent before that are part of it already. */
    QSet<int> m_known;
    /** Answers of a host that is gone are not for the state of the next one. */
    int m_round = 0;
    bool m_isReading = false;
    /** Whether this host tells which providers come and go. */
    bool m_tellsProviders = false;
    /** Runs out when the host has been asked and keeps silent. */
    QTimer m_patience;
    /** Runs out when a host that answered with an error is to be asked again. */
    QTimer m_again;
    /** Runs out when the providers are no longer those known, and no signal has said which ones came or went. */
    QTimer m_untold;
};

#endif
