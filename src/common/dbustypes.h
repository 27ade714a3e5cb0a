// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef RINGLET_DBUSTYPES_H
#define RINGLET_DBUSTYPES_H

#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QMetaType>
#include <QtCore/QString>
#include <QtCore/QVariantMap>
#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusObjectPath>

// The types below are registered with the bus layer when the library is loaded.

/** A remote object: who owns it, and where it stands within its owner. On the bus (so). */
struct DBusObject
{
    DBusObject() = default;
    DBusObject(const QString &service, const QDBusObjectPath &path) : service(service), path(path) { }

    /** "service@path", for log messages. */
    QString toString() const;

    /**
     * The path to make a proxy with. For the one path that the D-Bus protocol reserves it is a text that
     * is no path, so that the proxy is invalid and sends nothing: the bus ends the connection of whoever
     * sends a message there. No application can have an object at it.
     */
    QString proxyPath() const;

    /** Bus name of the owner; in practice a unique name, taken from a message's sender. */
    QString service;
    QDBusObjectPath path;
};

/** The object of an application that manages its calls. */
typedef DBusObject DBusCallManager;
/** One call object of an application. */
typedef DBusObject DBusCallObject;

inline bool operator==(const DBusObject &left, const DBusObject &right)
{
    return left.service == right.service && left.path.path() == right.path.path();
}

/** Equal objects hash equal; service and path contribute differently, and `seed` once, at the end. */
uint qHash(const DBusObject &object, uint seed = 0);

/** Interface name to the interface's properties: one object's state. On the bus a{sa{sv}}. */
typedef QMap<QString, QVariantMap> QVariantMapMap;

/** Object path to interfaces, what GetManagedObjects returns. On the bus a{oa{sa{sv}}}. */
typedef QMap<QDBusObjectPath, QVariantMapMap> DBusObjectList;

/** On the bus a(so). */
typedef QList<DBusObject> DBusCallManagerList;

QDBusArgument &operator<<(QDBusArgument &argument, const DBusObject &object);
const QDBusArgument &operator>>(const QDBusArgument &argument, DBusObject &object);

// Interfaces of a call object. Only the first is required of it.
extern const QString callInterfaceName;
extern const QString dtmfInterfaceName;
extern const QString audioControlInterfaceName;

Q_DECLARE_METATYPE(DBusObject)
Q_DECLARE_METATYPE(QVariantMapMap)
Q_DECLARE_METATYPE(DBusObjectList)
Q_DECLARE_METATYPE(DBusCallManagerList)

#endif
