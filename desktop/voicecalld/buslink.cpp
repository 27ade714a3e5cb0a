// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "buslink.h"

#include <voicecallmanagerinterface.h>

#include <atomic>
#include <climits>
#include <cstring>
#include <dbus/dbus.h>
#include <dlfcn.h>

static std::atomic<int> largestMessage{DBUS_MAXIMUM_MESSAGE_LENGTH};

void BusLink::readWithoutLimit(const QDBusConnection &connection)
{
    auto *link = static_cast<DBusConnection *>(connection.internalPointer());
    dbus_connection_set_max_received_size(link, LONG_MAX);
    dbus_connection_set_max_received_unix_fds(link, LONG_MAX);
}

void BusLink::setLargestMessage(int bytes) { largestMessage = bytes == 0 ? DBUS_MAXIMUM_MESSAGE_LENGTH : bytes; }

// Neither Qt nor libdbus lets anybody see a message before it is sent, or asks whether the daemon will take it.
// So these functions stand in front of those of libdbus: what a program defines goes before what its libraries
// do, for all that its libraries call.

template <typename Function>
static Function *libdbus(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

// Only the daemon looks whether every array is within its own limit; in smaller messages it is.
static bool isValid(char *bytes, int length)
{
    DBusError error = DBUS_ERROR_INIT;
    // Where the serial number stands, which a message gets when it is sent; 0 is none.
    bytes[8] = 1;
    DBusMessage *message = dbus_message_demarshal(bytes, length, &error);
    dbus_error_free(&error);
    if (message)
        dbus_message_unref(message);
    return message != nullptr;
}

// How many bytes too large a message is, in whole or in part, is of no use to anybody.
static bool canBeSent(DBusMessage *message)
{
    char *bytes = nullptr;
    int length = 0;
    if (!dbus_message_marshal(message, &bytes, &length))
        return false;
    const bool fits = length <= largestMessage && (length <= DBUS_MAXIMUM_ARRAY_LENGTH || isValid(bytes, length));
    dbus_free(bytes);
    return fits;
}

static QByteArray described(DBusMessage *message)
{
    const char *member = dbus_message_get_member(message);
    const char *destination = dbus_message_get_destination(message);
    return QByteArray(dbus_message_type_to_string(dbus_message_get_type(message))) + ' ' + (member ? member : "")
        + (destination ? " to " : "") + (destination ? destination : "");
}

static DBusMessage *errorInsteadOf(DBusMessage *reply)
{
    DBusMessage *error = dbus_message_new(DBUS_MESSAGE_TYPE_ERROR);
    dbus_message_set_error_name(error, DBUS_ERROR_LIMITS_EXCEEDED);
    dbus_message_set_destination(error, dbus_message_get_destination(reply));
    dbus_message_set_reply_serial(error, dbus_message_get_reply_serial(reply));
    const char *text = "The answer is larger than the bus lets through";
    dbus_message_append_args(error, DBUS_TYPE_STRING, &text, DBUS_TYPE_INVALID);
    return error;
}

static bool isReply(DBusMessage *message) { return dbus_message_get_reply_serial(message) != 0; }

#define IN_FRONT_OF_LIBDBUS extern "C" __attribute__((visibility("default")))

IN_FRONT_OF_LIBDBUS dbus_bool_t dbus_connection_send(
    DBusConnection *connection, DBusMessage *message, dbus_uint32_t *serial)
{
    static auto *const send = libdbus<decltype(dbus_connection_send)>("dbus_connection_send");
    if (canBeSent(message))
        return send(connection, message, serial);
    qCWarning(
        voicecall, "A message is larger than the bus lets through and not sent: %s", described(message).constData());
    if (!isReply(message))
        return TRUE;
    DBusMessage *error = errorInsteadOf(message);
    const dbus_bool_t isSent = send(connection, error, serial);
    dbus_message_unref(error);
    return isSent;
}

IN_FRONT_OF_LIBDBUS dbus_bool_t dbus_connection_send_with_reply(
    DBusConnection *connection, DBusMessage *message, DBusPendingCall **pending, int timeout)
{
    static auto *const send = libdbus<decltype(dbus_connection_send_with_reply)>("dbus_connection_send_with_reply");
    if (canBeSent(message))
        return send(connection, message, pending, timeout);
    qCWarning(voicecall, "A call is larger than the bus lets through and not sent: %s", described(message).constData());
    return FALSE;
}

// What the daemon's call takes beside the rule.
static constexpr int ruleMargin = 512;

// A rule holds the path that is listened to. The daemon refuses long ones, if they get to it.
static bool canBeRule(const char *rule, DBusError *error)
{
    if (std::strlen(rule) + ruleMargin <= std::size_t(largestMessage))
        return true;
    dbus_set_error_const(error, DBUS_ERROR_LIMITS_EXCEEDED, "Match rule text is too long");
    return false;
}

IN_FRONT_OF_LIBDBUS void dbus_bus_add_match(DBusConnection *connection, const char *rule, DBusError *error)
{
    static auto *const add = libdbus<decltype(dbus_bus_add_match)>("dbus_bus_add_match");
    if (canBeRule(rule, error))
        add(connection, rule, error);
}

IN_FRONT_OF_LIBDBUS void dbus_bus_remove_match(DBusConnection *connection, const char *rule, DBusError *error)
{
    static auto *const remove = libdbus<decltype(dbus_bus_remove_match)>("dbus_bus_remove_match");
    if (canBeRule(rule, error))
        remove(connection, rule, error);
}
