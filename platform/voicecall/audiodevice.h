// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALL_AUDIODEVICE_H
#define VOICECALL_AUDIODEVICE_H

#include "voicecallglobal.h"

#include <QtCore/QList>
#include <QtCore/QMetaType>
#include <QtCore/QString>
#include <QtCore/QVariantMap>
#include <QtDBus/QDBusArgument>

/**
 * One audio device known to the host: a plain value.
 *
 * On the bus a device is the structure (sibbsa{sv}), its members in the order below.
 */
class VOICECALL_EXPORT AudioDevice
{
    Q_GADGET
    Q_PROPERTY(QString id MEMBER id)
    Q_PROPERTY(int type MEMBER type)
    Q_PROPERTY(bool isInput MEMBER isInput)
    Q_PROPERTY(bool isOutput MEMBER isOutput)
    Q_PROPERTY(QString name MEMBER name)
    Q_PROPERTY(QVariantMap properties MEMBER properties)

public:
    /** Kinds of device, the value of `type`; a host may use further numbers of its own. */
    enum Type { Unknown = 0, Earpiece = 1, Speaker = 2, WiredHeadset = 3, Microphone = 4 };
    Q_ENUM(Type)

    /** Unique among the host's devices, stable while the device is present; what selections name. */
    QString id;
    qint32 type = Unknown;
    bool isInput = false;
    bool isOutput = false;
    /** For people; may be empty. */
    QString name;
    /** Whatever else the host tells of the device; values must be marshallable to the bus. */
    QVariantMap properties;
};

VOICECALL_EXPORT bool operator==(const AudioDevice &left, const AudioDevice &right);
inline bool operator!=(const AudioDevice &left, const AudioDevice &right) { return !(left == right); }

/**
 * Devices in the host's order. The meta-type of this name and its bus form a(sibbsa{sv}) are registered
 * when the library is loaded.
 */
typedef QList<AudioDevice> AudioDeviceList;

VOICECALL_EXPORT QDBusArgument &operator<<(QDBusArgument &argument, const AudioDevice &device);
VOICECALL_EXPORT const QDBusArgument &operator>>(const QDBusArgument &argument, AudioDevice &device);

Q_DECLARE_METATYPE(AudioDevice)
Q_DECLARE_METATYPE(AudioDeviceList)

#endif
