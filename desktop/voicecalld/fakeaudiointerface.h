// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALLD_FAKEAUDIOINTERFACE_H
#define VOICECALLD_FAKEAUDIOINTERFACE_H

#include "busserver/businterface.h"

class FakeAudio;

/** org.tarnwickle.voicecall.FakeAudio1 */
class FakeAudioInterface : public BusInterface
{
    Q_OBJECT

public:
    explicit FakeAudioInterface(FakeAudio *audio);

private:
    QDBusMessage addDevice(const QDBusMessage &message);
    QDBusMessage removeDevice(const QDBusMessage &message);

    FakeAudio *m_audio;
};

#endif
