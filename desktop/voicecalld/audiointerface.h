// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALLD_AUDIOINTERFACE_H
#define VOICECALLD_AUDIOINTERFACE_H

#include "busserver/businterface.h"

class AudioRouting;

/** org.tarnwickle.voicecall.Audio1 */
class AudioInterface : public BusInterface
{
    Q_OBJECT

public:
    explicit AudioInterface(AudioRouting *audio);

    QVariantMap properties() const override;

private:
    void announce(const char *property);
    QDBusMessage selectInputDevice(const QDBusMessage &message);
    QDBusMessage selectOutputDevice(const QDBusMessage &message);
    QDBusMessage setMicrophoneMuted(const QDBusMessage &message);

    AudioRouting *m_audio;
};

#endif
