// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "busconnection.h"

#include <stdexcept>

namespace {

constexpr int callTimeoutMs = 60000;

struct Error : DBusError
{
    Error() { dbus_error_init(this); }
    ~Error() { dbus_error_free(this); }
    Error(const Error &) = delete;
    Error &operator=(const Error &) = delete;

    [[noreturn]] void raise(const std::string &what) const
    {
        throw std::runtime_error(what + ": " + (message ? message : "no reason given"));
    }
};

} // namespace

BusConnection::BusConnection(const std::string &address)
{
    Error error;
    m_connection = dbus_connection_open_private(address.c_str(), &error);
    if (!m_connection)
        error.raise("cannot connect to the bus");
    if (!dbus_bus_register(m_connection, &error))
        error.raise("the bus does not greet");
    m_name = dbus_bus_get_unique_name(m_connection);
}

BusConnection::~BusConnection()
{
    dbus_connection_flush(m_connection);
    dbus_connection_close(m_connection);
    dbus_connection_unref(m_connection);
}

int BusConnection::descriptor() const
{
    int descriptor = -1;
    dbus_connection_get_unix_fd(m_connection, &descriptor);
    return descriptor;
}

uint32_t BusConnection::send(const Message &message)
{
    uint32_t serial = 0;
    dbus_connection_send(m_connection, message.raw(), &serial);
    return serial;
}

Message BusConnection::call(const Message &message)
{
    Error error;
    DBusMessage *reply = dbus_connection_send_with_reply_and_block(m_connection, message.raw(), callTimeoutMs, &error);
    if (!reply)
        error.raise(std::string(dbus_message_get_member(message.raw())) + " failed");
    return Message(reply);
}

void BusConnection::pump(const std::function<void(const Message &)> &handle)
{
    dbus_connection_read_write(m_connection, 0);
    while (DBusMessage *message = dbus_connection_pop_message(m_connection))
        handle(Message(message));
    // What the handlers sent leaves now, not when this connection is looked at next.
    dbus_connection_flush(m_connection);
}
