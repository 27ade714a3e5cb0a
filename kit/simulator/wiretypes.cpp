// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "wiretypes.h"

#include <QtDBus/QDBusMetaType>

void registerWireTypes()
{
    qDBusRegisterMetaType<InterfaceMap>();
    qDBusRegisterMetaType<ObjectMap>();
}

static QString readDeviceId(const QDBusArgument &argument)
{
    QString id;
    QString name;
    int type = 0;
    bool isInput = false;
    bool isOutput = false;
    QVariantMap properties;
    argument.beginStructure();
    argument >> id >> type >> isInput >> isOutput >> name >> properties;
    argument.endStructure();
    return id;
}

QStringList deviceIds(const QVariant &devices)
{
    const auto argument = devices.value<QDBusArgument>();
    QStringList ids;
    argument.beginArray();
    while (!argument.atEnd())
        ids.append(readDeviceId(argument));
    argument.endArray();
    return ids;
}
