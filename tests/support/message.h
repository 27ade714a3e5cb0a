// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_MESSAGE_H
#define TESTS_MESSAGE_H

#include <cstdint>
#include <dbus/dbus.h>
#include <memory>
#include <string>
#include <vector>

/** Who offers a member, and which. */
struct Target
{
    std::string destination;
    std::string path;
    std::string interface;
};

/** A message that the bus's reference library counts references of. */
class Message
{
public:
    /** Takes over the caller's reference. */
    explicit Message(DBusMessage *message) : m_message(message) { }

    static Message call(const Target &target, const char *member);
    static Message signal(const std::string &path, const char *interface, const char *member);
    static Message reply(const Message &request);
    static Message error(const Message &request, const char *name);

    DBusMessage *raw() const { return m_message.get(); }

    bool isCall() const { return dbus_message_get_type(raw()) == DBUS_MESSAGE_TYPE_METHOD_CALL; }
    bool wantsReply() const { return !dbus_message_get_no_reply(raw()); }
    uint32_t repliesTo() const { return dbus_message_get_reply_serial(raw()); }
    std::string path() const { return text(dbus_message_get_path(raw())); }
    std::string member() const { return text(dbus_message_get_member(raw())); }

    // --- Arguments, appended in order

    Message &boolean(bool value);
    Message &number(uint32_t value);
    Message &string(const std::string &value);
    Message &objectPath(const std::string &value);
    Message &strings(const std::vector<std::string> &values);

private:
    static std::string text(const char *value) { return value ? value : ""; }
    Message &append(int type, const void *value);

    struct Unref
    {
        void operator()(DBusMessage *message) const { dbus_message_unref(message); }
    };
    std::unique_ptr<DBusMessage, Unref> m_message;
};

#endif
