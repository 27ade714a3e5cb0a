// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef RINGLET_CALLSERVICE_H
#define RINGLET_CALLSERVICE_H

#include "callserviceadaptor.h"
#include "callservicemanageradaptor.h"
#include "common/dbustypes.h"

#include <QtCore/QObject>
#include <QtCore/QSet>
#include <QtCore/QStringList>
#include <QtDBus/QDBusContext>
#include <QtDBus/QDBusInterface>
#include <sys/types.h>

/**
 * The object at which applications register their call managers. Its adaptors give it the interfaces
 * zelkovar.Call.Service1 and zelkovar.Call.ServiceManager1; somebody else puts it on the bus.
 *
 * A call manager stays registered until its application leaves the bus. It is in the list from just
 * before callManagerAdded() until just after callManagerRemoved(), so receivers of either still see it.
 */
class CallService : public QObject, public QDBusContext
{
    Q_OBJECT

public:
    /** Starts to watch the bus for departures at once. */
    explicit CallService(QObject *parent = nullptr);
    ~CallService() override;

Q_SIGNALS:
    // Emitted by whoever knows what the applications expose; the adaptor broadcasts them. `connection` is
    // the application's bus name.
    void InterfacesAdded(const QString &connection, const QDBusObjectPath &path, const QVariantMapMap &properties);
    void InterfacesRemoved(const QString &connection, const QDBusObjectPath &path, const QStringList &interfaces);

    /** With the process id of its owner, 0 when the bus could not tell it. */
    void callManagerAdded(const DBusCallManager &callManager, pid_t);
    void callManagerRemoved(const DBusCallManager &callManager);

public Q_SLOTS:
    /**
     * Registers the calling application's call manager. Works only while a bus message is handled. A
     * duplicate is dropped without a word. Blocks for one round trip to the bus daemon, which tells the
     * caller's process id.
     */
    void RegisterCallManager(const QDBusObjectPath &objectPath);

    /** In no particular order. */
    DBusCallManagerList ListCallManagers();

private Q_SLOTS:
    void onNameOwnerChanged(const QString &name, const QString &oldOwner, const QString &newOwner);

private:
    CallServiceAdaptor serviceAdaptor;
    CallServiceManagerAdaptor managerAdaptor;
    QDBusInterface busDaemon;
    QSet<DBusCallManager> callManagers;
};

#endif
