// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "fakeaudiointerface.h"

#include "fakeaudio.h"

#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusError>
#include <QtDBus/QDBusObjectPath>
#include <QtDBus/QDBusSignature>

#include <algorithm>

FakeAudioInterface::FakeAudioInterface(FakeAudio *audio)
    : BusInterface(QStringLiteral("org.tarnwickle.voicecall.FakeAudio1")),
      m_audio(audio)
{
}

QDBusMessage FakeAudioInterface::call(const QDBusMessage &message)
{
    return message.member() == QLatin1String("AddDevice") ? addDevice(message) : removeDevice(message);
}

// A value that is anything else would keep its message, or a file descriptor, for as long as the device stays.
static bool isSelfContained(const QVariant &value)
{
    const int type = value.userType();
    return type < QMetaType::User || type == qMetaTypeId<QDBusObjectPath>() || type == qMetaTypeId<QDBusSignature>();
}

QDBusMessage FakeAudioInterface::addDevice(const QDBusMessage &message)
{
    const auto device = qdbus_cast<AudioDevice>(message.arguments().at(0));
    if (device.id.isEmpty())
        return message.createErrorReply(QDBusError::InvalidArgs, QStringLiteral("A device needs an id"));
    if (!std::all_of(device.properties.cbegin(), device.properties.cend(), isSelfContained)) {
        return message.createErrorReply(QDBusError::InvalidArgs,
            QStringLiteral("The properties of a device can be basic values, byte arrays and string arrays"));
    }
    if (m_audio->add(device))
        return message.createReply();
    return message.createErrorReply(QStringLiteral("org.tarnwickle.voicecall.Error.DeviceExists"),
        QStringLiteral("There is a device with the id '%1' already").arg(device.id));
}

QDBusMessage FakeAudioInterface::removeDevice(const QDBusMessage &message)
{
    const QString id = message.arguments().at(0).toString();
    if (m_audio->remove(id))
        return message.createReply();
    QStringList known;
    const AudioDeviceList devices = m_audio->devices();
    for (const AudioDevice &device : devices)
        known.append(device.id);
    return message.createErrorReply(QStringLiteral("org.tarnwickle.voicecall.Error.NoSuchDevice"),
        QStringLiteral("No device has the id '%1'; there %2")
            .arg(id,
                known.isEmpty() ? QStringLiteral("is none")
                                : QStringLiteral("are: ") + known.join(QLatin1String(", "))));
}
