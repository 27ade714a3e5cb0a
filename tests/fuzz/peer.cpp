// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "peer.h"

#include "finding.h"
#include "objectreport.h"

#include <climits>

Peer::Peer(const std::string &address) : m_connection(dbus_connection_open_private(address.c_str(), nullptr))
{
    if (!m_connection || !dbus_bus_register(m_connection.get(), nullptr))
        reportFinding("nobody can connect to the bus any more");
    dbus_connection_set_exit_on_disconnect(m_connection.get(), FALSE);
    // Otherwise it stops reading when there is much.
    dbus_connection_set_max_received_size(m_connection.get(), LONG_MAX);
}

void Peer::send(Message message)
{
    if (!dbus_connection_get_is_connected(m_connection.get()))
        return;
    dbus_connection_send(m_connection.get(), message.get(), nullptr);
    dbus_connection_flush(m_connection.get());
}

bool Peer::isAnswered(Message call)
{
    DBusError error = DBUS_ERROR_INIT;
    const Message reply(
        dbus_connection_send_with_reply_and_block(m_connection.get(), call.get(), DBUS_TIMEOUT_USE_DEFAULT, &error));
    const bool isLate = dbus_error_has_name(&error, DBUS_ERROR_NO_REPLY);
    dbus_error_free(&error);
    return !isLate;
}

Message Peer::take()
{
    dbus_connection_read_write(m_connection.get(), 0);
    return Message(dbus_connection_pop_message(m_connection.get()));
}

bool Peer::own(const char *busName, bool owned)
{
    DBusConnection *connection = m_connection.get();
    return owned ? dbus_bus_request_name(connection, busName, DBUS_NAME_FLAG_DO_NOT_QUEUE, nullptr)
            == DBUS_REQUEST_NAME_REPLY_PRIMARY_OWNER
                 : dbus_bus_release_name(connection, busName, nullptr) == DBUS_RELEASE_NAME_REPLY_RELEASED;
}

void Peer::forgeAnswers(const char *victim, dbus_uint32_t last)
{
    for (dbus_uint32_t serial = 1; serial <= last; ++serial) {
        Message reply(dbus_message_new(DBUS_MESSAGE_TYPE_METHOD_RETURN));
        dbus_message_set_destination(reply.get(), victim);
        dbus_message_set_reply_serial(reply.get(), serial);
        dbus_message_set_no_reply(reply.get(), TRUE);
        appendObjects(reply.get(), {{"/forged", {"zelkovar.Call.Call1"}, {{"Uri", std::string("forged")}}}});
        send(std::move(reply));
    }
}
