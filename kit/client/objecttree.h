// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef RINGLETCLIENT_OBJECTTREE_H
#define RINGLETCLIENT_OBJECTTREE_H

#include "callobject.h"

#include <QtDBus/QDBusVirtualObject>

namespace Ringlet {

/**
 * A call manager and its calls on the bus: org.freedesktop.DBus.ObjectManager at the manager's path, a
 * CallObject below it for every announced call. What GetManagedObjects shows is at every moment what the
 * signals have told so far.
 */
class ObjectTree : public QDBusVirtualObject
{
    Q_OBJECT
public:
    ObjectTree(const QString &path, const QDBusConnection &connection, QObject *parent);
    ~ObjectTree() override;

    /** False when this program has something else on the bus at the path, or above it. */
    bool putOnBus();

    /** Tells everybody of the call. `object` is borrowed until withdraw(). */
    void announce(CallObject *object);
    void withdraw(CallObject *object);

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;
    QString introspect(const QString &path) const override;

Q_SIGNALS:
    /** A method of a call's interfaces was called on an object that is not there. */
    void lateCommand(const QString &path, const QString &method);

private:
    ObjectMap managedObjects() const;
    QDBusMessage answer(const QDBusMessage &message);
    QDBusMessage answerAsManager(const QDBusMessage &message) const;
    QDBusMessage answerForMissing(const QDBusMessage &message);
    void sendSignal(const QString &member, const QVariantList &arguments);

    const QString m_path;
    QDBusConnection m_connection;
    QMap<QString, CallObject *> m_objects;
};

} // namespace Ringlet

#endif
