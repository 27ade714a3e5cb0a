// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef RINGLETCLIENT_AUDIO_H
#define RINGLETCLIENT_AUDIO_H

#include <QtCore/QMetaType>
#include <QtCore/QString>
#include <QtCore/QVariantMap>
#include <QtCore/QVector>

namespace Ringlet {

/** An audio device of the host's. */
struct AudioDevice
{
    /** By which it is selected. */
    QString id;
    /** The host's number for its kind. */
    int type = 0;
    bool isInput = false;
    bool isOutput = false;
    /** For people. */
    QString name;
    /** Whatever else the host tells. */
    QVariantMap properties;
};

inline bool operator==(const AudioDevice &a, const AudioDevice &b)
{
    return a.id == b.id && a.type == b.type && a.isInput == b.isInput && a.isOutput == b.isOutput && a.name == b.name
        && a.properties == b.properties;
}

inline bool operator!=(const AudioDevice &a, const AudioDevice &b) { return !(a == b); }

using AudioDeviceList = QVector<AudioDevice>;

/** What the host has muted and selected, for all calls. */
struct AudioRoute
{
    bool microphoneMuted = false;
    /** Device ids; empty when nothing is selected. */
    QString input;
    QString output;
};

inline bool operator==(const AudioRoute &a, const AudioRoute &b)
{
    return a.microphoneMuted == b.microphoneMuted && a.input == b.input && a.output == b.output;
}

inline bool operator!=(const AudioRoute &a, const AudioRoute &b) { return !(a == b); }

} // namespace Ringlet

Q_DECLARE_METATYPE(Ringlet::AudioDevice)
Q_DECLARE_METATYPE(Ringlet::AudioRoute)

#endif
