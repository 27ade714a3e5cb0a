// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "analysis/analysis.h"
#include "analysis/names.h"
#include "analysis/report.h"

#include <algorithm>
#include <utility>

static const Rule tooEarly("status", "status-too-early", Severity::Error,
    {"A status was sent before the host listened.",
        "The host subscribes to StatusChanged when it has handled the announcement; what comes before is lost, and the "
        "first status stays.",
        "Wait until the host tells with its own InterfacesAdded that it shows the call; if the Status in it is another "
        "one, send StatusChanged again.",
        "signal InterfacesAdded (\"/calls/one\", {... \"Status\": <uint32 3>})\nsignal StatusChanged (5), right behind "
        "it",
        "signal InterfacesAdded (\"/calls/one\", {... \"Status\": <uint32 3>})\n"
        "host's signal InterfacesAdded (\":1.7\", \"/calls/one\", ...)\nsignal StatusChanged (5)"},
    {"request-in-wrong-status", "status-impossible", "removed-without-status", "command-without-effect"});

static const Rule signature("status", "status-signature", Severity::Error,
    {"StatusChanged has other arguments than one u.",
        "The host drops such a signal without a word, and shows the status that it had.",
        "Send one unsigned 32-bit number (type u).", "signal StatusChanged (int32 5)",
        "signal StatusChanged (uint32 5)"},
    {"command-without-effect", "hold-promised-not-kept", "removed-without-status", "request-in-wrong-status",
        "ended-not-removed", "status-only-as-property"});

static const Rule elsewhere("status", "status-elsewhere", Severity::Error,
    {"StatusChanged came from another path, connection or interface than the call's.",
        "The host listens to the call's own object only, and shows the status that it had.",
        "Send it from the path of the call, on the connection that registered, with the interface zelkovar.Call.Call1.",
        "signal StatusChanged (5) from /calls", "signal StatusChanged (5) from /calls/one"},
    {"command-without-effect", "hold-promised-not-kept", "removed-without-status", "request-in-wrong-status",
        "status-only-as-property"});

static const Rule unknown("status", "status-unknown", Severity::Error,
    {"A status is none of those that there are.", "The host shows a call without a status.",
        "Send 2 dialing, 3 incoming, 5 active, 7 held or 1 disconnected.", "signal StatusChanged (8)",
        "signal StatusChanged (1)"},
    {"removed-without-status", "request-in-wrong-status", "status-impossible", "status-differs"});

static const Rule odd("status", "status-odd", Severity::Warning,
    {"A status was sent that stands for another one.",
        "0 and 4 show as disconnected and 6 as active, which nobody may rely on: a host may tell them apart one day.",
        "Send 1 for disconnected and 5 for active.", "signal StatusChanged (6)", "signal StatusChanged (5)"},
    {"ended-not-removed"});

static const Rule onlyProperty("status", "status-only-as-property", Severity::Error,
    {"The status was changed as a property, without StatusChanged.",
        "The host does not hear PropertiesChanged, and shows the status that it had.",
        "Send StatusChanged of zelkovar.Call.Call1 as well.", "signal PropertiesChanged ({\"Status\": <uint32 5>})",
        "signal StatusChanged (5)"},
    {"command-without-effect", "hold-promised-not-kept", "removed-without-status", "request-in-wrong-status",
        "property-change-unheard"});

static const Rule impossible("status", "status-impossible", Severity::Error,
    {"A status cannot follow the one before it.",
        "The host shows what it is told: a call that rings again after it was answered, or lives after its end.",
        "Ringing (2, 3) comes first and disconnected (1) last; a new call needs a new object.",
        "signal StatusChanged (1)\nsignal StatusChanged (5)", "signal StatusChanged (5)\nsignal StatusChanged (1)"},
    {"removed-without-status"});

static const Rule repeated("status", "status-repeated", Severity::Note,
    {"A status was sent that the host shows already.", "It wakes everybody who follows the call, for nothing.",
        "Send StatusChanged when the status has changed.", "signal StatusChanged (5), twice",
        "signal StatusChanged (5), once"});

static const Rule unheard("announcing", "property-change-unheard", Severity::Warning,
    {"A property of a call was changed behind its announcement.",
        "The host reads properties once and does not hear PropertiesChanged; it goes on to show the first value.",
        "Announce a call when its name and address are known; they cannot change later.",
        R"(signal PropertiesChanged ("zelkovar.Call.Call1", {"RemoteName": <"Ann">}))",
        R"(signal InterfacesAdded ("/calls/one", {"zelkovar.Call.Call1": {"RemoteName": <"Ann">, ...}}))"});

namespace {

std::string status(unsigned number)
{
    return std::to_string(number) + " (" + std::string(Status::wordOf(number)) + ')';
}

bool isHeard(const Occasion &o) { return o.call && o.call->isKnown && !o.call->isGone && o.status; }

void judgeNumber(const Occasion &o, unsigned number)
{
    const std::string path(o.object);
    if (number >= Status::firstUnknown)
        o.report(unknown, path + " has the status " + std::to_string(number) + '.');
    else if (number == 0 || number == 4 || number == 6)
        o.report(odd, path + " has the status " + status(number) + '.');
}

const Check first({Event::Reported}, [](const Occasion &o) {
    if (!o.call || o.call->isKnown)
        return;
    const Variant properties = Report::propertiesOf(o.interfaces, Names::call);
    if (!properties)
        return;
    forEachEntry(properties.get(), [&o](std::string_view name, GVariant *value) {
        if (name == "Status" && hasType(value, "u"))
            judgeNumber(o, g_variant_get_uint32(value));
    });
});

const Check number({Event::StatusSent}, [](const Occasion &o) {
    if (isHeard(o))
        judgeNumber(o, *o.status);
});

const Check form({Event::StatusSent}, [](const Occasion &o) {
    if (!o.call || o.call->isGone)
        return;
    const Message &m = o.message;
    if (m.interface != Names::call)
        o.report(elsewhere,
            "StatusChanged of " + o.call->path + " came with the interface \"" + std::string(m.interface) + "\".");
    else if (!o.status)
        o.report(signature,
            "StatusChanged of " + o.call->path + " has "
                + (m.signature.empty() ? "no argument." : "the type \"" + std::string(m.signature) + "\"."));
});

bool isAnyKnown(const Application &application)
{
    return std::any_of(
        application.calls.begin(), application.calls.end(), [](const auto &entry) { return entry.second.isKnown; });
}

const Check place({Event::StatusSent}, [](const Occasion &o) {
    if (o.call || o.message.interface != Names::call || o.world.host.empty())
        return;
    const std::string start = "StatusChanged came from " + std::string(o.message.path);
    if (isAnyKnown(*o.application)) {
        o.report(elsewhere, start + ", which is no call of it.");
        return;
    }
    for (Application *sibling : o.world.siblingsOf(*o.application)) {
        if (sibling->calls.find(o.message.path) == sibling->calls.end())
            continue;
        Occasion at = o;
        at.application = sibling;
        at.report(
            elsewhere, start + " on the connection " + o.application->name + ", but the call belongs to this one.");
        return;
    }
});

const Check unheardOf({Event::StatusSent, Event::RequestSent}, [](const Occasion &o) {
    if (o.call && !o.call->isGone && o.call->cause >= 0 && !o.call->isKnown)
        o.analysis.findings().follow(o.call->cause, o.call->path + ": its signals are not heard.");
});

struct Correction
{
    bool isAwaited = false;
    bool isRelayed = false;
};

std::optional<unsigned> relayedStatus(const Occasion &o)
{
    std::optional<unsigned> found;
    const Variant properties = Report::propertiesOf(o.interfaces, Names::call);
    forEachEntry(properties.get(), [&found](std::string_view name, GVariant *value) {
        if (name == "Status")
            found = Report::asNumber(value);
    });
    return found;
}

// The host's own report says which status it has read. Whoever then sends the right one does it well. A status may
// have been heard though it was sent before, when the host happened to be quick.
const Check relayed({Event::Relayed}, [](const Occasion &o) {
    const std::optional<unsigned> read = relayedStatus(o);
    const unsigned sent = o.call->sent;
    const bool isFirst = !std::exchange(o.call->memory.of<Correction>().isRelayed, true);
    if (!isFirst || !read || *read == sent)
        return;
    const bool isHeard = o.call->status == sent;
    o.call->memory.of<Correction>().isAwaited = true;
    o.later(700 * milliseconds, [=](const Occasion &later) {
        if (!later.call->memory.of<Correction>().isAwaited)
            return;
        const std::string what
            = "StatusChanged " + status(sent) + " of " + later.call->path + " came right behind its announcement, ";
        if (isHeard)
            later.report(tooEarly, Severity::Warning, what + "and was heard by luck.");
        else
            later.report(tooEarly, what + "and the host shows " + status(*read) + '.');
    });
});

const Check corrected({Event::StatusSent}, [](const Occasion &o) {
    if (isHeard(o) && o.call->isShown)
        o.call->memory.of<Correction>().isAwaited = false;
});

// The call was over before the host had shown it.
const Check goneEarly({Event::CallEnds}, [](const Occasion &o) {
    if (o.message.member != "NameOwnerChanged")
        o.call->memory.of<Correction>().isAwaited = false;
});

const Check order({Event::StatusSent}, [](const Occasion &o) {
    if (!isHeard(o) || *o.status >= Status::firstUnknown || !o.call->hasStatus)
        return;
    const unsigned before = o.call->sent;
    const bool isRinging = *o.status == Status::dialing || *o.status == Status::incoming;
    const bool wasUp = Status::isActive(before) || before == Status::held;
    if (Status::isFinal(before) && !Status::isFinal(*o.status))
        o.report(impossible, o.call->path + " goes from " + status(before) + " to " + status(*o.status) + '.');
    else if (wasUp && isRinging)
        o.report(impossible, o.call->path + " rings again: from " + status(before) + " to " + status(*o.status) + '.');
    else if (before == *o.status && o.call->status == before && !o.call->memory.of<Correction>().isAwaited)
        o.report(repeated, o.call->path + " sends " + status(before) + " again.");
});

struct PropertyStatus
{
    bool isTold = true;
};

const Check changed({Event::PropertyChanged}, [](const Occasion &o) {
    if (!o.call || !o.call->isKnown || o.call->isGone || textOf(child(o.message.body, 0).get()) != Names::call)
        return;
    const Variant properties = child(o.message.body, 1);
    forEachEntry(properties.get(), [&o](std::string_view name, GVariant *value) {
        const std::string what = o.call->path + " tells with PropertiesChanged that " + std::string(name) + " is now "
            + printed(value) + '.';
        if (name != "Status") {
            o.report(unheard, what, name);
            return;
        }
        if (Report::asNumber(value) == o.call->sent)
            return;
        o.call->memory.of<PropertyStatus>().isTold = false;
        o.later(500 * milliseconds, [what](const Occasion &later) {
            if (!later.call->memory.of<PropertyStatus>().isTold)
                later.report(onlyProperty, what);
        });
    });
});

const Check told({Event::StatusSent, Event::CallEnds}, [](const Occasion &o) {
    if (o.call)
        o.call->memory.of<PropertyStatus>().isTold = true;
});

} // namespace
