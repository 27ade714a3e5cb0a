// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "fakeaudiointerface.h"

#include "busserver/busreply.h"
#include "busserver/plainvalue.h"
#include "fakeaudio.h"

#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusError>

FakeAudioInterface::FakeAudioInterface(FakeAudio *audio)
    : BusInterface(QStringLiteral("org.tarnwickle.voicecall.FakeAudio1"),
        {
            {QStringLiteral("AddDevice"), [this](const QDBusMessage &call) { return addDevice(call); }},
            {QStringLiteral("RemoveDevice"), [this](const QDBusMessage &call) { return removeDevice(call); }},
        }),
      m_audio(audio)
{
}

QDBusMessage FakeAudioInterface::addDevice(const QDBusMessage &message)
{
    const auto device = qdbus_cast<AudioDevice>(message.arguments().at(0));
    if (device.id.isEmpty())
        return message.createErrorReply(QDBusError::InvalidArgs, QStringLiteral("A device needs an id"));
    if (!PlainValue::arePlain(device.properties)) {
        return message.createErrorReply(QDBusError::InvalidArgs,
            QStringLiteral("The properties of a device can be basic values but the empty signature, byte arrays and "
                           "string arrays"));
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
        QStringLiteral("No device has the id '%1'; %2").arg(id, BusReply::thereIs(known)));
}
