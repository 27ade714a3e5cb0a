// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "common/dbustypes.h"

#include <QtCore/QHash>
#include <QtDBus/QDBusMetaType>

const QString callInterfaceName = QStringLiteral("zelkovar.Call.Call1");
const QString dtmfInterfaceName = QStringLiteral("zelkovar.Call.DTMF1");
const QString audioControlInterfaceName = QStringLiteral("zelkovar.Call.AudioControl1");

static void registerTypes()
{
    qDBusRegisterMetaType<DBusObjectList>();
    qDBusRegisterMetaType<QVariantMapMap>();
    qDBusRegisterMetaType<DBusObject>();
    qDBusRegisterMetaType<DBusCallManagerList>();
}
// At load time: the proxies and adaptors need the types before anybody could be asked to register them.
Q_CONSTRUCTOR_FUNCTION(registerTypes)

QString DBusObject::toString() const { return QStringLiteral("%1@%2").arg(service, path.path()); }

QString DBusObject::proxyPath() const
{
    const QString text = path.path();
    return text == QLatin1String("/org/freedesktop/DBus/Local") ? QStringLiteral("reserved") : text;
}

uint qHash(const DBusObject &object, uint seed)
{
    // Rotated, so that service and path swapped do not collide. The parts are hashed without the seed,
    // which would otherwise cancel itself out.
    const uint service = qHash(object.service, 0U);
    return ((service << 16) | (service >> 16)) ^ qHash(object.path.path(), 0U) ^ seed;
}

QDBusArgument &operator<<(QDBusArgument &argument, const DBusObject &object)
{
    argument.beginStructure();
    argument << object.service << object.path;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, DBusObject &object)
{
    argument.beginStructure();
    argument >> object.service >> object.path;
    argument.endStructure();
    return argument;
}
