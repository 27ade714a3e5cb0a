// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "audiodevice.h"

#include <QtDBus/QDBusMetaType>

static void registerAudioTypes()
{
    qRegisterMetaType<AudioDevice>();
    qDBusRegisterMetaType<AudioDevice>();
    qDBusRegisterMetaType<AudioDeviceList>();
}
// At load time, so that plug-ins which marshal a list need not know who registers it.
Q_CONSTRUCTOR_FUNCTION(registerAudioTypes)

bool operator==(const AudioDevice &left, const AudioDevice &right)
{
    return left.id == right.id && left.type == right.type && left.isInput == right.isInput
        && left.isOutput == right.isOutput && left.name == right.name && left.properties == right.properties;
}

QDBusArgument &operator<<(QDBusArgument &argument, const AudioDevice &device)
{
    argument.beginStructure();
    argument << device.id << device.type << device.isInput << device.isOutput << device.name << device.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, AudioDevice &device)
{
    argument.beginStructure();
    argument >> device.id >> device.type >> device.isInput >> device.isOutput >> device.name >> device.properties;
    argument.endStructure();
    return argument;
}
