// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef SIMULATOR_OBJECTTREE_H
#define SIMULATOR_OBJECTTREE_H

#include "callmanager.h"
#include "callobject.h"

#include <QtDBus/QDBusVirtualObject>

/**
 * A call manager and its calls on the bus: org.freedesktop.DBus.ObjectManager at the manager's path, a
 * CallObject below it for every published call. What GetManagedObjects shows is at every moment what the
 * signals have told so far.
 */
class ObjectTree : public QDBusVirtualObject
{
    Q_OBJECT
public:
    /** `manager` outlives this object. */
    ObjectTree(CallManager &manager, const QDBusConnection &connection, EventLog &events, QObject *parent);
    ~ObjectTree() override;

    /** Puts it on the bus. Calls published before are part of what is there from the start, and not announced. */
    void putOnBus();

    /** Null when no call is published at this path. */
    CallObject *find(const QString &path) const { return m_objects.value(path); }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;
    QString introspect(const QString &path) const override;

private:
    void onPublished(Call *call);
    void onWithdrawn(Call *call);

    ObjectMap managedObjects() const;
    QDBusMessage answer(const QDBusMessage &message);
    QDBusMessage answerAsManager(const QDBusMessage &message) const;
    QDBusMessage answerForMissing(const QDBusMessage &message);
    void sendSignal(const QString &member, const QVariantList &arguments);

    CallManager &m_manager;
    QDBusConnection m_connection;
    EventLog &m_events;
    QMap<QString, CallObject *> m_objects;
    bool m_onBus = false;
};

#endif
