// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "buspeer.h"

#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <unistd.h>

BusMessage busMessage(DBusMessage *message) { return {message, dbus_message_unref}; }

static void closeAndDrop(DBusConnection *connection)
{
    dbus_connection_close(connection);
    dbus_connection_unref(connection);
}

static std::string takeText(DBusError &error)
{
    const std::string text = dbus_error_is_set(&error) ? error.message : "no answer";
    dbus_error_free(&error);
    return text;
}

BusPeer::BusPeer() : m_connection(nullptr, closeAndDrop)
{
    DBusError error = DBUS_ERROR_INIT;
    const char *address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    m_connection.reset(dbus_connection_open_private(address ? address : "", &error));
    if (!m_connection)
        throw std::runtime_error("cannot connect to the session bus: " + takeText(error));
    dbus_connection_set_exit_on_disconnect(m_connection.get(), false);
    if (!dbus_bus_register(m_connection.get(), &error))
        throw std::runtime_error("the session bus refuses the connection: " + takeText(error));
    m_name = dbus_bus_get_unique_name(m_connection.get());
}

unsigned BusPeer::send(DBusMessage *message)
{
    dbus_uint32_t serial = 0;
    dbus_connection_send(m_connection.get(), message, &serial);
    dbus_connection_flush(m_connection.get());
    return serial;
}

void BusPeer::sendHalf(DBusMessage *message)
{
    dbus_connection_flush(m_connection.get());
    // Only one that is sent gets a serial number, without which it is none.
    dbus_message_set_serial(message, UINT32_MAX);
    char *bytes = nullptr;
    int size = 0;
    int socket = -1;
    if (!dbus_message_marshal(message, &bytes, &size) || !dbus_connection_get_unix_fd(m_connection.get(), &socket))
        throw std::runtime_error("half a message cannot be sent");
    const ssize_t written = write(socket, bytes, std::size_t(size) / 2);
    dbus_free(bytes);
    if (written != size / 2)
        throw std::runtime_error("half a message could not be sent");
}

ArgumentWriter &ArgumentWriter::basic(int type, const void *value)
{
    dbus_message_iter_append_basic(&m_iterator, type, value);
    return *this;
}

ArgumentWriter &ArgumentWriter::string(const std::string &text)
{
    const char *value = text.c_str();
    return basic(DBUS_TYPE_STRING, &value);
}

ArgumentWriter &ArgumentWriter::path(const std::string &text)
{
    const char *value = text.c_str();
    return basic(DBUS_TYPE_OBJECT_PATH, &value);
}

ArgumentWriter &ArgumentWriter::number(unsigned number)
{
    const dbus_uint32_t value = number;
    return basic(DBUS_TYPE_UINT32, &value);
}

ArgumentWriter &ArgumentWriter::signedNumber(int number)
{
    const dbus_int32_t value = number;
    return basic(DBUS_TYPE_INT32, &value);
}

ArgumentWriter &ArgumentWriter::boolean(bool value)
{
    const dbus_bool_t wide = value;
    return basic(DBUS_TYPE_BOOLEAN, &wide);
}

ArgumentWriter &ArgumentWriter::container(int type, const char *signature, const Content &content)
{
    ArgumentWriter inner;
    dbus_message_iter_open_container(&m_iterator, type, signature, &inner.m_iterator);
    content(inner);
    dbus_message_iter_close_container(&m_iterator, &inner.m_iterator);
    return *this;
}

ArgumentWriter &ArgumentWriter::strings(const std::vector<std::string> &texts)
{
    return container(DBUS_TYPE_ARRAY, "s", [&](ArgumentWriter &array) {
        for (const std::string &text : texts)
            array.string(text);
    });
}

ArgumentWriter &ArgumentWriter::properties(const Properties &properties)
{
    return container(DBUS_TYPE_ARRAY, "{sv}", [&](ArgumentWriter &array) {
        for (const auto &property : properties)
            array.container(DBUS_TYPE_DICT_ENTRY, nullptr,
                [&](ArgumentWriter &entry) { entry.string(property.first).value(*property.second); });
    });
}

ArgumentWriter &ArgumentWriter::interfaces(const Interfaces &interfaces)
{
    return container(DBUS_TYPE_ARRAY, "{sa{sv}}", [&](ArgumentWriter &array) {
        for (const InterfaceReport &report : interfaces)
            array.container(DBUS_TYPE_DICT_ENTRY, nullptr,
                [&](ArgumentWriter &entry) { entry.string(report.name).properties(report.properties); });
    });
}

ArgumentWriter &ArgumentWriter::objects(const std::vector<ObjectReport> &objects)
{
    return container(DBUS_TYPE_ARRAY, "{oa{sa{sv}}}", [&](ArgumentWriter &array) {
        for (const ObjectReport &object : objects)
            array.container(DBUS_TYPE_DICT_ENTRY, nullptr,
                [&](ArgumentWriter &entry) { entry.path(object.path).interfaces(object.interfaces); });
    });
}

ArgumentWriter &ArgumentWriter::numeric(char type, double number)
{
    DBusBasicValue value;
    switch (type) {
    case DBUS_TYPE_BYTE:
        value.byt = static_cast<unsigned char>(number);
        break;
    case DBUS_TYPE_BOOLEAN:
        value.bool_val = number != 0;
        break;
    case DBUS_TYPE_INT16:
        value.i16 = dbus_int16_t(number);
        break;
    case DBUS_TYPE_UINT16:
        value.u16 = dbus_uint16_t(number);
        break;
    case DBUS_TYPE_INT32:
        value.i32 = dbus_int32_t(number);
        break;
    case DBUS_TYPE_UINT32:
        value.u32 = dbus_uint32_t(number);
        break;
    case DBUS_TYPE_INT64:
        value.i64 = dbus_int64_t(number);
        break;
    case DBUS_TYPE_UINT64:
        value.u64 = dbus_uint64_t(number);
        break;
    default:
        value.dbl = number;
    }
    return basic(type, &value);
}

static std::vector<std::string> partedByCommas(const std::string &text)
{
    std::istringstream in(text);
    std::vector<std::string> parts;
    for (std::string part; std::getline(in, part, ',');)
        parts.push_back(part);
    return parts;
}

ArgumentWriter &ArgumentWriter::value(const PropertyValue &value)
{
    const std::string signature = value.signature;
    return container(DBUS_TYPE_VARIANT, value.signature, [&](ArgumentWriter &inner) {
        const Content number = [&](ArgumentWriter &writer) { writer.numeric(signature[1], value.number); };
        if (signature == "as") {
            inner.strings(partedByCommas(value.string));
        } else if (signature == "ay" || signature == "ai") {
            inner.container(DBUS_TYPE_ARRAY, &value.signature[1], number);
        } else if (signature == "(u)") {
            inner.container(DBUS_TYPE_STRUCT, nullptr, number);
        } else if (signature == "a{sv}") {
            const PropertyValue content{"", "u", value.number, "", false, 0, ""};
            inner.container(DBUS_TYPE_ARRAY, "{sv}", [&](ArgumentWriter &array) {
                array.container(DBUS_TYPE_DICT_ENTRY, nullptr,
                    [&](ArgumentWriter &entry) { entry.string(value.string).value(content); });
            });
        } else if (signature == "v") {
            const bool nested = *value.string != '\0';
            inner.value({"", nested ? "v" : "u", value.number, "", false, 0, ""});
        } else if (signature == "s" || signature == "o" || signature == "g") {
            const char *text = value.string;
            inner.basic(signature[0], &text);
        } else {
            inner.numeric(signature[0], value.number);
        }
    });
}
