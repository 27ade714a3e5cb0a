// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef SIMULATOR_RAWAPPLICATION_H
#define SIMULATOR_RAWAPPLICATION_H

#include "answering.h"
#include "endpoint.h"
#include "interfacemap.h"

#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusVirtualObject>

/**
 * An application that does what a script says and nothing by itself, right or wrong. It answers to every
 * object path and to everybody, so it stands on no object tree, which would answer rightly.
 */
class RawApplication : public QDBusVirtualObject
{
    Q_OBJECT
public:
    /** `host` is the bus name of the host. */
    RawApplication(const QString &name, const QString &host, EventLog &events, QObject *parent);
    ~RawApplication() override;

    bool isConnected() const { return m_endpoint.isConnected(); }

    /** Asks the host to register the path. */
    void registerManager(const QString &path);

    /** What GetManagedObjects shows at a path, whichever manager is asked; nothing if there are no interfaces. */
    void setObject(const QString &path, const BusInterfaceMap &interfaces);

    void setSnapshotAnswering(const Answering &answering) { m_snapshots = answering; }
    void setCommandAnswering(const Answering &answering) { m_commands = answering; }

    void sendSignal(const QString &path, const QString &interface, const QString &member, const QVariantList &values);

    /** Leaves the bus without a word. busLost() tells when it is done. */
    void leave() { m_endpoint.cut(); }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;
    QString introspect(const QString &) const override { return {}; }

Q_SIGNALS:
    /** Nothing can be sent or received any more. */
    void busLost();

private Q_SLOTS:
    void onShown(const QDBusMessage &message);
    void onHidden(const QDBusMessage &message);

private:
    void follow(const QString &member, const QString &signature, const char *slot);
    void onSnapshotWanted(const QDBusMessage &message);
    void onCommand(const QDBusMessage &message);
    void answer(const QDBusMessage &message, const Answering &answering, const QVariantList &right);

    const QString m_host;
    Endpoint m_endpoint;
    BusObjectMap m_objects;
    Answering m_snapshots;
    Answering m_commands;
};

#endif
