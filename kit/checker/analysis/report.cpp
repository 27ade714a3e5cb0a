// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "analysis/report.h"

#include "analysis/names.h"
#include "analysis/spelling.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

static constexpr std::array<std::string_view, 3> callInterfaces = {Names::call, Names::tones, Names::audio};

// A name of these interfaces' family, or one that stands for it, without its prefix.
static bool isOfTheFamily(std::string_view written)
{
    constexpr std::string_view family = "zelkovar.";
    return written.substr(0, family.size()) == family
        && std::none_of(callInterfaces.begin(), callInterfaces.end(), [=](auto known) { return known == written; })
        && written != Names::service && written != Names::serviceManager;
}

std::string_view Report::meantInterface(std::string_view written)
{
    if (std::find(callInterfaces.begin(), callInterfaces.end(), written) != callInterfaces.end())
        return {};
    const auto *const found = std::find_if(callInterfaces.begin(), callInterfaces.end(),
        [written](std::string_view known) { return Spelling::isSlip(written, known); });
    if (found != callInterfaces.end())
        return *found;
    return isOfTheFamily(written) ? Names::call : std::string_view();
}

bool Report::has(GVariant *interfaces, std::string_view interface)
{
    return static_cast<bool>(propertiesOf(interfaces, interface));
}

bool Report::concernsCalls(GVariant *interfaces)
{
    bool found = false;
    forEachEntry(interfaces, [&found](std::string_view name, GVariant *) {
        found = found || std::find(callInterfaces.begin(), callInterfaces.end(), name) != callInterfaces.end()
            || !meantInterface(name).empty();
    });
    return found;
}

Variant Report::propertiesOf(GVariant *interfaces, std::string_view interface)
{
    Variant properties;
    forEachEntry(interfaces, [&](std::string_view name, GVariant *value) {
        if (name == interface)
            properties.reset(g_variant_ref(value));
    });
    return properties;
}

static std::optional<double> numberOf(GVariant *value)
{
    switch (g_variant_classify(value)) {
    case G_VARIANT_CLASS_BOOLEAN:
        return g_variant_get_boolean(value) ? 1 : 0;
    case G_VARIANT_CLASS_BYTE:
        return g_variant_get_byte(value);
    case G_VARIANT_CLASS_INT16:
        return g_variant_get_int16(value);
    case G_VARIANT_CLASS_UINT16:
        return g_variant_get_uint16(value);
    case G_VARIANT_CLASS_INT32:
        return g_variant_get_int32(value);
    case G_VARIANT_CLASS_UINT32:
        return g_variant_get_uint32(value);
    case G_VARIANT_CLASS_INT64:
        return static_cast<double>(g_variant_get_int64(value));
    case G_VARIANT_CLASS_UINT64:
        return static_cast<double>(g_variant_get_uint64(value));
    case G_VARIANT_CLASS_DOUBLE:
        return g_variant_get_double(value);
    default:
        return std::nullopt;
    }
}

static std::optional<std::string> lettersOf(GVariant *value)
{
    if (hasType(value, "s"))
        return std::string(textOf(value));
    if (hasType(value, "ay")) {
        gsize size = 0;
        const auto *bytes = static_cast<const char *>(g_variant_get_fixed_array(value, &size, 1));
        return std::string(bytes ? bytes : "", size);
    }
    if (hasType(value, "as") && g_variant_n_children(value) == 1)
        return std::string(textOf(child(value, 0).get()));
    return std::nullopt;
}

std::optional<unsigned> Report::asNumber(GVariant *value)
{
    if (const auto number = numberOf(value))
        return static_cast<unsigned>(static_cast<long long>(std::llround(*number)));
    const auto letters = hasType(value, "as") ? std::nullopt : lettersOf(value);
    if (!letters || letters->empty() || letters->size() > 10
        || letters->find_first_not_of("0123456789") != std::string::npos)
        return std::nullopt;
    return static_cast<unsigned>(std::strtoul(letters->c_str(), nullptr, 10));
}

std::optional<bool> Report::asTruth(GVariant *value)
{
    if (const auto number = numberOf(value))
        return *number != 0;
    const auto letters = hasType(value, "as") ? std::nullopt : lettersOf(value);
    if (!letters)
        return std::nullopt;
    return !letters->empty() && *letters != "0" && *letters != "false";
}

std::optional<std::string> Report::asText(GVariant *value)
{
    if (hasType(value, "b"))
        return g_variant_get_boolean(value) ? "true" : "false";
    if (numberOf(value))
        return printed(value);
    return lettersOf(value);
}

void Report::read(GVariant *interfaces, Call *call)
{
    forEachEntry(interfaces, [call](std::string_view name, GVariant *) { call->interfaces.emplace(name); });
    const Variant properties = propertiesOf(interfaces, Names::call);
    forEachEntry(properties.get(), [call](std::string_view name, GVariant *value) {
        if (name == "Status") {
            call->hasStatus = asNumber(value).has_value();
            call->status = call->sent = asNumber(value).value_or(0);
        } else if (name == "Holdable")
            call->isHoldable = asTruth(value).value_or(false);
        else if (name == "RemoteName")
            call->name = asText(value).value_or("");
        else if (name == "Uri")
            call->uri = asText(value).value_or("");
    });
}
