// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "audiostate.h"

static AudioDevice device(const char *id, AudioDevice::Type type, bool isInput, bool isOutput)
{
    AudioDevice device;
    device.id = QString::fromLatin1(id);
    device.type = type;
    device.isInput = isInput;
    device.isOutput = isOutput;
    device.name = device.id;
    return device;
}

static AudioRouteState makeState()
{
    AudioRouteState state;
    state.devices
        = {device("earpiece", AudioDevice::Earpiece, false, true), device("speaker", AudioDevice::Speaker, false, true),
            device("microphone", AudioDevice::Microphone, true, false),
            device("headset", AudioDevice::WiredHeadset, true, true)};
    state.inputDeviceId = QStringLiteral("microphone");
    state.outputDeviceId = QStringLiteral("earpiece");
    return state;
}

const AudioRouteState &usualAudioState()
{
    static const AudioRouteState state = makeState();
    return state;
}
