// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "stubbus.h"

#include "finding.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace {

constexpr const char *daemonName = "org.freedesktop.DBus";

// What the client reads to learn which signals there are.
constexpr const char *introspection = R"(<!DOCTYPE node PUBLIC "-//freedesktop//DTD D-BUS Object Introspection 1.0//EN"
"http://www.freedesktop.org/standards/dbus/1.0/introspect.dtd">
<node>
  <interface name="org.freedesktop.DBus">
    <signal name="NameOwnerChanged"><arg type="s"/><arg type="s"/><arg type="s"/></signal>
    <signal name="NameLost"><arg type="s"/></signal>
    <signal name="NameAcquired"><arg type="s"/></signal>
  </interface>
</node>
)";

constexpr struct
{
    unsigned watch;
    short poll;
} pollEvents[] = {{DBUS_WATCH_READABLE, POLLIN}, {DBUS_WATCH_WRITABLE, POLLOUT}, {DBUS_WATCH_ERROR, POLLERR},
    {DBUS_WATCH_HANGUP, POLLHUP}};

short pollEventsOf(unsigned watchFlags)
{
    int events = 0;
    for (const auto &event : pollEvents)
        events |= watchFlags & event.watch ? event.poll : 0;
    return short(events);
}

unsigned watchFlagsOf(short events)
{
    unsigned flags = 0;
    for (const auto &event : pollEvents)
        flags |= events & event.poll ? event.watch : 0;
    return flags;
}

using Watches = std::vector<DBusWatch *>;

dbus_bool_t addWatch(DBusWatch *watch, void *watches)
{
    static_cast<Watches *>(watches)->push_back(watch);
    return TRUE;
}

void removeWatch(DBusWatch *watch, void *data)
{
    auto &watches = *static_cast<Watches *>(data);
    watches.erase(std::find(watches.begin(), watches.end(), watch));
}

std::string firstText(DBusMessage *message)
{
    const char *value = nullptr;
    dbus_message_get_args(message, nullptr, DBUS_TYPE_STRING, &value, DBUS_TYPE_INVALID);
    return text(value);
}

} // namespace

StubBus::StubBus(std::function<void()> onReply) : m_onReply(std::move(onReply)), m_wake(eventfd(0, EFD_CLOEXEC))
{
    dbus_threads_init_default();
    m_server = dbus_server_listen("unix:tmpdir=/tmp", nullptr);
    if (!m_server)
        throw std::runtime_error("cannot listen in /tmp");
    const char *mechanisms[] = {"EXTERNAL", nullptr};
    dbus_server_set_auth_mechanisms(m_server, mechanisms);
    dbus_server_set_watch_functions(m_server, addWatch, removeWatch, nullptr, &m_watches, nullptr);
    dbus_server_set_new_connection_function(
        m_server,
        [](DBusServer *, DBusConnection *connection, void *bus) { static_cast<StubBus *>(bus)->accept(connection); },
        this, nullptr);
    m_thread = std::thread([this] { run(); });
}

StubBus::~StubBus()
{
    m_stopped = true;
    post([] {});
    m_thread.join();
    if (m_connection) {
        dbus_connection_set_watch_functions(m_connection, nullptr, nullptr, nullptr, nullptr, nullptr);
        dbus_connection_close(m_connection);
        dbus_connection_unref(m_connection);
    }
    dbus_server_disconnect(m_server);
    dbus_server_unref(m_server);
    close(m_wake);
}

std::string StubBus::address() const
{
    char *address = dbus_server_get_address(m_server);
    std::string copy = address;
    dbus_free(address);
    return copy;
}

// --- For other threads

std::string StubBus::join()
{
    const std::string name = ":1." + std::to_string(++m_lastName);
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_names.insert(name);
    return name;
}

void StubBus::leave(const std::string &name)
{
    post([=] { remove(name); });
}

void StubBus::announceOwner(const std::string &name, const std::string &before, const std::string &after)
{
    post([=] { sendOwner(name, before, after); });
}

void StubBus::send(const std::string &sender, Message message)
{
    post([=, message = std::shared_ptr<DBusMessage>(std::move(message))] { deliver(sender, message.get()); });
}

unsigned StubBus::call(const std::string &sender, Message message)
{
    const unsigned ticket = ++m_lastTicket;
    post([=, message = std::shared_ptr<DBusMessage>(std::move(message))] {
        deliver(sender, message.get());
        m_tickets[dbus_message_get_serial(message.get())] = ticket;
    });
    return ticket;
}

Message StubBus::reply(unsigned ticket)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_replies.find(ticket);
    if (found == m_replies.end())
        return nullptr;
    Message reply = std::move(found->second);
    m_replies.erase(found);
    return reply;
}

Message StubBus::takeRequest(const std::string &name)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::deque<Message> &requests = m_requests[name];
    if (requests.empty())
        return nullptr;
    Message request = std::move(requests.front());
    requests.pop_front();
    return request;
}

void StubBus::distort(Query query, Answer answer)
{
    post([=] { m_distorted[query] = answer; });
}

std::multiset<std::string> StubBus::matchRules()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_rules;
}

void StubBus::forget()
{
    post([this] {
        m_ledger.clear();
        m_distorted.clear();
        m_unanswered.clear();
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_requests.clear();
    });
}

void StubBus::post(Task task)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_tasks.push_back(std::move(task));
    }
    eventfd_write(m_wake, 1);
}

// --- On the bus's thread

void StubBus::run()
{
    while (!m_stopped)
        pollOnce();
}

void StubBus::pollOnce()
{
    std::vector<pollfd> descriptors{{m_wake, POLLIN, 0}};
    std::vector<DBusWatch *> polled;
    for (DBusWatch *watch : m_watches) {
        if (!dbus_watch_get_enabled(watch))
            continue;
        descriptors.push_back({dbus_watch_get_unix_fd(watch), pollEventsOf(dbus_watch_get_flags(watch)), 0});
        polled.push_back(watch);
    }
    if (poll(descriptors.data(), descriptors.size(), -1) < 0 && errno != EINTR)
        reportFinding("the stub bus cannot wait for its client");

    for (std::size_t i = 0; i < polled.size(); ++i) {
        const short events = descriptors[i + 1].revents;
        const bool isThere = std::find(m_watches.begin(), m_watches.end(), polled[i]) != m_watches.end();
        if (events != 0 && isThere)
            dbus_watch_handle(polled[i], watchFlagsOf(events));
    }
    while (m_connection && dbus_connection_dispatch(m_connection) == DBUS_DISPATCH_DATA_REMAINS)
        continue;
    if (descriptors.front().revents != 0)
        runTasks();
}

void StubBus::runTasks()
{
    eventfd_t count = 0;
    eventfd_read(m_wake, &count);
    std::deque<Task> tasks;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        tasks.swap(m_tasks);
    }
    for (const Task &task : tasks)
        task();
}

void StubBus::accept(DBusConnection *connection)
{
    m_connection = dbus_connection_ref(connection);
    dbus_connection_set_route_peer_messages(connection, TRUE);
    dbus_connection_set_watch_functions(connection, addWatch, removeWatch, nullptr, &m_watches, nullptr);
    dbus_connection_add_filter(
        connection,
        [](DBusConnection *, DBusMessage *message, void *bus) { return static_cast<StubBus *>(bus)->receive(message); },
        this, nullptr);
}

void StubBus::deliver(const std::string &sender, DBusMessage *message)
{
    // As the bus does with whoever sends to the reserved path.
    if (dbus_message_has_path(message, DBUS_PATH_LOCAL))
        remove(sender);
    if (sender != daemonName && !isPresent(sender))
        return;
    dbus_message_set_sender(message, sender.c_str());
    forgetCall(message);
    dbus_uint32_t serial = 0;
    dbus_connection_send(m_connection, message, &serial);
    m_ledger.note(message);
    if (m_isTraced)
        std::printf("%s > %s\n", sender.c_str(), describe(message).c_str());
    m_lastDelivered = shared(message);
}

DBusHandlerResult StubBus::receive(DBusMessage *message)
{
    if (dbus_message_is_signal(message, DBUS_INTERFACE_LOCAL, "Disconnected")) {
        if (!m_stopped)
            reportFinding(
                "the host is off the bus, or has sent what no bus takes, after " + describe(m_lastDelivered.get()));
        return DBUS_HANDLER_RESULT_HANDLED;
    }
    dbus_message_set_sender(message, clientName());
    if (m_isTraced)
        std::printf("host > %s\n", describe(message).c_str());
    if (dbus_message_has_destination(message, daemonName)) {
        answerAsDaemon(message);
        return DBUS_HANDLER_RESULT_HANDLED;
    }
    m_ledger.check(message);
    m_added += dbus_message_has_member(message, "InterfacesAdded");
    m_removed += dbus_message_has_member(message, "InterfacesRemoved");
    if (dbus_message_get_type(message) == DBUS_MESSAGE_TYPE_METHOD_CALL)
        receiveCall(message);
    else
        receiveReply(message);
    return DBUS_HANDLER_RESULT_HANDLED;
}

void StubBus::receiveReply(DBusMessage *message)
{
    const auto ticket = m_tickets.find(dbus_message_get_reply_serial(message));
    if (ticket == m_tickets.end())
        return;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_replies[ticket->second] = shared(message);
    }
    m_tickets.erase(ticket);
    m_onReply();
}

void StubBus::receiveCall(DBusMessage *message)
{
    const std::string name = text(dbus_message_get_destination(message));
    if (!isPresent(name)) {
        answerError(message, DBUS_ERROR_SERVICE_UNKNOWN);
        return;
    }
    m_unanswered.emplace(name, shared(message));
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_requests[name].push_back(shared(message));
}

bool StubBus::isPresent(const std::string &name)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_names.count(name) == 1;
}

void StubBus::remove(const std::string &name)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_requests.erase(name);
        if (m_names.erase(name) == 0)
            return;
    }
    sendOwner(name, name, "");
    const auto unanswered = m_unanswered.equal_range(name);
    for (auto call = unanswered.first; call != unanswered.second; ++call)
        answerError(call->second.get(), DBUS_ERROR_NO_REPLY);
    m_unanswered.erase(name);
}

void StubBus::forgetCall(DBusMessage *answer)
{
    const auto calls = m_unanswered.equal_range(text(dbus_message_get_sender(answer)));
    for (auto call = calls.first; call != calls.second; ++call) {
        if (dbus_message_get_serial(call->second.get()) == dbus_message_get_reply_serial(answer)) {
            m_unanswered.erase(call);
            return;
        }
    }
}

// --- As the bus daemon

void StubBus::answerAsDaemon(DBusMessage *message)
{
    const std::string member = text(dbus_message_get_member(message));
    if (member == "Hello")
        answer(message, DBUS_TYPE_STRING, clientName());
    else if (member == "GetConnectionUnixProcessID")
        answerQuery(message, Query::ProcessId);
    else if (member == "GetNameOwner")
        answerQuery(message, Query::NameOwner);
    else if (member == "NameHasOwner")
        answer(message, DBUS_TYPE_BOOLEAN, dbus_bool_t(isPresent(firstText(message))));
    else if (member == "RequestName" || member == "ReleaseName")
        answer(message, DBUS_TYPE_UINT32, dbus_uint32_t(1));
    else if (member == "Introspect")
        answer(message, DBUS_TYPE_STRING, introspection);
    else if (member == "AddMatch" || member == "RemoveMatch")
        changeRules(message);
    else
        answerError(message, DBUS_ERROR_UNKNOWN_METHOD);
}

// The client's library also removes a rule that it has not added.
void StubBus::changeRules(DBusMessage *message)
{
    const std::string rule = firstText(message);
    const bool isAdded = dbus_message_has_member(message, "AddMatch");
    bool isKnown = false;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto known = m_rules.find(rule);
        isKnown = known != m_rules.end();
        if (isAdded)
            m_rules.insert(rule);
        else if (isKnown)
            m_rules.erase(known);
    }
    if (isAdded || isKnown)
        answerEmpty(message);
    else
        answerError(message, DBUS_ERROR_MATCH_RULE_NOT_FOUND);
}

void StubBus::answerQuery(DBusMessage *message, Query query)
{
    const std::string about = firstText(message);
    const bool isDaemon = about == daemonName;
    const auto distorted = m_distorted.find(query);
    const Answer how = distorted == m_distorted.end() || isDaemon ? Answer::Plain : distorted->second;
    if (!isDaemon)
        m_distorted.erase(query);

    if (how == Answer::Departure)
        remove(about);
    if (how == Answer::Late)
        sendOwner("org.example.Other", "", ":1.999999");
    if (how == Answer::Error || (!isPresent(about) && !isDaemon)) {
        answerError(message, DBUS_ERROR_NAME_HAS_NO_OWNER);
        return;
    }
    for (int times = how == Answer::Twice ? 2 : 1; times > 0; --times) {
        if ((query == Query::ProcessId) == (how == Answer::WrongType))
            answer(message, DBUS_TYPE_STRING, how == Answer::Odd ? "" : about.c_str());
        else
            answer(message, DBUS_TYPE_UINT32, how == Answer::Odd ? dbus_uint32_t(-1) : dbus_uint32_t(getpid()));
    }
}

template <typename T>
void StubBus::answer(DBusMessage *message, int type, const T &value)
{
    const Message reply(dbus_message_new_method_return(message));
    append(reply.get(), type, value);
    deliver(daemonName, reply.get());
}

void StubBus::answerEmpty(DBusMessage *message)
{
    if (!dbus_message_get_no_reply(message))
        deliver(daemonName, Message(dbus_message_new_method_return(message)).get());
}

void StubBus::answerError(DBusMessage *message, const char *name)
{
    if (!dbus_message_get_no_reply(message))
        deliver(daemonName, Message(dbus_message_new_error(message, name, "")).get());
}

void StubBus::sendOwner(const std::string &name, const std::string &before, const std::string &after)
{
    const Message signal = makeSignal("/org/freedesktop/DBus", daemonName, "NameOwnerChanged");
    for (const std::string &argument : {name, before, after})
        append(signal.get(), DBUS_TYPE_STRING, argument);
    deliver(daemonName, signal.get());
}
