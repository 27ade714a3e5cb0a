// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BUSSERVER_BUSTYPES_H
#define BUSSERVER_BUSTYPES_H

#include <QtCore/QMap>
#include <QtCore/QVariantMap>
#include <QtDBus/QDBusObjectPath>

// Classes of their own: the program, or a plug-in in it, may have registered the plain maps under other names.

/** Interface name to properties, a{sa{sv}}. */
class BusInterfaceMap : public QMap<QString, QVariantMap>
{
    using QMap::QMap;
};

/** Object path to interfaces, a{oa{sa{sv}}}. */
class BusObjectMap : public QMap<QDBusObjectPath, BusInterfaceMap>
{
    using QMap::QMap;
};

Q_DECLARE_METATYPE(BusInterfaceMap)
Q_DECLARE_METATYPE(BusObjectMap)

/** Makes the types above known to the bus library; to be called before one is sent or read. */
void registerBusTypes();

#endif
