// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "message.h"

Message Message::call(const Target &target, const char *member)
{
    return Message(dbus_message_new_method_call(
        target.destination.c_str(), target.path.c_str(), target.interface.c_str(), member));
}

Message Message::signal(const std::string &path, const char *interface, const char *member)
{
    return Message(dbus_message_new_signal(path.c_str(), interface, member));
}

Message Message::reply(const Message &request) { return Message(dbus_message_new_method_return(request.raw())); }

Message Message::error(const Message &request, const char *name)
{
    return Message(dbus_message_new_error(request.raw(), name, "on purpose"));
}

Message &Message::append(int type, const void *value)
{
    dbus_message_append_args(raw(), type, value, DBUS_TYPE_INVALID);
    return *this;
}

Message &Message::boolean(bool value)
{
    const dbus_bool_t wide = value;
    return append(DBUS_TYPE_BOOLEAN, &wide);
}

Message &Message::number(uint32_t value) { return append(DBUS_TYPE_UINT32, &value); }

Message &Message::string(const std::string &value)
{
    const char *characters = value.c_str();
    return append(DBUS_TYPE_STRING, &characters);
}

Message &Message::objectPath(const std::string &value)
{
    const char *characters = value.c_str();
    return append(DBUS_TYPE_OBJECT_PATH, &characters);
}

Message &Message::strings(const std::vector<std::string> &values)
{
    DBusMessageIter end;
    DBusMessageIter array;
    dbus_message_iter_init_append(raw(), &end);
    dbus_message_iter_open_container(&end, DBUS_TYPE_ARRAY, DBUS_TYPE_STRING_AS_STRING, &array);
    for (const std::string &value : values) {
        const char *characters = value.c_str();
        dbus_message_iter_append_basic(&array, DBUS_TYPE_STRING, &characters);
    }
    dbus_message_iter_close_container(&end, &array);
    return *this;
}
