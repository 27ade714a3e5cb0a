// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "analysis/message.h"

static std::string_view orEmpty(const char *text) { return text ? std::string_view(text) : std::string_view(); }

static Message::Kind kindOf(GDBusMessage *message)
{
    switch (g_dbus_message_get_message_type(message)) {
    case G_DBUS_MESSAGE_TYPE_METHOD_CALL:
        return Message::Kind::Call;
    case G_DBUS_MESSAGE_TYPE_METHOD_RETURN:
        return Message::Kind::Return;
    case G_DBUS_MESSAGE_TYPE_ERROR:
        return Message::Kind::Error;
    case G_DBUS_MESSAGE_TYPE_SIGNAL:
        return Message::Kind::Signal;
    default:
        return Message::Kind::Other;
    }
}

Message::Message(GDBusMessage *message, Time time, std::uint64_t number, std::size_t size)
    : kind(kindOf(message)),
      time(time),
      number(number),
      size(size),
      serial(g_dbus_message_get_serial(message)),
      sender(orEmpty(g_dbus_message_get_sender(message))),
      destination(orEmpty(g_dbus_message_get_destination(message))),
      signature(orEmpty(g_dbus_message_get_signature(message))),
      body(g_dbus_message_get_body(message))
{
    // Looking up a header field costs as much as much of what is done with it: only what such a message can have.
    if (kind == Kind::Return || kind == Kind::Error) {
        replySerial = g_dbus_message_get_reply_serial(message);
        error = orEmpty(g_dbus_message_get_error_name(message));
    } else {
        path = orEmpty(g_dbus_message_get_path(message));
        interface = orEmpty(g_dbus_message_get_interface(message));
        member = orEmpty(g_dbus_message_get_member(message));
    }
    descriptors = g_dbus_message_get_num_unix_fds(message);
}

bool Message::isCall(std::string_view wantedInterface, std::string_view wantedMember) const
{
    return kind == Kind::Call && member == wantedMember && interface == wantedInterface;
}

bool Message::isSignal(std::string_view wantedInterface, std::string_view wantedMember) const
{
    return kind == Kind::Signal && member == wantedMember && interface == wantedInterface;
}
