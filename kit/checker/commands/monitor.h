// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef KIT_CHECKER_MONITOR_H
#define KIT_CHECKER_MONITOR_H

#include "commands/bus.h"

#include <atomic>

/** A connection that is shown everything on the bus that can concern calls, and may say nothing. */
class Monitor
{
public:
    struct Item
    {
        BusMessage message;
        Time time = 0;
        std::uint64_t number = 0;
    };

    Monitor() = default;
    Monitor(const Monitor &) = delete;
    Monitor &operator=(const Monitor &) = delete;
    ~Monitor();

    /** False with `error` where there is no bus, or it does not allow monitors. */
    bool start(std::string *error);

    /** The next message; its `message` is null when there is none. */
    Item take();

    /** Whether the bus has gone, or has thrown the monitor out. */
    bool isLost() const { return g_dbus_connection_is_closed(m_connection.get()); }

private:
    static GDBusMessage *filter(GDBusConnection *connection, GDBusMessage *message, gboolean isIncoming, gpointer data);

    Connection m_connection;
    GAsyncQueue *m_queue = nullptr;
    std::atomic<bool> m_isMonitor{false};
    std::uint64_t m_count = 0; // of the bus's thread
};

#endif
