// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BUSSERVER_BUSTREE_H
#define BUSSERVER_BUSTREE_H

#include "busobject.h"

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusVirtualObject>

/**
 * A program's objects on the bus: the root, and below it those that the root's object manager lists. What the
 * object manager lists is at every moment what its signals have told so far.
 *
 * All calls go through here, and reach an interface only when object, interface, method and arguments
 * are what its description says; otherwise the bus's own errors are the answer. Pings are answered by the bus
 * library itself.
 */
class BusTree : public QDBusVirtualObject
{
    Q_OBJECT

public:
    BusTree(const QDBusConnection &connection, const QString &rootPath);
    ~BusTree() override;

    /** Puts the tree on the bus; until then it tells nothing. False when this program has something else there. */
    bool publish();

    /** Adds an interface to the root. */
    void addToRoot(std::unique_ptr<BusInterface> interface);

    /** Adds an object with these interfaces, and announces it. */
    void addObject(const QString &path, BusObject::Interfaces interfaces);
    void addObject(const QString &path, std::unique_ptr<BusInterface> interface);

    /** Announces that the object is gone. It lives on while one of its methods is being called. */
    void removeObject(const QString &path);

    BusObjectMap managedObjects() const;

    QString introspect(const QString &path) const override;
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

Q_SIGNALS:
    /** A call has come, right or wrong, and is answered next. */
    void called(const QDBusMessage &call);

    /** There is no object where the call went. */
    void missed(const QDBusMessage &call);

private:
    std::shared_ptr<BusObject> makeObject(const QString &path) const;
    std::shared_ptr<BusObject> find(const QString &path) const;
    void addInterface(BusObject *object, std::unique_ptr<BusInterface> interface);
    void tellChange(const QString &path, const BusInterface &interface, const QVariantMap &changed);
    QDBusMessage answer(const QDBusMessage &call);
    QStringList childrenOf(const QString &path) const;
    bool send(const QString &path, const QString &interface, const QString &member, const QVariantList &arguments);
    void sendFromRoot(const QString &member, const QVariantList &arguments);

    QDBusConnection m_connection;
    std::shared_ptr<BusObject> m_root;
    QMap<QString, std::shared_ptr<BusObject>> m_objects;
    bool m_isPublished = false;
};

#endif
