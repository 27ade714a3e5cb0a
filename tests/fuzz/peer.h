// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_PEER_H
#define TESTS_PEER_H

#include "message.h"

#include <string>

/**
 * A connection of its own to the bus, which the bus ends when it is sent what it does not take; from then on it is
 * mute.
 */
class Peer
{
public:
    /** That nobody can connect any more is a finding. */
    explicit Peer(const std::string &address);

    std::string name() const { return dbus_bus_get_unique_name(m_connection.get()); }

    void send(Message message);

    /** Sends a call and waits for its answer, error or not; false when none comes. */
    bool isAnswered(Message call);

    /** What has come next; none when nothing is there. */
    Message take();

    /** Asks the bus daemon for a name, or gives it back; whether it has done so. */
    bool own(const char *busName, bool owned);

    /**
     * Answers the calls of `victim`, a bus name, with serial numbers up to `last`, in the place of whoever was called:
     * with the objects of a call whose address is "forged".
     */
    void forgeAnswers(const char *victim, dbus_uint32_t last);

private:
    struct Close
    {
        void operator()(DBusConnection *connection) const
        {
            dbus_connection_close(connection);
            dbus_connection_unref(connection);
        }
    };

    std::unique_ptr<DBusConnection, Close> m_connection;
};

#endif
