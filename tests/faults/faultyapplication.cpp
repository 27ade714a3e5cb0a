// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "faultyapplication.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <map>
#include <poll.h>
#include <stdexcept>
#include <unistd.h>

namespace {

constexpr auto hostName = "org.tarnwickle.voicecall";
constexpr auto servicePath = "/zelkovar/call/service";
constexpr auto objectManager = "org.freedesktop.DBus.ObjectManager";
constexpr auto callInterface = "zelkovar.Call.Call1";
constexpr auto audioInterface = "zelkovar.Call.AudioControl1";
constexpr const char *interfaceNames[] = {callInterface, "zelkovar.Call.DTMF1", audioInterface};
constexpr auto managerPath = "/bad";
constexpr auto callPath = "/bad/1";

constexpr std::size_t mebibyte = 1024 * 1024;
// How many messages of a flood go out between two looks at what has come in.
constexpr int batch = 64;

/** Opens a container for as long as it lives. */
class Container
{
public:
    Container(DBusMessageIter *outer, int type, const char *contents = nullptr) : m_outer(outer)
    {
        dbus_message_iter_open_container(outer, type, contents, &inner);
    }
    ~Container() { dbus_message_iter_close_container(m_outer, &inner); }
    Container(const Container &) = delete;
    Container &operator=(const Container &) = delete;

    DBusMessageIter inner;

private:
    DBusMessageIter *m_outer;
};

void appendText(DBusMessageIter *iterator, int type, const std::string &text)
{
    const char *data = text.c_str();
    dbus_message_iter_append_basic(iterator, type, &data);
}

template <typename Append>
void appendProperty(DBusMessageIter *properties, const char *name, const char *signature, Append append)
{
    Container entry(properties, DBUS_TYPE_DICT_ENTRY);
    appendText(&entry.inner, DBUS_TYPE_STRING, name);
    Container value(&entry.inner, DBUS_TYPE_VARIANT, signature);
    append(&value.inner);
}

void appendCallProperties(DBusMessageIter *properties, const std::string &path, dbus_uint32_t status)
{
    const dbus_bool_t yes = TRUE;
    const auto appendYes
        = [&](DBusMessageIter *value) { dbus_message_iter_append_basic(value, DBUS_TYPE_BOOLEAN, &yes); };
    appendProperty(properties, "Status", "u",
        [&](DBusMessageIter *value) { dbus_message_iter_append_basic(value, DBUS_TYPE_UINT32, &status); });
    appendProperty(properties, "Incoming", "b", appendYes);
    appendProperty(properties, "Holdable", "b", appendYes);
    appendProperty(
        properties, "Uri", "s", [&](DBusMessageIter *value) { appendText(value, DBUS_TYPE_STRING, "faulty:" + path); });
}

// The a{sa{sv}} of one call.
void appendInterfaces(DBusMessageIter *iterator, const std::string &path, dbus_uint32_t status, std::size_t padding)
{
    Container interfaces(iterator, DBUS_TYPE_ARRAY, "{sa{sv}}");
    for (const char *name : interfaceNames) {
        Container entry(&interfaces.inner, DBUS_TYPE_DICT_ENTRY);
        appendText(&entry.inner, DBUS_TYPE_STRING, name);
        Container properties(&entry.inner, DBUS_TYPE_ARRAY, "{sv}");
        if (name != callInterface)
            continue;
        appendCallProperties(&properties.inner, path, status);
        if (padding != 0) {
            appendProperty(&properties.inner, "RemoteName", "s",
                [&](DBusMessageIter *value) { appendText(value, DBUS_TYPE_STRING, std::string(padding, 'x')); });
        }
    }
}

bool isSnapshotRequest(DBusMessage *message) { return dbus_message_has_interface(message, objectManager); }

} // namespace

FaultyApplication::FaultyApplication()
{
    DBusError error = DBUS_ERROR_INIT;
    m_bus = dbus_bus_get(DBUS_BUS_SESSION, &error);
    if (!m_bus)
        throw std::runtime_error(error.message);
    dbus_connection_set_exit_on_disconnect(m_bus, FALSE);
    dbus_connection_add_filter(m_bus, &FaultyApplication::filter, this, nullptr);
}

int FaultyApplication::run()
{
    say(std::string("connected ") + dbus_bus_get_unique_name(m_bus));
    int socket = -1;
    dbus_connection_get_unix_fd(m_bus, &socket);
    while (!m_ended && dbus_connection_get_is_connected(m_bus)) {
        pollfd watched[] = {{STDIN_FILENO, POLLIN, 0}, {socket, POLLIN, 0}};
        poll(watched, 2, -1);
        if (watched[1].revents != 0)
            pump();
        if (watched[0].revents != 0)
            readCommands();
    }
    return 0;
}

void FaultyApplication::say(const std::string &line) const
{
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

void FaultyApplication::readCommands()
{
    char buffer[4096];
    const ssize_t length = read(STDIN_FILENO, buffer, sizeof buffer);
    m_ended = length <= 0;
    m_input.append(buffer, std::size_t(length > 0 ? length : 0));
    for (std::size_t end = m_input.find('\n'); end != std::string::npos; end = m_input.find('\n')) {
        const std::string line = m_input.substr(0, end);
        m_input.erase(0, end + 1);
        obey(line);
    }
}

void FaultyApplication::obey(const std::string &line)
{
    std::istringstream words(line);
    std::string command;
    std::string first;
    unsigned number = 0;
    std::size_t size = 0;
    words >> command >> first >> number >> size;

    const std::map<std::string, std::function<void()>> commands = {
        {"register", [&] { registerAt(first); }},
        {"object", [&] { m_objects.emplace_back(first, number); }},
        {"announce", [&] { announce(first, number); }},
        {"withdraw", [&] { withdraw(first); }},
        {"status", [&] { changeStatus(first, number); }},
        {"snapshot", [&] { m_snapshotHow = first; }},
        {"commands", [&] { m_commandsHow = first; }},
        {"release", [&] { release(); }},
        {"unsolicited", [&] { sendUnsolicited(); }},
        {"flood", [&] { flood(first, int(number), size); }},
        {"large", [&] { sendLarge(first, number); }},
        {"descriptors", [&] { sendDescriptors(std::stoi(first)); }},
        {"stop", [] { raise(SIGSTOP); }},
        {"die", [] { raise(SIGKILL); }},
    };
    const auto found = commands.find(command);
    if (found == commands.end())
        throw std::runtime_error("'" + line + "': there is no such command");
    found->second();
    flush();
    say("done " + command);
}

// --- The bus

dbus_uint32_t FaultyApplication::send(const Message &message)
{
    dbus_uint32_t serial = 0;
    dbus_connection_send(m_bus, message.get(), &serial);
    return serial;
}

void FaultyApplication::flush() { dbus_connection_flush(m_bus); }

void FaultyApplication::pump()
{
    dbus_connection_read_write(m_bus, 0);
    while (dbus_connection_dispatch(m_bus) == DBUS_DISPATCH_DATA_REMAINS) { }
    flush();
}

DBusHandlerResult FaultyApplication::filter(DBusConnection *, DBusMessage *message, void *self)
{
    static_cast<FaultyApplication *>(self)->receive(message);
    return DBUS_HANDLER_RESULT_HANDLED;
}

void FaultyApplication::receive(DBusMessage *message)
{
    const int type = dbus_message_get_type(message);
    if (type == DBUS_MESSAGE_TYPE_METHOD_RETURN || type == DBUS_MESSAGE_TYPE_ERROR)
        takeReply(message);
    if (type != DBUS_MESSAGE_TYPE_METHOD_CALL)
        return;
    const bool isSnapshot = isSnapshotRequest(message);
    // Nobody waits for these lines in a flood.
    if (!m_isFlooding && m_unanswered.empty())
        say(isSnapshot ? std::string("asked") : std::string("command ") + dbus_message_get_member(message));
    answer(message, isSnapshot ? m_snapshotHow : m_commandsHow);
}

void FaultyApplication::takeReply(DBusMessage *reply)
{
    const dbus_uint32_t serial = dbus_message_get_reply_serial(reply);
    if (m_registration != 0 && serial == m_registration) {
        m_registration = 0;
        say("registered " + m_registering);
    }
    if (m_unanswered.erase(serial) == 1 && m_unanswered.empty() && !m_isFlooding)
        say("answered");
}

FaultyApplication::Message FaultyApplication::properReply(DBusMessage *call) const
{
    Message reply(dbus_message_new_method_return(call));
    if (!isSnapshotRequest(call))
        return reply;
    DBusMessageIter body;
    dbus_message_iter_init_append(reply.get(), &body);
    Container objects(&body, DBUS_TYPE_ARRAY, "{oa{sa{sv}}}");
    for (const auto &object : m_objects) {
        Container entry(&objects.inner, DBUS_TYPE_DICT_ENTRY);
        appendText(&entry.inner, DBUS_TYPE_OBJECT_PATH, object.first);
        appendInterfaces(&entry.inner, object.first, object.second, 0);
    }
    return reply;
}

// An array of arrays of structures with a variant: of no type that anybody asked for.
FaultyApplication::Message FaultyApplication::wrongReply(DBusMessage *call) const
{
    Message reply(dbus_message_new_method_return(call));
    DBusMessageIter body;
    dbus_message_iter_init_append(reply.get(), &body);
    Container outer(&body, DBUS_TYPE_ARRAY, "a(iv)");
    Container inner(&outer.inner, DBUS_TYPE_ARRAY, "(iv)");
    Container structure(&inner.inner, DBUS_TYPE_STRUCT);
    const dbus_int32_t number = 5;
    dbus_message_iter_append_basic(&structure.inner, DBUS_TYPE_INT32, &number);
    Container value(&structure.inner, DBUS_TYPE_VARIANT, "i");
    dbus_message_iter_append_basic(&value.inner, DBUS_TYPE_INT32, &number);
    return reply;
}

void FaultyApplication::answer(DBusMessage *call, const std::string &how)
{
    const std::map<std::string, std::function<void()>> ways = {
        {"now", [&] { send(properReply(call)); }},
        {"hold", [&] { m_held.emplace_back(dbus_message_ref(call)); }},
        {"error", [&] { send(Message(dbus_message_new_error(call, "org.example.Error.No", "no"))); }},
        {"wrong", [&] { send(wrongReply(call)); }},
        {"twice",
            [&] {
                send(properReply(call));
                send(properReply(call));
            }},
    };
    ways.at(how)();
}

void FaultyApplication::release()
{
    for (const Message &call : m_held)
        answer(call.get(), "now");
    m_held.clear();
}

void FaultyApplication::sendUnsolicited()
{
    for (dbus_uint32_t serial = 1; serial <= 500; ++serial) {
        const Message reply(dbus_message_new(DBUS_MESSAGE_TYPE_METHOD_RETURN));
        dbus_message_set_destination(reply.get(), hostName);
        dbus_message_set_reply_serial(reply.get(), serial);
        send(reply);
    }
}

// --- What an application sends

static DBusMessage *serviceCall(const char *member)
{
    return dbus_message_new_method_call(hostName, servicePath, "zelkovar.Call.Service1", member);
}

static DBusMessage *registration(const std::string &path)
{
    DBusMessage *call = serviceCall("RegisterCallManager");
    const char *text = path.c_str();
    dbus_message_append_args(call, DBUS_TYPE_OBJECT_PATH, &text, DBUS_TYPE_INVALID);
    return call;
}

void FaultyApplication::registerAt(const std::string &path)
{
    m_registering = path;
    m_registration = send(Message(registration(path)));
}

static DBusMessage *announcement(
    const std::string &path, const std::string &address, dbus_uint32_t status, std::size_t padding)
{
    DBusMessage *signal = dbus_message_new_signal(managerPath, objectManager, "InterfacesAdded");
    DBusMessageIter body;
    dbus_message_iter_init_append(signal, &body);
    appendText(&body, DBUS_TYPE_OBJECT_PATH, path);
    appendInterfaces(&body, address, status, padding);
    return signal;
}

void FaultyApplication::announce(const std::string &path, dbus_uint32_t status, std::size_t padding)
{
    send(Message(announcement(path, path, status, padding)));
}

static DBusMessage *bogusCall(std::size_t padding)
{
    DBusMessage *call = serviceCall("Bogus");
    DBusMessageIter body;
    dbus_message_iter_init_append(call, &body);
    appendText(&body, DBUS_TYPE_STRING, std::string(padding, 'x'));
    return call;
}

static std::string longPath(std::size_t length, int number = 0)
{
    return "/bad/" + std::to_string(number) + '/' + std::string(length, 'x');
}

static std::size_t sizeOf(DBusMessage *message)
{
    char *bytes = nullptr;
    int size = 0;
    dbus_message_marshal(message, &bytes, &size);
    dbus_free(bytes);
    return std::size_t(size);
}

void FaultyApplication::sendLarge(const std::string &kind, std::size_t size)
{
    const std::map<std::string, std::function<DBusMessage *(std::size_t)>> kinds = {
        {"announcement",
            [](std::size_t padding) {
                // An array, other than a message, has no room for more.
                const std::size_t name = std::min(padding, 60 * mebibyte);
                return announcement("/bad/" + std::string(padding - name + 1, 'x'), "large", 3, name);
            }},
        {"call", bogusCall},
        {"registration", [](std::size_t padding) { return registration(longPath(padding)); }},
    };
    const auto make = kinds.at(kind);
    std::size_t padding = size - sizeOf(Message(make(1)).get());
    Message message(make(padding));
    // Parts are filled up to multiples of eight bytes.
    while (sizeOf(message.get()) > size)
        message.reset(make(--padding));
    send(message);
}

void FaultyApplication::withdraw(const std::string &path)
{
    const Message signal(dbus_message_new_signal(managerPath, objectManager, "InterfacesRemoved"));
    DBusMessageIter body;
    dbus_message_iter_init_append(signal.get(), &body);
    appendText(&body, DBUS_TYPE_OBJECT_PATH, path);
    {
        Container names(&body, DBUS_TYPE_ARRAY, "s");
        for (const char *name : interfaceNames)
            appendText(&names.inner, DBUS_TYPE_STRING, name);
    }
    send(signal);
}

void FaultyApplication::changeStatus(const std::string &path, dbus_uint32_t status)
{
    const Message signal(dbus_message_new_signal(path.c_str(), callInterface, "StatusChanged"));
    dbus_message_append_args(signal.get(), DBUS_TYPE_UINT32, &status, DBUS_TYPE_INVALID);
    send(signal);
}

// A call with so many descriptors of one file in a property.
void FaultyApplication::sendDescriptors(int count)
{
    const Message signal(dbus_message_new_signal(managerPath, objectManager, "InterfacesAdded"));
    DBusMessageIter body;
    dbus_message_iter_init_append(signal.get(), &body);
    appendText(&body, DBUS_TYPE_OBJECT_PATH, "/bad/descriptors");
    {
        Container interfaces(&body, DBUS_TYPE_ARRAY, "{sa{sv}}");
        Container entry(&interfaces.inner, DBUS_TYPE_DICT_ENTRY);
        appendText(&entry.inner, DBUS_TYPE_STRING, callInterface);
        Container properties(&entry.inner, DBUS_TYPE_ARRAY, "{sv}");
        const int file = STDIN_FILENO;
        for (int i = 0; i < count; ++i) {
            appendProperty(&properties.inner, ("File" + std::to_string(i)).c_str(), "h",
                [&](DBusMessageIter *value) { dbus_message_iter_append_basic(value, DBUS_TYPE_UNIX_FD, &file); });
        }
    }
    send(signal);
}

// --- Floods

void FaultyApplication::requestMute(bool mute)
{
    const Message signal(dbus_message_new_signal(callPath, audioInterface, "RequestMute"));
    const dbus_bool_t value = mute;
    dbus_message_append_args(signal.get(), DBUS_TYPE_BOOLEAN, &value, DBUS_TYPE_INVALID);
    send(signal);
}

void FaultyApplication::requestRoute(const std::string &device)
{
    const Message signal(dbus_message_new_signal(callPath, audioInterface, "RequestAudioRoute"));
    const char *text = device.c_str();
    dbus_message_append_args(signal.get(), DBUS_TYPE_STRING, &text, DBUS_TYPE_STRING, &text, DBUS_TYPE_INVALID);
    send(signal);
}

std::function<void(int)> FaultyApplication::floodOf(const std::string &kind, std::size_t size)
{
    const auto await = [this](DBusMessage *call) { m_unanswered.insert(send(Message(call))); };
    const auto flooded = [](int number) { return "/bad/flood" + std::to_string(number); };
    const std::map<std::string, std::function<void(int)>> kinds = {
        {"status", [=](int number) { changeStatus(callPath, number % 2 == 0 ? 5 : 7); }},
        {"announcements",
            [=](int number) {
                announce(flooded(number), 3);
                withdraw(flooded(number));
            }},
        {"calls", [=](int number) { announce(flooded(number), 3); }},
        {"registrations", [=](int number) { await(registration("/bad/m" + std::to_string(number))); }},
        {"duplicates", [=](int) { await(registration(managerPath)); }},
        {"bogus", [=](int number) { await(serviceCall(("Bogus" + std::to_string(number)).c_str())); }},
        {"mebibytes", [=](int) { announce(callPath, 3, mebibyte); }},
        {"mutes", [=](int number) { requestMute(number % 2 == 0); }},
        {"paths", [=](int number) { await(registration(longPath(size, number))); }},
        {"names", [=](int number) { announce(flooded(number), 3, size); }},
        {"routes", [=](int) { requestRoute(std::string(size, 'x')); }},
    };
    return kinds.at(kind);
}

void FaultyApplication::flood(const std::string &kind, int count, std::size_t size)
{
    const std::function<void(int)> sendOne = floodOf(kind, size);
    m_isFlooding = true;
    for (int number = 0; number < count; ++number) {
        sendOne(number);
        if (kind == "mebibytes" || number % batch == batch - 1)
            pump();
    }
    flush();
    m_isFlooding = false;
    say("flooded " + kind);
    if (m_unanswered.empty())
        say("answered");
}
