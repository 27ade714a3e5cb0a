// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BARESIP_AUDIOSWITCH_H
#define BARESIP_AUDIOSWITCH_H

#include "command.h"
#include "devicemap.h"

#include <RingletClient/audio.h>

#include <QtCore/QObject>

class BaresipControl;

/**
 * Lets baresip use the devices that the host has selected, as far as they have been given a counterpart.
 * baresip switches all its calls at once, and uses the same devices for later ones.
 */
class AudioSwitch : public QObject
{
    Q_OBJECT
public:
    AudioSwitch(const DeviceMap &inputs, const DeviceMap &outputs, BaresipControl &control, QObject *parent = nullptr);

    /** `selection` are the commands that select an established call: without one there is nothing to switch. */
    void follow(const Ringlet::AudioRoute &route, const QVector<Command> &selection);

    /** It is not known any more what baresip uses. */
    void reset();

Q_SIGNALS:
    void warning(const QString &text);

private:
    /** One direction. */
    struct Direction
    {
        /** The command that switches. */
        QString command;
        DeviceMap devices;
        /** Of the host; the last one that was followed. */
        QString hostDevice;
        /** "driver,device" that baresip was switched to last. */
        QString inUse;
    };

    void follow(Direction &direction, const QString &hostDevice, const QVector<Command> &selection);
    void onSwitched(Direction &direction, const QString &device, const QVector<Command> &selection,
        const CommandSequence::Result &result);

    BaresipControl &m_control;
    Direction m_input;
    Direction m_output;
};

#endif
