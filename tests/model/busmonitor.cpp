// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "busmonitor.h"

#include "waitfor.h"

#include <QtCore/QTimer>
#include <cstring>
#include <stdexcept>

static void becomeMonitor(DBusConnection *connection, const std::vector<std::string> &rules)
{
    const BusMessage call = busMessage(dbus_message_new_method_call(
        DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, "org.freedesktop.DBus.Monitoring", "BecomeMonitor"));
    ArgumentWriter(call.get()).strings(rules).number(0);
    DBusError error = DBUS_ERROR_INIT;
    DBusMessage *reply
        = dbus_connection_send_with_reply_and_block(connection, call.get(), DBUS_TIMEOUT_USE_DEFAULT, &error);
    if (!reply)
        throw std::runtime_error(std::string("the bus refuses to be monitored: ") + error.message);
    dbus_message_unref(reply);
}

static int socketOf(DBusConnection *connection)
{
    int socket = -1;
    dbus_connection_get_unix_fd(connection, &socket);
    return socket;
}

BusMonitor::BusMonitor(const std::string &sender)
    : m_sender(sender),
      m_notifier(socketOf(m_peer.connection()), QSocketNotifier::Read)
{
    becomeMonitor(m_peer.connection(),
        {"sender='" + sender + "'", "sender='" DBUS_SERVICE_DBUS "',type='signal',member='NameOwnerChanged'"});
    QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_loop, [this] { readAll(); });
}

void BusMonitor::readAll()
{
    dbus_connection_read_write(m_peer.connection(), 0);
    while (DBusMessage *message = dbus_connection_pop_message(m_peer.connection()))
        read(busMessage(message).get());
    m_loop.quit();
}

static bool is(const char *text, const char *expected) { return text && std::strcmp(text, expected) == 0; }

void BusMonitor::read(DBusMessage *message)
{
    if (is(dbus_message_get_sender(message), DBUS_SERVICE_DBUS)) {
        const char *name = nullptr, *before = nullptr, *after = nullptr;
        if (dbus_message_get_args(message, nullptr, DBUS_TYPE_STRING, &name, DBUS_TYPE_STRING, &before,
                DBUS_TYPE_STRING, &after, DBUS_TYPE_INVALID)
            && *after == '\0')
            m_departed.insert(name);
    } else if (is(dbus_message_get_sender(message), m_sender.c_str())) {
        if (!is(dbus_message_get_destination(message), DBUS_SERVICE_DBUS))
            write(message);
        else if (is(dbus_message_get_member(message), "AddMatch"))
            writeSubscription(message);
    }
}

// The value of a key in the text of a match rule.
static std::string valueIn(const std::string &rule, const std::string &key)
{
    const std::size_t at = rule.find(key + "='");
    const std::size_t start = at + key.size() + 2;
    return at == std::string::npos ? "" : rule.substr(start, rule.find('\'', start) - start);
}

void BusMonitor::writeSubscription(DBusMessage *message)
{
    const char *rule = nullptr;
    dbus_message_get_args(message, nullptr, DBUS_TYPE_STRING, &rule, DBUS_TYPE_INVALID);
    const auto sender = m_names.find(valueIn(rule, "sender"));
    if (sender != m_names.end())
        m_lines.push_back("match " + sender->second + " " + valueIn(rule, "path") + " " + valueIn(rule, "interface")
            + "." + valueIn(rule, "member"));
}

void BusMonitor::write(DBusMessage *message)
{
    const char *destination = dbus_message_get_destination(message);
    const char *path = dbus_message_get_path(message);
    const char *interface = dbus_message_get_interface(message);
    const char *member = dbus_message_get_member(message);
    switch (dbus_message_get_type(message)) {
    case DBUS_MESSAGE_TYPE_METHOD_CALL:
        if (is(member, "GetManagedObjects"))
            m_snapshotCalls[{destination, path}] = dbus_message_get_serial(message);
        m_lines.push_back("to " + name(destination) + " " + path + " " + interface + "." + member + arguments(message));
        break;
    case DBUS_MESSAGE_TYPE_SIGNAL:
        writeSignal(message);
        break;
    default:
        writeReply(message);
    }
}

void BusMonitor::writeSignal(DBusMessage *message)
{
    const char *line = nullptr;
    if (dbus_message_has_interface(message, noteInterface)
        && dbus_message_get_args(message, nullptr, DBUS_TYPE_STRING, &line, DBUS_TYPE_INVALID)) {
        m_lines.push_back(std::string("host: ") + line);
        return;
    }
    const char *destination = dbus_message_get_destination(message);
    const bool ours = dbus_message_has_path(message, "/zelkovar/call/service")
        && dbus_message_has_interface(message, "zelkovar.Call.ServiceManager1");
    m_lines.push_back((destination ? "signal to " + name(destination) + " " : std::string("broadcast "))
        + (ours ? std::string()
                : std::string("of ") + dbus_message_get_path(message) + " " + dbus_message_get_interface(message) + " ")
        + dbus_message_get_member(message) + arguments(message));
}

void BusMonitor::writeReply(DBusMessage *message)
{
    const char *destination = dbus_message_get_destination(message);
    const bool isError = dbus_message_get_type(message) == DBUS_MESSAGE_TYPE_ERROR;
    if (dbus_message_get_reply_serial(message) == m_awaitedSerial && is(destination, m_awaitedCaller.c_str())) {
        m_answer = isError ? "error" : arguments(message);
        m_answered = true;
    } else {
        m_lines.push_back(
            isError ? "error to " + name(destination) : "reply to " + name(destination) + " " + arguments(message));
    }
}

std::string BusMonitor::name(const char *uniqueName) const
{
    const auto known = m_names.find(uniqueName);
    return known == m_names.end() ? uniqueName : known->second;
}

std::string BusMonitor::arguments(DBusMessage *message) const
{
    DBusMessageIter iterator;
    return dbus_message_iter_init(message, &iterator) ? "(" + values(iterator) + ")" : "()";
}

std::string BusMonitor::values(DBusMessageIter &iterator) const
{
    std::string all;
    for (; dbus_message_iter_get_arg_type(&iterator) != DBUS_TYPE_INVALID; dbus_message_iter_next(&iterator))
        all += (all.empty() ? "" : ",") + value(iterator);
    return all;
}

static bool isBasic(int type) { return dbus_type_is_basic(type); }

std::string BusMonitor::value(DBusMessageIter &iterator) const
{
    const int type = dbus_message_iter_get_arg_type(&iterator);
    if (isBasic(type))
        return basicValue(iterator);
    DBusMessageIter inner;
    dbus_message_iter_recurse(&iterator, &inner);
    const int innerType = dbus_message_iter_get_arg_type(&inner);
    if (type == DBUS_TYPE_VARIANT) {
        char *signature = dbus_message_iter_get_signature(&inner);
        const std::string prefix = innerType == DBUS_TYPE_VARIANT ? "v:"
            : innerType == DBUS_TYPE_ARRAY                        ? signature
                                                                  : "";
        dbus_free(signature);
        return prefix + value(inner);
    }
    if (type == DBUS_TYPE_DICT_ENTRY) {
        const std::string key = value(inner);
        dbus_message_iter_next(&inner);
        return key + ":" + value(inner);
    }
    if (type == DBUS_TYPE_STRUCT)
        return "(" + values(inner) + ")";
    return dbus_message_iter_get_element_type(&iterator) == DBUS_TYPE_DICT_ENTRY ? "{" + values(inner) + "}"
                                                                                 : "[" + values(inner) + "]";
}

static std::string number(int type, const DBusBasicValue &value)
{
    switch (type) {
    case DBUS_TYPE_BYTE:
        return std::to_string(value.byt);
    case DBUS_TYPE_INT16:
        return std::to_string(value.i16);
    case DBUS_TYPE_UINT16:
        return std::to_string(value.u16);
    case DBUS_TYPE_INT32:
        return std::to_string(value.i32);
    case DBUS_TYPE_UINT32:
        return std::to_string(value.u32);
    case DBUS_TYPE_INT64:
        return std::to_string(value.i64);
    case DBUS_TYPE_UINT64:
        return std::to_string(value.u64);
    default:
        return QByteArray::number(value.dbl).toStdString();
    }
}

std::string BusMonitor::basicValue(DBusMessageIter &iterator) const
{
    const int type = dbus_message_iter_get_arg_type(&iterator);
    DBusBasicValue value;
    dbus_message_iter_get_basic(&iterator, &value);
    switch (type) {
    case DBUS_TYPE_BOOLEAN:
        return value.bool_val ? "true" : "false";
    case DBUS_TYPE_STRING:
        return '"' + name(value.str) + '"';
    case DBUS_TYPE_OBJECT_PATH:
        return value.str;
    case DBUS_TYPE_SIGNATURE:
        return std::string("g(") + value.str + ")";
    default:
        return char(type) + number(type, value);
    }
}

template <typename Done>
void BusMonitor::waitUntil(Done done, const std::string &what)
{
    QTimer limit;
    limit.setSingleShot(true);
    QObject::connect(&limit, &QTimer::timeout, &m_loop, &QEventLoop::quit);
    limit.start(waitLimitMs);
    while (!done()) {
        if (!limit.isActive())
            throw std::runtime_error("waited in vain for " + what);
        m_loop.exec();
    }
}

std::string BusMonitor::waitForReply(const BusPeer &caller, unsigned serial)
{
    m_answered = false;
    m_awaitedCaller = caller.name();
    m_awaitedSerial = serial;
    waitUntil([this] { return m_answered; }, "the plug-in's answer");
    return std::exchange(m_answer, {});
}

void BusMonitor::waitForDeparture(const std::string &uniqueName)
{
    waitUntil([&] { return m_departed.count(uniqueName) != 0; }, "the bus to miss " + uniqueName);
    m_departed.clear();
}

unsigned BusMonitor::snapshotCall(const std::string &uniqueName, const std::string &path) const
{
    const auto call = m_snapshotCalls.find({uniqueName, path});
    return call == m_snapshotCalls.end() ? 0 : call->second;
}
