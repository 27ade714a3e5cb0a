// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "ledger.h"

#include "finding.h"

namespace {

void requireOf(DBusMessage *message, bool holds, const char *what)
{
    if (!holds)
        reportFinding(std::string(what) + ": " + describe(message));
}

std::string textArgument(DBusMessageIter *iter)
{
    const char *value = nullptr;
    dbus_message_iter_get_basic(iter, &value);
    return text(value);
}

constexpr const char *objectManagerInterface = "org.freedesktop.DBus.ObjectManager";

// What the plug-in may call, with the types of its arguments.
constexpr const char *commands[][3] = {{"zelkovar.Call.Call1", "Accept", ""}, {"zelkovar.Call.Call1", "Reject", "u"},
    {"zelkovar.Call.Call1", "SetHold", "b"}, {"zelkovar.Call.DTMF1", "SendDTMF", "s"},
    {"zelkovar.Call.AudioControl1", "UpdateAudioRoute", "bss"},
    {"zelkovar.Call.AudioControl1", "UpdateAudioRouteState", "a(sibbsa{sv})bss"}};

bool isCommand(DBusMessage *message)
{
    for (const auto &command : commands) {
        if (dbus_message_is_method_call(message, command[0], command[1])
            && dbus_message_has_signature(message, command[2]))
            return true;
    }
    return false;
}

} // namespace

std::string describe(DBusMessage *message)
{
    return std::string(dbus_message_type_to_string(dbus_message_get_type(message))) + " to '"
        + text(dbus_message_get_destination(message)) + "': " + text(dbus_message_get_path(message)) + " "
        + text(dbus_message_get_interface(message)) + "." + text(dbus_message_get_member(message)) + " ("
        + dbus_message_get_signature(message) + ")";
}

void Ledger::note(DBusMessage *message)
{
    const std::string sender = text(dbus_message_get_sender(message));
    DBusMessageIter arguments;
    const bool hasArguments = dbus_message_iter_init(message, &arguments);
    switch (dbus_message_get_type(message)) {
    case DBUS_MESSAGE_TYPE_METHOD_CALL:
        // Also of one that wants no reply: the bus layer answers some all the same, and the bus drops that.
        m_callers[dbus_message_get_serial(message)] = sender;
        if (dbus_message_has_member(message, "RegisterCallManager") && hasArguments
            && dbus_message_iter_get_arg_type(&arguments) == DBUS_TYPE_OBJECT_PATH) {
            m_managers.emplace(sender, textArgument(&arguments));
            m_registered.insert(sender);
        }
        break;
    case DBUS_MESSAGE_TYPE_SIGNAL:
        if (dbus_message_is_signal(message, objectManagerInterface, "InterfacesAdded")
            && dbus_message_has_signature(message, "oa{sa{sv}}"))
            m_calls.emplace(sender, textArgument(&arguments));
        break;
    default:
        if (text(dbus_message_get_signature(message)).rfind("a{oa{sa{sv}}}", 0) == 0)
            noteSnapshot(message);
    }
}

void Ledger::noteSnapshot(DBusMessage *message)
{
    DBusMessageIter arguments;
    DBusMessageIter object;
    dbus_message_iter_init(message, &arguments);
    dbus_message_iter_recurse(&arguments, &object);
    for (; dbus_message_iter_get_arg_type(&object) == DBUS_TYPE_DICT_ENTRY; dbus_message_iter_next(&object)) {
        DBusMessageIter path;
        dbus_message_iter_recurse(&object, &path);
        m_calls.emplace(text(dbus_message_get_sender(message)), textArgument(&path));
    }
}

void Ledger::check(DBusMessage *message)
{
    switch (dbus_message_get_type(message)) {
    case DBUS_MESSAGE_TYPE_METHOD_CALL:
        checkCall(message);
        break;
    case DBUS_MESSAGE_TYPE_SIGNAL:
        checkSignal(message);
        break;
    default:
        checkReply(message);
    }
}

void Ledger::checkCall(DBusMessage *message) const
{
    const Object object(text(dbus_message_get_destination(message)), text(dbus_message_get_path(message)));
    if (dbus_message_is_method_call(message, objectManagerInterface, "GetManagedObjects"))
        requireOf(message, m_managers.count(object) == 1, "asked somebody who registered no call manager");
    else
        requireOf(message, isCommand(message) && m_calls.count(object) == 1 && m_registered.count(object.first) == 1,
            "sent what is no command to a call that was reported");
}

void Ledger::checkSignal(DBusMessage *message) const
{
    const bool isAdded = dbus_message_is_signal(message, "zelkovar.Call.ServiceManager1", "InterfacesAdded");
    requireOf(message,
        (isAdded && dbus_message_has_signature(message, "soa{sa{sv}}"))
            || (dbus_message_is_signal(message, "zelkovar.Call.ServiceManager1", "InterfacesRemoved")
                && dbus_message_has_signature(message, "soas")),
        "broadcast something unknown");
    DBusMessageIter arguments;
    dbus_message_iter_init(message, &arguments);
    const std::string who = textArgument(&arguments);
    dbus_message_iter_next(&arguments);
    requireOf(
        message, m_calls.count({who, textArgument(&arguments)}) == 1, "broadcast a call that nobody has reported");
}

void Ledger::checkReply(DBusMessage *message)
{
    const auto caller = m_callers.find(dbus_message_get_reply_serial(message));
    requireOf(message, caller != m_callers.end(), "answered what nobody had asked, or twice");
    requireOf(message, dbus_message_has_destination(message, caller->second.c_str()), "answered somebody else");
    m_callers.erase(caller);
}

void Ledger::clear()
{
    m_managers.clear();
    m_calls.clear();
    m_registered.clear();
    m_callers.clear();
}
