// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "hostclient.h"

const std::string HostClient::name = "org.tarnwickle.voicecall";
const std::string HostClient::root = "/org/tarnwickle/voicecall";

static const std::string prefix = HostClient::name + '.';
static constexpr auto extraDevice = "dock";

// Finds the entry of this name in a dictionary that the iterator stands before; then it stands before the value.
static bool enterEntry(DBusMessageIter *iterator, const std::string &name)
{
    DBusMessageIter entry;
    for (dbus_message_iter_recurse(iterator, &entry); dbus_message_iter_get_arg_type(&entry) != DBUS_TYPE_INVALID;
         dbus_message_iter_next(&entry)) {
        DBusMessageIter inside;
        dbus_message_iter_recurse(&entry, &inside);
        const char *key = nullptr;
        dbus_message_iter_get_basic(&inside, &key);
        if (name == key) {
            dbus_message_iter_next(&inside);
            *iterator = inside;
            return true;
        }
    }
    return false;
}

// The value in the variant that the iterator stands before.
static std::string textIn(DBusMessageIter *iterator)
{
    DBusMessageIter value;
    dbus_message_iter_recurse(iterator, &value);
    const char *text = nullptr;
    dbus_message_iter_get_basic(&value, &text);
    return text;
}

static int numberIn(DBusMessageIter *iterator)
{
    DBusMessageIter value;
    dbus_message_iter_recurse(iterator, &value);
    dbus_int32_t number = 0;
    dbus_message_iter_get_basic(&value, &number);
    return number;
}

static std::string firstPathIn(const Message &message)
{
    const char *path = nullptr;
    dbus_message_get_args(message.raw(), nullptr, DBUS_TYPE_OBJECT_PATH, &path, DBUS_TYPE_INVALID);
    return path ? path : "";
}

HostClient::HostClient(const std::string &address) : m_bus(address)
{
    m_bus.call(Message::call({DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS}, "AddMatch")
                   .string("type='signal',sender='" + name + "',path_namespace='" + root + "'"));
}

void HostClient::pump()
{
    m_bus.pump([this](const Message &message) { handle(message); });
}

void HostClient::handle(const Message &message)
{
    if (message.member() == "InterfacesAdded")
        handleShown(message);
    else if (message.member() == "InterfacesRemoved")
        handleGone(message);
    else if (message.member() == "PropertiesChanged")
        handleChanged(message);
}

// "oa{sa{sv}}"
void HostClient::handleShown(const Message &message)
{
    const std::string path = firstPathIn(message);
    DBusMessageIter iterator;
    dbus_message_iter_init(message.raw(), &iterator);
    dbus_message_iter_next(&iterator);
    if (!enterEntry(&iterator, prefix + "Call1"))
        return;
    DBusMessageIter status = iterator;
    if (!enterEntry(&iterator, "Uri") || !enterEntry(&status, "Status"))
        return;
    const std::string uri = m_uris[path] = textIn(&iterator);
    onStatus(uri, numberIn(&status));
    onShown(uri, path);
}

// "sa{sv}as"
void HostClient::handleChanged(const Message &message)
{
    const auto known = m_uris.find(message.path());
    DBusMessageIter iterator;
    dbus_message_iter_init(message.raw(), &iterator);
    dbus_message_iter_next(&iterator);
    if (known != m_uris.end() && enterEntry(&iterator, "Status"))
        onStatus(known->second, numberIn(&iterator));
}

void HostClient::handleGone(const Message &message)
{
    const auto known = m_uris.find(firstPathIn(message));
    if (known == m_uris.end())
        return;
    const std::string uri = known->second;
    m_uris.erase(known);
    onGone(uri);
}

void HostClient::command(const std::string &hostPath, const std::string &command)
{
    const Target call = {name, hostPath, prefix + "Call1"};
    if (command == "Hold" || command == "Resume")
        m_bus.send(Message::call(call, "Hold").boolean(command == "Hold"));
    else if (command == "SendDtmf")
        m_bus.send(Message::call(call, "SendDtmf").string("12#"));
    else
        m_bus.send(Message::call(call, command.c_str()));
}

void HostClient::ask(const std::string &interface, const char *member, const std::string &argument)
{
    m_bus.send(Message::call({name, root, prefix + interface}, member).string(argument));
}

void HostClient::setMuted(bool muted)
{
    m_bus.send(Message::call({name, root, prefix + "Audio1"}, "SetMicrophoneMuted").boolean(muted));
}

void HostClient::addDevice()
{
    const Message message = Message::call({name, root, prefix + "FakeAudio1"}, "AddDevice");
    DBusMessageIter end;
    DBusMessageIter device;
    DBusMessageIter properties;
    const char *id = extraDevice;
    const dbus_int32_t type = 2; // speaker
    const dbus_bool_t isInput = false;
    const dbus_bool_t isOutput = true;
    dbus_message_iter_init_append(message.raw(), &end);
    dbus_message_iter_open_container(&end, DBUS_TYPE_STRUCT, nullptr, &device);
    dbus_message_iter_append_basic(&device, DBUS_TYPE_STRING, &id);
    dbus_message_iter_append_basic(&device, DBUS_TYPE_INT32, &type);
    dbus_message_iter_append_basic(&device, DBUS_TYPE_BOOLEAN, &isInput);
    dbus_message_iter_append_basic(&device, DBUS_TYPE_BOOLEAN, &isOutput);
    dbus_message_iter_append_basic(&device, DBUS_TYPE_STRING, &id);
    dbus_message_iter_open_container(&device, DBUS_TYPE_ARRAY, "{sv}", &properties);
    dbus_message_iter_close_container(&device, &properties);
    dbus_message_iter_close_container(&end, &device);
    m_bus.send(message);
}

// Each ends as it began.
void HostClient::changeAudio()
{
    switch (m_audioChanges++ % 3) {
    case 0:
        addDevice();
        ask("FakeAudio1", "RemoveDevice", extraDevice);
        break;
    case 1:
        ask("Audio1", "SelectOutputDevice", "speaker");
        ask("Audio1", "SelectOutputDevice", "earpiece");
        break;
    default:
        setMuted(true);
        setMuted(false);
    }
}
