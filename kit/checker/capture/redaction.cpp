// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "capture/redaction.h"

#include <algorithm>
#include <array>
#include <vector>

// Properties of calls, the application's and the desktop host's.
static bool isPersonal(std::string_view key)
{
    constexpr std::array<std::string_view, 6> keys
        = {"RemoteName", "RemoteHandle", "LocalName", "LocalHandle", "Uri", "LineId"};
    return std::find(keys.begin(), keys.end(), key) != keys.end();
}

static Variant owned(GVariant *floating) { return Variant(g_variant_ref_sink(floating)); }

// The same container with other members.
static Variant rebuilt(GVariant *container, const std::vector<Variant> &members)
{
    GVariantBuilder builder;
    g_variant_builder_init(&builder, g_variant_get_type(container));
    for (const Variant &member : members)
        g_variant_builder_add_value(&builder, member.get());
    return owned(g_variant_builder_end(&builder));
}

std::string Redaction::word(std::string_view text)
{
    // An empty name stays empty, and one far too long stays far too long.
    constexpr std::size_t ordinary = 1000;
    if (text.empty())
        return {};
    auto found = m_words.find(text.substr(0, ordinary));
    if (found == m_words.end())
        found = m_words.emplace(text.substr(0, ordinary), m_words.size() + 1).first;
    std::string result = "redacted-" + std::to_string(found->second);
    if (text.size() > ordinary)
        result.resize(text.size(), 'x');
    return result;
}

// All texts in it are replaced.
Variant Redaction::veiled(GVariant *value)
{
    if (hasType(value, "s"))
        return owned(g_variant_new_string(word(textOf(value)).c_str()));
    if (hasType(value, "y"))
        return owned(g_variant_new_byte('x'));
    if (!g_variant_is_container(value))
        return Variant(g_variant_ref(value));
    std::vector<Variant> members;
    for (gsize i = 0, count = g_variant_n_children(value); i < count; ++i)
        members.push_back(veiled(child(value, i).get()));
    return rebuilt(value, members);
}

Variant Redaction::redacted(GVariant *value)
{
    if (!g_variant_is_container(value))
        return Variant(g_variant_ref(value));
    const bool isEntry = hasType(value, "{s*}");
    const bool isDevice = hasType(value, "(sibbsa{sv})");
    std::vector<Variant> members;
    for (gsize i = 0, count = g_variant_n_children(value); i < count; ++i) {
        const Variant member = child(value, i);
        const bool isOpen = (isEntry && i == 1 && isPersonal(textOf(child(value, 0).get()))) || (isDevice && i == 4);
        members.push_back(isOpen ? veiled(member.get()) : redacted(member.get()));
    }
    return rebuilt(value, members);
}

static Variant withoutTones(GVariant *arguments)
{
    std::vector<Variant> members;
    for (gsize i = 0, count = g_variant_n_children(arguments); i < count; ++i) {
        Variant member = child(arguments, i);
        if (hasType(member.get(), "s"))
            member = owned(g_variant_new_string(std::string(textOf(member.get()).size(), '0').c_str()));
        members.push_back(std::move(member));
    }
    return rebuilt(arguments, members);
}

void Redaction::apply(GDBusMessage *message)
{
    GVariant *body = g_dbus_message_get_body(message);
    if (!body)
        return;
    const char *member = g_dbus_message_get_member(message);
    const bool isTones = member && std::string_view(member) == "SendDTMF";
    const Variant changed = isTones ? withoutTones(body) : redacted(body);
    g_dbus_message_set_body(message, changed.get());
}
