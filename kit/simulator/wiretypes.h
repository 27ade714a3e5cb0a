// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef SIMULATOR_WIRETYPES_H
#define SIMULATOR_WIRETYPES_H

#include <QtCore/QMap>
#include <QtCore/QStringList>
#include <QtCore/QVariantMap>
#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusObjectPath>

/** Interface name to properties, a{sa{sv}}. */
using InterfaceMap = QMap<QString, QVariantMap>;

/** Object path to interfaces, a{oa{sa{sv}}}. */
using ObjectMap = QMap<QDBusObjectPath, InterfaceMap>;

Q_DECLARE_METATYPE(InterfaceMap)
Q_DECLARE_METATYPE(ObjectMap)

/** Makes the types above known to the bus library; to be called once, before they are used. */
void registerWireTypes();

/** The ids of the devices in an a(sibbsa{sv}); the caller has seen to it that it is one. */
QStringList deviceIds(const QVariant &devices);

#endif
