// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "analysis/analysis.h"
#include "analysis/names.h"
#include "analysis/report.h"
#include "analysis/spelling.h"

#include <algorithm>
#include <array>

static const Rule interfaceMisspelt("announcing", "interface-misspelt", Severity::Error,
    {"An interface of a call is spelt in another way.",
        "The host compares names letter by letter: without Call1 it is no call, without DTMF1 it has no tones, without "
        "AudioControl1 no audio.",
        "Write zelkovar.Call.Call1, zelkovar.Call.DTMF1 and zelkovar.Call.AudioControl1.",
        R"(signal InterfacesAdded ("/calls/one", {"zelkovar.call.Call1": {...}}))",
        R"(signal InterfacesAdded ("/calls/one", {"zelkovar.Call.Call1": {...}}))"},
    {"not-announced", "status-elsewhere", "call-interface-late", "removed-without-call-interface"});

static const Rule missing("announcing", "property-missing", Severity::Error,
    {"A property that a host shows is not in the report of the call.",
        "Properties are read once, from the first report: without Status it shows as disconnected, without Incoming as "
        "outgoing, without RemoteName and Uri as nobody.",
        "Put Status, Incoming, RemoteName, Uri and Holdable into InterfacesAdded and into GetManagedObjects.",
        "{\"zelkovar.Call.Call1\": {}}",
        "{\"zelkovar.Call.Call1\": {\"Status\": <uint32 3>, \"Incoming\": <true>, \"Uri\": "
        "<\"sip:ann@example.org\">}}"},
    {"status-impossible", "ended-not-removed", "status-odd", "request-in-wrong-status"});

static const Rule misspelt("announcing", "property-misspelt", Severity::Error,
    {"A property of Call1 is spelt in another way.",
        "The host compares names letter by letter and reads the property as missing.",
        "Write Status, Incoming, Holdable, RemoteName, RemoteHandle, LocalName, LocalHandle and Uri.",
        R"({"zelkovar.Call.Call1": {"status": <uint32 3>}})", R"({"zelkovar.Call.Call1": {"Status": <uint32 3>}})"},
    {"property-missing", "status-impossible", "ended-not-removed"});

static const Rule wrongType("announcing", "property-type", Severity::Error,
    {"A property of Call1 has another type than it has to have.",
        "This host reads some types though they are wrong, others read as 0, false or nothing, and another host may "
        "read "
        "none.",
        "Send Status as u, Incoming and Holdable as b, all others as s.", "\"Status\": <int32 3>",
        "\"Status\": <uint32 3>"},
    {"status-impossible", "ended-not-removed", "request-in-wrong-status"});

static const Rule nested("announcing", "property-nested-variant", Severity::Error,
    {"A property of Call1 is a variant in a variant.",
        "The host reads it as 0, false or nothing; bus libraries that wrap values themselves wrap a wrapped one again.",
        "Give the library the plain value.", "\"Status\": <<uint32 3>>", "\"Status\": <uint32 3>"},
    {"status-impossible", "ended-not-removed", "request-in-wrong-status"});

static const Rule descriptor("weight", "descriptor-in-property", Severity::Error,
    {"A file descriptor is among the properties of an object.",
        "Descriptors are open in the host while it handles the message, and one that runs out of them loses the bus "
        "and "
        "all calls.",
        "Send names instead, such as the path of a picture.", "\"Photo\": <handle 0>",
        R"("Photo": <"/usr/share/icons/ann.png">)"});

namespace {

struct Property
{
    std::string_view name;
    const char *type;
};

constexpr std::array<Property, 8> known = {{{"Status", "u"}, {"Incoming", "b"}, {"Holdable", "b"}, {"RemoteName", "s"},
    {"Uri", "s"}, {"RemoteHandle", "s"}, {"LocalName", "s"}, {"LocalHandle", "s"}}};
constexpr std::size_t shown = 5; // so many of them

const Property *find(std::string_view name)
{
    const auto *const found
        = std::find_if(known.begin(), known.end(), [name](const Property &property) { return property.name == name; });
    return found == known.end() ? nullptr : found;
}

std::string whatIsMade(const Property &property, GVariant *value)
{
    const std::string_view type = property.type;
    if (type == "u") {
        const auto number = Report::asNumber(value);
        return number ? std::to_string(*number) : "";
    }
    if (type == "b") {
        const auto truth = Report::asTruth(value);
        return truth ? (*truth ? "true" : "false") : "";
    }
    const auto text = Report::asText(value);
    return text ? '"' + text->substr(0, 40) + '"' : "";
}

void judgeType(const Occasion &o, const Property &property, GVariant *value)
{
    const std::string name(property.name);
    const std::string type = g_variant_get_type_string(value);
    const std::string is = name + " of " + std::string(o.object) + " is " + printed(value) + ", of type " + type;
    if (type == "v") {
        o.report(nested, is + ", inside the variant that it has to be in.", name);
        return;
    }
    const std::string made = whatIsMade(property, value);
    if (made.empty())
        o.report(wrongType, is + ", not " + property.type + ", and the host cannot read it.", name);
    else
        o.report(wrongType, Severity::Warning,
            is + ", not " + property.type + "; this host makes " + made + " of it: do not rely on it.", name);
}

bool hasSlip(GVariant *properties, std::string_view meant)
{
    bool found = false;
    forEachEntry(properties,
        [&](std::string_view name, GVariant *) { found = found || (!find(name) && Spelling::isSlip(name, meant)); });
    return found;
}

bool hasProperty(GVariant *properties, std::string_view wanted)
{
    bool found = false;
    forEachEntry(properties, [&](std::string_view name, GVariant *) { found = found || name == wanted; });
    return found;
}

void judgeSlip(const Occasion &o, GVariant *properties, std::string_view written)
{
    for (std::size_t i = 0; i < known.size(); ++i) {
        const std::string_view meant = known.at(i).name;
        if (!Spelling::isSlip(written, meant) || hasProperty(properties, meant))
            continue;
        o.report(misspelt, i < shown ? Severity::Error : Severity::Warning,
            std::string(o.object) + " has the property \"" + std::string(written) + "\", and no \"" + std::string(meant)
                + "\".",
            meant);
        return;
    }
}

void judgeMissing(const Occasion &o, GVariant *properties)
{
    const auto lacks
        = [properties](std::string_view name) { return !hasProperty(properties, name) && !hasSlip(properties, name); };
    const std::string path(o.object);
    if (lacks("Status"))
        o.report(missing, path + " was reported without Status, and shows as disconnected.", "Status");
    else if (lacks("RemoteName") && lacks("Uri"))
        o.report(missing, Severity::Warning, path + " was reported with neither RemoteName nor Uri.", "Uri");
}

void judgeDirection(const Occasion &o, GVariant *properties)
{
    bool rings = false;
    forEachEntry(properties, [&rings](std::string_view name, GVariant *value) {
        rings = rings || (name == "Status" && Report::asNumber(value) == Status::incoming);
    });
    if (rings && !hasProperty(properties, "Incoming") && !hasSlip(properties, "Incoming"))
        o.report(missing, Severity::Warning,
            std::string(o.object) + " rings (status 3) without Incoming, and shows as an outgoing call.", "Incoming");
}

const Check properties({Event::Reported}, [](const Occasion &o) {
    if (!o.call || o.call->isKnown)
        return;
    const Variant found = Report::propertiesOf(o.interfaces, Names::call);
    if (!found)
        return;
    forEachEntry(found.get(), [&](std::string_view name, GVariant *value) {
        const Property *property = find(name);
        if (property && !hasType(value, property->type) && !hasType(value, "h"))
            judgeType(o, *property, value);
        else if (!property)
            judgeSlip(o, found.get(), name);
    });
    judgeMissing(o, found.get());
    judgeDirection(o, found.get());
});

const Check interfaces({Event::Reported}, [](const Occasion &o) {
    if (!o.call)
        return;
    forEachEntry(o.interfaces, [&o](std::string_view name, GVariant *) {
        const std::string_view meant = Report::meantInterface(name);
        if (meant.empty() || Report::has(o.interfaces, meant))
            return;
        const int cause = o.report(interfaceMisspelt,
            std::string(o.object) + " has the interface \"" + std::string(name) + "\", and no \"" + std::string(meant)
                + "\".",
            meant);
        if (meant == Names::call && !o.call->isKnown)
            o.call->cause = cause;
    });
});

const Check descriptors({Event::Announced, Event::SnapshotAnswered}, [](const Occasion &o) {
    if (o.message.descriptors > 0)
        o.report(descriptor,
            "A report of " + std::string(o.object) + " carries " + std::to_string(o.message.descriptors)
                + (o.message.descriptors == 1 ? " file descriptor." : " file descriptors."));
});

} // namespace
