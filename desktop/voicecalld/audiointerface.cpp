// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "audiointerface.h"

#include "audiorouting.h"
#include "busserver/busreply.h"

AudioInterface::AudioInterface(AudioRouting *audio)
    : BusInterface(QStringLiteral("org.tarnwickle.voicecall.Audio1"),
        {
            {QStringLiteral("SelectInputDevice"), [this](const QDBusMessage &call) { return selectInputDevice(call); }},
            {QStringLiteral("SelectOutputDevice"),
                [this](const QDBusMessage &call) { return selectOutputDevice(call); }},
            {QStringLiteral("SetMicrophoneMuted"),
                [this](const QDBusMessage &call) { return setMicrophoneMuted(call); }},
        }),
      m_audio(audio)
{
    connect(audio, &AudioRouting::devicesChanged, this, [this] { announce("Devices"); });
    connect(audio, &AudioRouting::inputDeviceChanged, this, [this] { announce("InputDevice"); });
    connect(audio, &AudioRouting::outputDeviceChanged, this, [this] { announce("OutputDevice"); });
    connect(audio, &AudioRouting::microphoneMutedChanged, this, [this] { announce("MicrophoneMuted"); });
}

void AudioInterface::announce(const char *property)
{
    const QString name = QLatin1String(property);
    emit propertiesChanged({{name, properties().value(name)}});
}

QVariantMap AudioInterface::properties() const
{
    const AudioRouteState &state = m_audio->state();
    return {
        {QStringLiteral("Devices"), QVariant::fromValue(state.devices)},
        {QStringLiteral("InputDevice"), state.inputDeviceId},
        {QStringLiteral("OutputDevice"), state.outputDeviceId},
        {QStringLiteral("MicrophoneMuted"), state.microphoneMuted},
    };
}

static QDBusMessage noSuchDevice(const QDBusMessage &message, const char *kind, const QStringList &known)
{
    return message.createErrorReply(QStringLiteral("org.tarnwickle.voicecall.Error.NoSuchDevice"),
        QStringLiteral("No %1 device has the id '%2'; %3")
            .arg(QLatin1String(kind), message.arguments().at(0).toString(), BusReply::thereIs(known)));
}

QDBusMessage AudioInterface::selectInputDevice(const QDBusMessage &message)
{
    if (m_audio->selectInputDevice(message.arguments().at(0).toString()))
        return message.createReply();
    return noSuchDevice(message, "input", m_audio->inputDeviceIds());
}

QDBusMessage AudioInterface::selectOutputDevice(const QDBusMessage &message)
{
    if (m_audio->selectOutputDevice(message.arguments().at(0).toString()))
        return message.createReply();
    return noSuchDevice(message, "output", m_audio->outputDeviceIds());
}

QDBusMessage AudioInterface::setMicrophoneMuted(const QDBusMessage &message)
{
    m_audio->setMicrophoneMuted(message.arguments().at(0).toBool());
    return message.createReply();
}
