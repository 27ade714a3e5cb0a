// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BUSSERVER_BUSREPLY_H
#define BUSSERVER_BUSREPLY_H

#include <QtCore/QStringList>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>

/** Answers to calls. */
namespace BusReply {

/**
 * Sends the answer, if the caller wants one. The bus library refuses some values; a caller whose answer holds one
 * gets an error instead, and does not wait in vain.
 */
void send(const QDBusConnection &connection, const QDBusMessage &call, const QDBusMessage &answer);

/** "there are: a, b" or "there is none", for errors. */
QString thereIs(const QStringList &names);

} // namespace BusReply

#endif
