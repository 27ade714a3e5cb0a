// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef RINGLETCLIENT_PROPERTIESINTERFACE_H
#define RINGLETCLIENT_PROPERTIESINTERFACE_H

#include "wiretypes.h"

#include <QtDBus/QDBusMessage>

namespace Ringlet {

/** Answers a call of org.freedesktop.DBus.Properties on an object with these interfaces, all read-only. */
QDBusMessage answerPropertiesCall(const QDBusMessage &call, const InterfaceMap &interfaces);

} // namespace Ringlet

#endif
