// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "commands/bus.h"

#include "analysis/names.h"

#include <algorithm>
#include <fstream>

static constexpr int patience = 2000; // ms
// Objects of one application that are looked at for an object manager.
static constexpr std::size_t mostObjects = 200;

Time now() { return g_get_real_time(); }

std::string programOf(unsigned pid)
{
    std::ifstream file("/proc/" + std::to_string(pid) + "/comm");
    std::string name;
    std::getline(file, name);
    return name;
}

bool Selection::learn(const std::string &unique, unsigned pid, const std::string &program)
{
    const bool isMeant
        = m_wanted.empty() || m_wanted == unique || m_wanted == std::to_string(pid) || m_wanted == program;
    if (isMeant)
        m_known[unique] = true;
    return isMeant;
}

bool Selection::contains(const std::string &unique) const
{
    return m_wanted.empty() || unique.empty() || unique == m_wanted || m_known.count(unique) > 0;
}

Connection Bus::connect(std::string *error)
{
    GError *failure = nullptr;
    char *address = g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SESSION, nullptr, &failure);
    const auto flags = static_cast<GDBusConnectionFlags>(
        G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    Connection connection(
        address ? g_dbus_connection_new_for_address_sync(address, flags, nullptr, nullptr, &failure) : nullptr);
    g_free(address);
    if (failure) {
        *error = std::string("no session bus: ") + failure->message;
        g_error_free(failure);
    }
    return connection;
}

static BusMessage question(const std::string &destination, const std::string &path, std::string_view interface,
    const char *member, GVariant *arguments)
{
    BusMessage call(
        g_dbus_message_new_method_call(destination.c_str(), path.c_str(), std::string(interface).c_str(), member));
    // Nobody is started by being asked.
    g_dbus_message_set_flags(call.get(), G_DBUS_MESSAGE_FLAGS_NO_AUTO_START);
    if (arguments)
        g_dbus_message_set_body(call.get(), arguments);
    return call;
}

Variant Bus::ask(const std::string &destination, const std::string &path, std::string_view interface,
    const char *member, GVariant *arguments)
{
    const BusMessage call = question(destination, path, interface, member, arguments);
    g_dbus_message_set_sender(call.get(), g_dbus_connection_get_unique_name(m_connection));
    GError *failure = nullptr;
    BusMessage reply(g_dbus_connection_send_message_with_reply_sync(
        m_connection, call.get(), G_DBUS_SEND_MESSAGE_FLAGS_NONE, patience, nullptr, nullptr, &failure));
    if (!reply)
        reply.reset(g_dbus_message_new_method_error_literal(
            call.get(), "org.freedesktop.DBus.Error.NoReply", failure->message));
    g_clear_error(&failure);
    if (onMessage) {
        onMessage(call.get());
        onMessage(reply.get());
    }
    GVariant *body = g_dbus_message_get_body(reply.get());
    const bool isAnswer = g_dbus_message_get_message_type(reply.get()) == G_DBUS_MESSAGE_TYPE_METHOD_RETURN;
    return isAnswer && body && g_variant_n_children(body) > 0 ? child(body, 0) : nullptr;
}

void Bus::askAside(const std::string &destination, const std::string &path, std::string_view interface,
    const char *member, GVariant *arguments)
{
    const BusMessage call = question(destination, path, interface, member, arguments);
    g_dbus_connection_send_message(m_connection, call.get(), G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr, nullptr);
}

Variant Bus::askBus(const char *member, GVariant *arguments)
{
    return ask(std::string(Names::bus), "/org/freedesktop/DBus", Names::bus, member, arguments);
}

std::string Bus::ownerOf(const std::string &name)
{
    const Variant owner = askBus("GetNameOwner", g_variant_new("(s)", name.c_str()));
    return owner && hasType(owner.get(), "s") ? std::string(textOf(owner.get())) : std::string();
}

unsigned Bus::processOf(const std::string &unique)
{
    const Variant pid = askBus("GetConnectionUnixProcessID", g_variant_new("(s)", unique.c_str()));
    return pid && hasType(pid.get(), "u") ? g_variant_get_uint32(pid.get()) : 0;
}

std::vector<std::string> Bus::uniqueNames()
{
    std::vector<std::string> names;
    const Variant all = askBus("ListNames");
    for (gsize i = 0, count = all && hasType(all.get(), "as") ? g_variant_n_children(all.get()) : 0; i < count; ++i) {
        const Variant name = child(all.get(), i);
        if (textOf(name.get()).substr(0, 1) == ":" && textOf(name.get()) != uniqueName())
            names.emplace_back(textOf(name.get()));
    }
    return names;
}

// Puts the paths below `path` behind the others; whether the object itself has an object manager.
static bool look(const std::string &path, GVariant *xml, std::vector<std::string> *paths)
{
    GDBusNodeInfo *node = g_dbus_node_info_new_for_xml(std::string(textOf(xml)).c_str(), nullptr);
    if (!node)
        return false;
    for (int i = 0; node->nodes && node->nodes[i]; ++i) {
        const std::string below = (path == "/" ? "" : path) + '/' + (node->nodes[i]->path ? node->nodes[i]->path : "");
        if (g_variant_is_object_path(below.c_str()) && paths->size() < mostObjects)
            paths->push_back(below);
    }
    const bool isFound = g_dbus_node_info_lookup_interface(node, std::string(Names::objectManager).c_str()) != nullptr;
    g_dbus_node_info_unref(node);
    return isFound;
}

std::vector<std::string> Bus::objectManagers(const std::string &unique)
{
    std::vector<std::string> paths = {"/"};
    std::vector<std::string> found;
    for (std::size_t i = 0; i < paths.size(); ++i) {
        const std::string path = paths[i];
        const Variant xml = ask(unique, path, Names::introspectable, "Introspect");
        if (!xml && i == 0)
            break;
        if (xml && hasType(xml.get(), "s") && look(path, xml.get(), &paths))
            found.push_back(path);
    }
    return found;
}
