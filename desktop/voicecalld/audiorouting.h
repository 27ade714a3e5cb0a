// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALLD_AUDIOROUTING_H
#define VOICECALLD_AUDIOROUTING_H

#include <audioroutestate.h>

#include <QtCore/QObject>
#include <QtCore/QStringList>

class AudioBackend;

/**
 * The host's audio state and the rules for it: what is selected is always a device that is present and
 * fits, the first such one unless somebody chose another, and none only while none fits.
 *
 * The state changes as a whole first; what changed is signalled then, devices before selections, and only
 * what really changed.
 */
class AudioRouting : public QObject
{
    Q_OBJECT

public:
    /** `backend` must live longer. */
    explicit AudioRouting(AudioBackend *backend);

    const AudioRouteState &state() const { return m_state; }

    /** Selects an input device; false, and no change, when no input device has this id. */
    bool selectInputDevice(const QString &id);

    /** Selects an output device; false, and no change, when no output device has this id. */
    bool selectOutputDevice(const QString &id);

    void setMicrophoneMuted(bool muted);

    QStringList inputDeviceIds() const;
    QStringList outputDeviceIds() const;

Q_SIGNALS:
    void devicesChanged();
    void inputDeviceChanged();
    void outputDeviceChanged();
    void microphoneMutedChanged();

private:
    void takeDevices();
    void announce();

    AudioBackend *m_backend;
    AudioRouteState m_state;
    /** What listeners have been told so far: they may change the state while they are being told. */
    AudioRouteState m_announced;
};

#endif
