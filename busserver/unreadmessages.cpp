// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "unreadmessages.h"

#include <climits>
#include <dbus/dbus.h>

void UnreadMessages::allowAny(const QDBusConnection &connection)
{
    auto *link = static_cast<DBusConnection *>(connection.internalPointer());
    if (!link)
        return; // it does not stand
    dbus_connection_set_max_received_size(link, LONG_MAX);
    dbus_connection_set_max_received_unix_fds(link, LONG_MAX);
}
