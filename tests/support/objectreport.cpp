// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "objectreport.h"

namespace {

// A container is open as long as this lives.
class Container
{
public:
    Container(DBusMessageIter *parent, int type, const char *signature) : m_parent(parent)
    {
        dbus_message_iter_open_container(parent, type, signature, &m_inside);
    }
    ~Container() { dbus_message_iter_close_container(m_parent, &m_inside); }
    Container(const Container &) = delete;
    Container &operator=(const Container &) = delete;

    DBusMessageIter *inside() { return &m_inside; }

private:
    DBusMessageIter *m_parent;
    DBusMessageIter m_inside;
};

void appendText(DBusMessageIter *iterator, int type, const std::string &text)
{
    const char *characters = text.c_str();
    dbus_message_iter_append_basic(iterator, type, &characters);
}

struct AppendVariant
{
    DBusMessageIter *iterator;

    void operator()(bool value) const
    {
        const dbus_bool_t wide = value;
        Container variant(iterator, DBUS_TYPE_VARIANT, "b");
        dbus_message_iter_append_basic(variant.inside(), DBUS_TYPE_BOOLEAN, &wide);
    }
    void operator()(uint32_t value) const
    {
        Container variant(iterator, DBUS_TYPE_VARIANT, "u");
        dbus_message_iter_append_basic(variant.inside(), DBUS_TYPE_UINT32, &value);
    }
    void operator()(const std::string &value) const
    {
        Container variant(iterator, DBUS_TYPE_VARIANT, "s");
        appendText(variant.inside(), DBUS_TYPE_STRING, value);
    }
};

void appendProperties(DBusMessageIter *iterator, const std::map<std::string, ObjectReport::Value> &properties)
{
    Container array(iterator, DBUS_TYPE_ARRAY, "{sv}");
    for (const auto &[name, value] : properties) {
        Container entry(array.inside(), DBUS_TYPE_DICT_ENTRY, nullptr);
        appendText(entry.inside(), DBUS_TYPE_STRING, name);
        std::visit(AppendVariant{entry.inside()}, value);
    }
}

} // namespace

void ObjectReport::appendTo(DBusMessageIter *iterator) const
{
    appendText(iterator, DBUS_TYPE_OBJECT_PATH, path);
    Container array(iterator, DBUS_TYPE_ARRAY, "{sa{sv}}");
    for (const std::string &interface : interfaces) {
        const bool isFirst = &interface == &interfaces.front();
        Container entry(array.inside(), DBUS_TYPE_DICT_ENTRY, nullptr);
        appendText(entry.inside(), DBUS_TYPE_STRING, interface);
        appendProperties(entry.inside(), isFirst ? properties : std::map<std::string, Value>());
    }
}

void appendObjects(DBusMessage *message, const std::vector<ObjectReport> &objects)
{
    DBusMessageIter iterator;
    dbus_message_iter_init_append(message, &iterator);
    Container array(&iterator, DBUS_TYPE_ARRAY, "{oa{sa{sv}}}");
    for (const ObjectReport &object : objects) {
        Container entry(array.inside(), DBUS_TYPE_DICT_ENTRY, nullptr);
        object.appendTo(entry.inside());
    }
}
