// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALLD_BUSTREE_H
#define VOICECALLD_BUSTREE_H

#include "busobject.h"

#include <QtCore/QMap>
#include <QtCore/QVariantMap>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusObjectPath>
#include <QtDBus/QDBusVirtualObject>

// Named apart from the types of the same shape that plug-ins may know.
using HostInterfaceMap = QMap<QString, QVariantMap>;
using HostObjectMap = QMap<QDBusObjectPath, HostInterfaceMap>;
Q_DECLARE_METATYPE(HostInterfaceMap)
Q_DECLARE_METATYPE(HostObjectMap)

/**
 * The host's objects on the bus: the root, and below it those that the root's object manager lists.
 *
 * All calls go through here, and reach an interface only when object, interface, method and arguments
 * are what its description says; otherwise the bus's own errors are the answer.
 */
class BusTree : public QDBusVirtualObject
{
    Q_OBJECT

public:
    /** Puts the tree on the bus; isPublished() tells whether that went well. */
    BusTree(const QDBusConnection &connection, const QString &rootPath);
    ~BusTree() override;

    bool isPublished() const { return m_published; }

    /** Adds an interface to the root. */
    void addToRoot(std::unique_ptr<BusInterface> interface);

    /** Adds an object with one interface, and announces it. */
    void addObject(const QString &path, std::unique_ptr<BusInterface> interface);

    /** Announces that the object is gone. It lives on while one of its methods is being called. */
    void removeObject(const QString &path);

    HostObjectMap managedObjects() const;

    QString introspect(const QString &path) const override;
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

private:
    std::shared_ptr<BusObject> makeObject(const QString &path) const;
    std::shared_ptr<BusObject> find(const QString &path) const;
    void addInterface(BusObject *object, std::unique_ptr<BusInterface> interface);
    QDBusMessage answer(const QDBusMessage &message) const;
    QStringList childrenOf(const QString &path) const;
    void sendFromRoot(const QString &member, const QVariantList &arguments);

    QDBusConnection m_connection;
    std::shared_ptr<BusObject> m_root;
    QMap<QString, std::shared_ptr<BusObject>> m_objects;
    bool m_published;
};

#endif
