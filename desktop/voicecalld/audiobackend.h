// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALLD_AUDIOBACKEND_H
#define VOICECALLD_AUDIOBACKEND_H

#include <audioroutestate.h>

#include <QtCore/QObject>
#include <memory>

class BusInterface;

/**
 * What knows the machine's audio devices and makes them follow the host's decisions. It decides nothing
 * itself: selection, fall-back and mute are AudioRouting's.
 */
class AudioBackend : public QObject
{
    Q_OBJECT

public:
    /** The devices that are present, in order of preference. */
    virtual AudioDeviceList devices() const = 0;

    /** Makes the hardware follow. Called with the whole state after every change of it. */
    virtual void apply(const AudioRouteState &state) = 0;

    /**
     * What the backend offers on the bus beside the audio interface, on the host's own object; null when
     * nothing. It refers to the backend, and must go first.
     */
    virtual std::unique_ptr<BusInterface> makeBusInterface() = 0;

Q_SIGNALS:
    /** devices() gives another list from now on. */
    void devicesChanged();
};

#endif
