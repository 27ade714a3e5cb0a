// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "analysis/analysis.h"
#include "analysis/names.h"
#include "analysis/variants.h"

#include <algorithm>

static const Rule notRemoved("ending", "ended-not-removed", Severity::Error,
    {"A call has ended and its object was not removed.", "The host goes on to show it as disconnected.",
        "Send InterfacesRemoved with zelkovar.Call.Call1 from the registered path, right behind the final status.",
        "signal StatusChanged (1), and nothing",
        "signal StatusChanged (1)\nsignal InterfacesRemoved (\"/calls/one\", [\"zelkovar.Call.Call1\"])"});

static const Rule withoutStatus("ending", "removed-without-status", Severity::Warning,
    {"A call was removed without a final status.",
        "It vanishes from the list without having been shown as ended, so a history may call it missed or cut off.",
        "Send StatusChanged (1) before InterfacesRemoved.",
        R"(signal InterfacesRemoved ("/calls/one", ["zelkovar.Call.Call1"]) of an active call)",
        "signal StatusChanged (1)\nsignal InterfacesRemoved (\"/calls/one\", [\"zelkovar.Call.Call1\"])"});

static const Rule withoutInterface("ending", "removed-without-call-interface", Severity::Error,
    {"InterfacesRemoved does not name zelkovar.Call.Call1.",
        "The removal of Call1 is what ends a call; until then the host goes on to show it.",
        "Name all interfaces of the object in InterfacesRemoved, zelkovar.Call.Call1 above all.",
        R"(signal InterfacesRemoved ("/calls/one", ["zelkovar.Call.DTMF1"]))",
        R"(signal InterfacesRemoved ("/calls/one", ["zelkovar.Call.Call1", "zelkovar.Call.DTMF1"]))"},
    {"ended-not-removed", "signal-behind-removal"});

static const Rule elsewhere("ending", "removed-elsewhere", Severity::Error,
    {"A call was removed from another path or connection than the registered one.",
        "The host listens to the registered path of the registered connection only, and goes on to show the call.",
        "Send InterfacesRemoved from the path from which the call was announced.",
        "signal InterfacesRemoved (\"/calls/one\", ...) from /calls/one",
        "signal InterfacesRemoved (\"/calls/one\", ...) from /calls"},
    {"ended-not-removed", "signal-behind-removal"});

static const Rule type("ending", "removal-type", Severity::Error,
    {"InterfacesRemoved has another type than oas.",
        "The host drops such a signal without a word, and goes on to show the call.",
        "Send the object path and an array of interface names: oas.",
        "signal InterfacesRemoved (\"/calls/one\") of type o",
        R"(signal InterfacesRemoved ("/calls/one", ["zelkovar.Call.Call1"]) of type oas)"},
    {"ended-not-removed", "signal-behind-removal"});

static const Rule behind("ending", "signal-behind-removal", Severity::Note,
    {"A signal of a call came behind its removal.", "Nobody listens to it any more.",
        "Send the final status first, and remove the object then.",
        "signal InterfacesRemoved (\"/calls/one\", ...)\nsignal StatusChanged (1) from /calls/one",
        "signal StatusChanged (1) from /calls/one\nsignal InterfacesRemoved (\"/calls/one\", ...)"});

static const Rule left("ending", "left-with-calls", Severity::Note,
    {"The application left the bus with calls.", "The host takes them out of its list at once.",
        "End the calls before leaving, where there is time to.", R"(NameOwnerChanged (":1.7", ":1.7", ""))",
        "signal StatusChanged (1)\nsignal InterfacesRemoved (\"/calls/one\", ...)\n"
        "NameOwnerChanged (\":1.7\", \":1.7\", \"\")"});

namespace {

constexpr Time soon = 700 * milliseconds;
constexpr Time patience = 3000 * milliseconds;

const Check ended({Event::StatusSent}, [](const Occasion &o) {
    const bool isHeard = o.call && o.call->isKnown && !o.call->isGone && o.status;
    if (!isHeard || !Status::isFinal(*o.status) || (Status::isFinal(o.call->sent) && o.call->hasStatus))
        return;
    o.later(patience, [](const Occasion &later) {
        if (Status::isFinal(later.call->sent))
            later.report(notRemoved, later.call->path + " ended three seconds ago and is still there.");
    });
});

bool names(GVariant *interfaces, std::string_view wanted)
{
    for (gsize i = 0, count = g_variant_n_children(interfaces); i < count; ++i) {
        if (textOf(child(interfaces, i).get()) == wanted)
            return true;
    }
    return false;
}

void lookAgain(const Occasion &o, const Rule &rule, const std::string &what)
{
    // Whoever puts it right at once has only been untidy.
    o.later(soon, [&rule, what](const Occasion &later) { later.report(rule, what); });
}

void judgeForeign(const Occasion &o)
{
    for (Application *sibling : o.world.siblingsOf(*o.application)) {
        const auto call = sibling->calls.find(o.object);
        if (call == sibling->calls.end() || !call->second.isKnown || call->second.isGone)
            continue;
        Occasion at = o;
        at.application = sibling;
        at.call = &call->second;
        lookAgain(at, elsewhere,
            "InterfacesRemoved for " + std::string(o.object) + " came on the connection " + o.application->name
                + ", but the call belongs to this one.");
    }
}

const Check removed({Event::Removed}, [](const Occasion &o) {
    if (!o.call)
        return judgeForeign(o);
    if (!o.call->isKnown || o.call->isGone)
        return;
    const std::string of = "InterfacesRemoved for " + o.call->path;
    if (!o.interfaces)
        lookAgain(o, type, of + " has the type \"" + std::string(o.message.signature) + "\".");
    else if (!names(o.interfaces, Names::call))
        lookAgain(o, withoutInterface, of + " names " + printed(o.interfaces) + '.');
    else if (!o.manager)
        lookAgain(o, elsewhere, of + " came from " + std::string(o.managerPath) + '.');
});

const Check abrupt({Event::CallEnds}, [](const Occasion &o) {
    const bool hasLeft = o.message.member == "NameOwnerChanged";
    if (!hasLeft && !Status::isFinal(o.call->sent))
        o.report(withoutStatus,
            o.call->path + " was removed while its status was " + std::string(Status::wordOf(o.call->sent)) + '.');
});

const Check late({Event::StatusSent, Event::RequestSent}, [](const Occasion &o) {
    if (o.call && o.call->isGone)
        o.report(behind,
            std::string(o.message.member) + " of " + o.call->path + " came "
                + std::to_string((o.now() - o.call->removedAt) / milliseconds) + " ms behind its removal.");
});

const Check leaving({Event::Left}, [](const Occasion &o) {
    const auto count = std::count_if(o.application->calls.begin(), o.application->calls.end(),
        [](const auto &entry) { return entry.second.isKnown && !entry.second.isGone; });
    if (count > 0)
        o.report(left, "It left the bus with " + std::to_string(count) + (count == 1 ? " call." : " calls."));
});

} // namespace
