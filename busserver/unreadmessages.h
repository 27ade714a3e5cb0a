// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BUSSERVER_UNREADMESSAGES_H
#define BUSSERVER_UNREADMESSAGES_H

#include <QtDBus/QDBusConnection>

/** Messages that have come and are not handled yet. */
namespace UnreadMessages {

/**
 * Lets a connection read however much is not handled yet; to be called before anybody else is.
 *
 * libdbus stops reading when messages of 63 MiB, or with 4096 descriptors, have been read and not been freed,
 * and goes on when they are. Qt frees messages in other threads than the one that reads, where reading cannot
 * be switched on again: after the first such moment, the connection would never hear anything any more, and
 * nobody would be told.
 */
void allowAny(const QDBusConnection &connection);

} // namespace UnreadMessages

#endif
