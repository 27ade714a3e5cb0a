// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALLD_BUSLINK_H
#define VOICECALLD_BUSLINK_H

#include <QtDBus/QDBusConnection>

/**
 * What has to be set right between Qt's bus layer and libdbus, on which it stands, for a connection to
 * outlive whatever other programs send.
 */
namespace BusLink {

/**
 * Lets the connection read whatever is not handled yet; to be called as soon as it stands.
 *
 * libdbus stops reading when messages of 63 MiB, or with 4096 descriptors, have been read and not been freed,
 * and goes on when they are. Qt frees messages in other threads than the one that reads, where reading cannot
 * be switched on again: after the first such moment, the connection would never hear anything any more, and
 * nobody would be told.
 */
void readWithoutLimit(const QDBusConnection &connection);

/**
 * The bus daemon cuts off whoever sends a message that is larger than it lets through. From now on such a
 * message is not sent: the caller gets an error for his call instead of an answer that is too large, a call
 * fails, and a signal is lost, with a warning. Goes for all connections of this process; 0 is the limit of
 * the D-Bus protocol.
 *
 * An application's announcement grows by some bytes when it is passed on, and a list of what several
 * applications have said is larger than any of their messages: that these could be sent says nothing of ours.
 */
void setLargestMessage(int bytes);

} // namespace BusLink

#endif
