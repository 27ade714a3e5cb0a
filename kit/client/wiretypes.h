// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef RINGLETCLIENT_WIRETYPES_H
#define RINGLETCLIENT_WIRETYPES_H

#include <RingletClient/audio.h>

#include <QtCore/QVariant>

namespace Ringlet {

extern const QString callInterface;
extern const QString dtmfInterface;
extern const QString audioInterface;

/**
 * The devices in an a(sibbsa{sv}); empty when `devices` is anything else, which another host may send. Of
 * their properties those that can outlive their message.
 */
AudioDeviceList readDevices(const QVariant &devices);

} // namespace Ringlet

#endif
