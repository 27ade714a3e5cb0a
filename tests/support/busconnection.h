// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_BUSCONNECTION_H
#define TESTS_BUSCONNECTION_H

#include "message.h"

#include <functional>
#include <string>

/**
 * A connection to the bus of its own, on the bus's reference library: cheap to open, and it keeps nothing
 * when it is closed. Messages are taken from it, never dispatched.
 */
class BusConnection
{
public:
    /** Connects; throws std::runtime_error when the bus cannot be reached. */
    explicit BusConnection(const std::string &address);
    /** Closes the connection. What was sent before is flushed. */
    ~BusConnection();

    BusConnection(const BusConnection &) = delete;
    BusConnection &operator=(const BusConnection &) = delete;

    const std::string &name() const { return m_name; }
    int descriptor() const;

    /** Sends without waiting; the message's serial, which its reply carries. */
    uint32_t send(const Message &message);

    /** Waits until all that was sent has left. */
    void flush() { dbus_connection_flush(m_connection); }

    /** Sends and waits for the answer; throws std::runtime_error with the error's text. */
    Message call(const Message &message);

    /** Reads and writes what can be without waiting; hands over each message that has come. */
    void pump(const std::function<void(const Message &)> &handle);

private:
    DBusConnection *m_connection;
    std::string m_name;
};

#endif
