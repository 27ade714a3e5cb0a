// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "wiretypes.h"

#include "busserver/plainvalue.h"

#include <QtDBus/QDBusArgument>

namespace Ringlet {

const QString callInterface = QStringLiteral("zelkovar.Call.Call1");
const QString dtmfInterface = QStringLiteral("zelkovar.Call.DTMF1");
const QString audioInterface = QStringLiteral("zelkovar.Call.AudioControl1");

static AudioDevice readDevice(const QDBusArgument &argument)
{
    AudioDevice device;
    argument.beginStructure();
    argument >> device.id >> device.type >> device.isInput >> device.isOutput >> device.name >> device.properties;
    argument.endStructure();
    device.properties = PlainValue::plain(device.properties);
    return device;
}

AudioDeviceList readDevices(const QVariant &devices)
{
    AudioDeviceList list;
    if (devices.userType() != qMetaTypeId<QDBusArgument>())
        return list;
    const auto argument = devices.value<QDBusArgument>();
    if (argument.currentSignature() != QLatin1String("a(sibbsa{sv})"))
        return list;
    argument.beginArray();
    while (!argument.atEnd())
        list.append(readDevice(argument));
    argument.endArray();
    return list;
}

} // namespace Ringlet
