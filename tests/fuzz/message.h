// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_MESSAGE_H
#define TESTS_MESSAGE_H

#include <dbus/dbus.h>
#include <memory>
#include <string>

struct MessageUnref
{
    void operator()(DBusMessage *message) const { dbus_message_unref(message); }
};

/** A bus message, owned. */
using Message = std::unique_ptr<DBusMessage, MessageUnref>;

/** Takes a further reference to a message that somebody else owns. */
inline Message shared(DBusMessage *message) { return Message(dbus_message_ref(message)); }

/** A header field, which may be missing, as text. */
inline std::string text(const char *field) { return field ? field : ""; }

inline Message makeCall(const char *destination, const char *path, const char *interface, const char *member)
{
    return Message(dbus_message_new_method_call(destination, path, interface, member));
}

inline Message makeSignal(const char *path, const char *interface, const char *member)
{
    return Message(dbus_message_new_signal(path, interface, member));
}

/** Appends one value of a basic type. */
template <typename T>
void append(DBusMessage *message, int type, const T &value)
{
    DBusMessageIter iter;
    dbus_message_iter_init_append(message, &iter);
    dbus_message_iter_append_basic(&iter, type, &value);
}

/** The same for the types that are text. */
inline void append(DBusMessage *message, int type, const std::string &value) { append(message, type, value.c_str()); }

/** Writes a container that `fill` fills; `contents` is the type of what is in it, where the container has to tell. */
template <typename Fill>
void appendContainer(DBusMessageIter *to, int type, const char *contents, const Fill &fill)
{
    DBusMessageIter inner;
    dbus_message_iter_open_container(to, type, contents, &inner);
    fill(&inner);
    dbus_message_iter_close_container(to, &inner);
}

#endif
