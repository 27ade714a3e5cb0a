// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALLD_FAKEAUDIO_H
#define VOICECALLD_FAKEAUDIO_H

#include "audiobackend.h"

/**
 * Audio without sound: a handset's microphone and earpiece, a speaker and a wired headset, and whatever
 * else is plugged in while it runs.
 */
class FakeAudio : public AudioBackend
{
    Q_OBJECT

public:
    FakeAudio();

    AudioDeviceList devices() const override { return m_devices; }
    void apply(const AudioRouteState &state) override;
    std::unique_ptr<BusInterface> makeBusInterface() override;

    /** Plugs a device in behind the others; false when its id is taken. */
    bool add(const AudioDevice &device);

    /** Pulls a device out; false when there is none of this id. */
    bool remove(const QString &id);

private:
    AudioDeviceList::const_iterator find(const QString &id) const;

    AudioDeviceList m_devices;
};

#endif
