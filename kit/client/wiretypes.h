// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef RINGLETCLIENT_WIRETYPES_H
#define RINGLETCLIENT_WIRETYPES_H

#include <RingletClient/audio.h>

#include <QtCore/QMap>
#include <QtCore/QVariantMap>
#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusObjectPath>

namespace Ringlet {

extern const QString callInterface;
extern const QString dtmfInterface;
extern const QString audioInterface;

// Classes of their own: an application may have registered the plain maps under other names.

/** Interface name to properties, a{sa{sv}}. */
class InterfaceMap : public QMap<QString, QVariantMap>
{
    using QMap::QMap;
};

/** Object path to interfaces, a{oa{sa{sv}}}. */
class ObjectMap : public QMap<QDBusObjectPath, InterfaceMap>
{
    using QMap::QMap;
};

/** Makes the types above known to the bus library; to be called before they are used. */
void registerWireTypes();

/** The devices in an a(sibbsa{sv}); empty when `devices` is anything else, which another host may send. */
AudioDeviceList readDevices(const QVariant &devices);

} // namespace Ringlet

Q_DECLARE_METATYPE(Ringlet::InterfaceMap)
Q_DECLARE_METATYPE(Ringlet::ObjectMap)

#endif
