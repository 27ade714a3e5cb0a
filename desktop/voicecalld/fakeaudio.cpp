// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "fakeaudio.h"

#include "fakeaudiointerface.h"

#include <algorithm>

static AudioDevice device(const char *id, AudioDevice::Type type, bool isInput, bool isOutput, const char *name)
{
    AudioDevice made;
    made.id = QLatin1String(id);
    made.type = type;
    made.isInput = isInput;
    made.isOutput = isOutput;
    made.name = QLatin1String(name);
    return made;
}

FakeAudio::FakeAudio()
    : m_devices{
        device("microphone", AudioDevice::Microphone, true, false, "Microphone"),
        device("earpiece", AudioDevice::Earpiece, false, true, "Earpiece"),
        device("speaker", AudioDevice::Speaker, false, true, "Speaker"),
        device("headset", AudioDevice::WiredHeadset, true, true, "Wired headset"),
    }
{
}

void FakeAudio::apply(const AudioRouteState &state)
{
    qCInfo(voicecall, "audio: input '%s', output '%s', microphone %s", qUtf8Printable(state.inputDeviceId),
        qUtf8Printable(state.outputDeviceId), state.microphoneMuted ? "muted" : "open");
}

std::unique_ptr<BusInterface> FakeAudio::makeBusInterface() { return std::make_unique<FakeAudioInterface>(this); }

AudioDeviceList::const_iterator FakeAudio::find(const QString &id) const
{
    return std::find_if(m_devices.begin(), m_devices.end(), [&](const AudioDevice &known) { return known.id == id; });
}

bool FakeAudio::add(const AudioDevice &device)
{
    if (find(device.id) != m_devices.cend())
        return false;
    m_devices.append(device);
    emit devicesChanged();
    return true;
}

bool FakeAudio::remove(const QString &id)
{
    const auto found = find(id);
    if (found == m_devices.cend())
        return false;
    m_devices.removeAt(int(found - m_devices.cbegin()));
    emit devicesChanged();
    return true;
}
