// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef RINGLETCLIENT_INTROSPECTION_H
#define RINGLETCLIENT_INTROSPECTION_H

#include <QtCore/QStringList>

namespace Ringlet {

/**
 * What an object with these interfaces and children answers to Introspect, without the node element around
 * it. The interfaces are those of dbus/; the bus library adds the standard ones that every object has.
 */
QString describeObject(const QStringList &interfaces, const QStringList &children);

} // namespace Ringlet

#endif
