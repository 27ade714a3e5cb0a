// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "analysis/analysis.h"
#include "analysis/names.h"
#include "analysis/report.h"

#include <algorithm>

static const Rule notAnnounced("announcing", "not-announced", Severity::Error,
    {"A call was added without InterfacesAdded.",
        "The host asks for the objects once and learns of later ones from InterfacesAdded only, so the call does not "
        "show.",
        "Send InterfacesAdded (oa{sa{sv}}) from the registered path when the call begins.",
        "(export /calls/one)\nsignal StatusChanged from /calls/one",
        "(export /calls/one)\nsignal InterfacesAdded (\"/calls/one\", {\"zelkovar.Call.Call1\": {...}}) from /calls"},
    {"status-elsewhere"});

static const Rule elsewhere("announcing", "announced-elsewhere", Severity::Error,
    {"A call was announced from another path or connection than the registered one.",
        "The host listens to the registered path of the registered connection only, so the call does not show.",
        "Send InterfacesAdded from the path that was registered, on the connection that registered it.",
        "signal InterfacesAdded (\"/calls/one\", ...) from /calls/one",
        "signal InterfacesAdded (\"/calls/one\", ...) from /calls"},
    {"not-announced", "status-elsewhere", "not-registered"});

static const Rule type("announcing", "announcement-type", Severity::Error,
    {"InterfacesAdded has another type than oa{sa{sv}}.",
        "The host drops such a signal without a word, so the call does not show.",
        "Send an object path, and its interfaces with their properties as variants: oa{sa{sv}}.",
        R"(signal InterfacesAdded ("/calls/one", ["zelkovar.Call.Call1"]) of type oas)",
        R"(signal InterfacesAdded ("/calls/one", {"zelkovar.Call.Call1": {...}}) of type oa{sa{sv}})"},
    {"not-announced", "status-elsewhere"});

static const Rule inSnapshot("announcing", "announced-and-in-snapshot", Severity::Warning,
    {"A call was announced, and it is in the answer to GetManagedObjects as well.",
        "The host does not reconcile the two and reports the call twice; whatever listens to it counts two.",
        "Announce only calls that began behind the answer, and leave those out of it that you announce.",
        "signal InterfacesAdded (\"/calls/one\", ...)\nreply to GetManagedObjects with /calls/one",
        "reply to GetManagedObjects with /calls/one, and no InterfacesAdded for it"},
    {"announced-twice", "announced-too-early"});

static const Rule twice("announcing", "announced-twice", Severity::Warning,
    {"A call was announced that the host knows already.",
        "Properties are read from the first report only, and the host tells everybody of the call once more.",
        "Announce every call once, with all that it has.",
        R"(signal InterfacesAdded ("/calls/one", {"zelkovar.Call.Call1": {...}}), twice)",
        R"(signal InterfacesAdded ("/calls/one", {"zelkovar.Call.Call1": {...}}), once)"});

static const Rule tooSoon("announcing", "announced-too-early", Severity::Error,
    {"A call was announced before the registration was answered, and the host has not heard it.",
        "The host subscribes while it registers the application; what is said before is lost.",
        "Wait for the reply to RegisterCallManager, and announce then.",
        "call RegisterCallManager\nsignal InterfacesAdded\nreply to RegisterCallManager",
        "call RegisterCallManager\nreply to RegisterCallManager\nsignal InterfacesAdded"},
    {"status-too-early", "not-announced", "status-elsewhere", "removed-without-status"});

static const Rule callLate("announcing", "call-interface-late", Severity::Error,
    {"DTMF1 or AudioControl1 was reported before Call1.",
        "What an object carried before it was a call is forgotten: the call has no tones, or does not follow the "
        "audio.",
        "Send all interfaces of a call in one InterfacesAdded.",
        "signal InterfacesAdded (\"/calls/one\", {\"zelkovar.Call.DTMF1\": {}})\n"
        "signal InterfacesAdded (\"/calls/one\", {\"zelkovar.Call.Call1\": {...}})",
        R"(signal InterfacesAdded ("/calls/one", {"zelkovar.Call.Call1": {...}, "zelkovar.Call.DTMF1": {}}))"},
    {"request-too-early"});

static const Rule pathReused("several calls", "path-reused-at-once", Severity::Warning,
    {"A new call has the path of one that has just been removed.",
        "Commands that were on their way to the old call reach the new one.",
        "Give every call a path of its own, for example with a number that counts up.",
        "signal InterfacesRemoved (\"/calls/one\", ...)\nsignal InterfacesAdded (\"/calls/one\", ...)",
        "signal InterfacesRemoved (\"/calls/one\", ...)\nsignal InterfacesAdded (\"/calls/two\", ...)"});

namespace {

constexpr Time justNow = 1000 * milliseconds;

std::string registeredPaths(const Application &application)
{
    std::string paths;
    for (const auto &[path, manager] : application.managers)
        paths += (paths.empty() ? "" : ", ") + path;
    return paths;
}

// The application that registered, when this connection has not: one of the same process.
// Where the host has found nothing, it is that registration which is wrong.
Application *registeredSibling(const Occasion &o)
{
    if (!o.application->managers.empty())
        return nullptr;
    for (Application *sibling : o.world.siblingsOf(*o.application)) {
        const auto manager = sibling->managers.find(o.managerPath);
        if (manager != sibling->managers.end() && !manager->second.hasFailed)
            return sibling;
    }
    return nullptr;
}

std::string whereFrom(const Occasion &o)
{
    if (!o.application->managers.empty() && !o.manager)
        return "from " + std::string(o.managerPath) + ", but " + registeredPaths(*o.application) + " is registered";
    const Application *sibling = registeredSibling(o);
    return sibling ? "on the connection " + o.application->name + ", but " + sibling->name + " is registered" : "";
}

// The same call, as the connection knows it that is registered.
void misplaced(const Occasion &o, int cause)
{
    o.call->cause = cause;
    if (Application *sibling = registeredSibling(o))
        sibling->calls.emplace(o.object, Call(std::string(o.object))).first->second.cause = cause;
}

const Check announced({Event::Announced}, [](const Occasion &o) {
    if (!o.call || o.call->isKnown)
        return;
    if (o.manager && o.manager->cause >= 0 && !o.interfaces)
        o.call->cause = o.manager->cause;
    const std::string where = whereFrom(o);
    if (o.message.signature != Names::reportType && o.manager)
        o.call->cause = o.report(type,
            "InterfacesAdded for " + std::string(o.object) + " has the type \"" + std::string(o.message.signature)
                + "\".");
    else if (!where.empty() && o.interfaces)
        misplaced(o, o.report(elsewhere, "It announced " + std::string(o.object) + ' ' + where + '.'));
});

void judgeRepeated(const Occasion &o)
{
    const std::string path(o.object);
    if (!Report::has(o.interfaces, Names::call))
        return;
    if (o.isSnapshot != o.call->isFromSnapshot || (o.manager && o.now() - o.manager->askedAt < justNow && o.isSnapshot))
        o.report(inSnapshot, path + " was announced and is in the answer to GetManagedObjects.");
    else
        o.report(twice, path + " was announced again while the host knew it.");
}

const Check reported({Event::Reported}, [](const Occasion &o) {
    if (!o.call || !Report::has(o.interfaces, Names::call))
        return;
    if (o.call->isKnown)
        return judgeRepeated(o);
    for (const auto &name : o.call->forgotten) {
        if (name != Names::call && Report::meantInterface(name).empty() && !Report::has(o.interfaces, name))
            o.report(callLate, name + " of " + std::string(o.object) + " was reported before zelkovar.Call.Call1.");
    }
});

const Check beforehand({Event::Announced}, [](const Occasion &o) {
    if (!o.application->managers.empty() || !o.call || !o.application->isBorn)
        return;
    const std::string path(o.managerPath);
    o.later(justNow, [path](const Occasion &later) {
        const auto manager = later.application->managers.find(path);
        if (manager != later.application->managers.end() && !later.call->isKnown && later.call->cause < 0)
            later.call->cause = later.report(
                tooSoon, later.call->path + " was announced before RegisterCallManager, and the host did not hear it.");
    });
});

const Check early({Event::Reported}, [](const Occasion &o) {
    if (o.isSnapshot || !o.call || !Report::has(o.interfaces, Names::call) || o.call->isKnown || o.manager->isReplied)
        return;
    o.later(justNow, [](const Occasion &later) {
        if (!later.call->isShown && !later.call->isFromSnapshot)
            later.call->cause = later.report(tooSoon,
                later.call->path
                    + " was announced between RegisterCallManager and its reply, and the host does not "
                      "show it.");
    });
});

struct Paths
{
    ByName<Time> removed;
};

const Check ended({Event::CallEnds}, [](const Occasion &o) {
    auto &removed = o.application->memory.of<Paths>().removed;
    for (auto entry = removed.begin(); entry != removed.end();)
        entry = o.now() - entry->second > justNow ? removed.erase(entry) : std::next(entry);
    removed[o.call->path] = o.now();
});

const Check reused({Event::Reported}, [](const Occasion &o) {
    if (!o.call || o.call->isKnown || !Report::has(o.interfaces, Names::call))
        return;
    const auto &removed = o.application->memory.of<Paths>().removed;
    const auto before = removed.find(o.object);
    if (before != removed.end() && o.now() - before->second < justNow)
        o.report(pathReused,
            std::string(o.object) + " is used again " + std::to_string((o.now() - before->second) / milliseconds)
                + " ms after the call there was removed.");
});

bool isKnown(const Occasion &o, std::string_view path)
{
    const auto call = o.application->calls.find(path);
    return call != o.application->calls.end()
        && (call->second.isKnown || call->second.isGone || call->second.cause >= 0);
}

void missing(const Occasion &o, const std::string &evidence)
{
    const std::string path(o.object);
    o.later(justNow, [path, evidence](const Occasion &later) {
        if (isKnown(later, path) || later.world.host.empty() || later.application->managers.empty())
            return;
        const int cause = later.report(notAnnounced, path + ' ' + evidence + ", and was never announced.", path);
        for (const auto &[name, manager] : later.application->managers) {
            if (manager.cause >= 0)
                later.analysis.findings().follow(manager.cause, path + " is not shown.");
        }
        Call &call = later.application->calls.emplace(path, Call(path)).first->second;
        call.cause = cause;
    });
}

// Seen by somebody who asked in between.
const Check probed({Event::ProbeAnswered}, [](const Occasion &o) {
    if (!o.manager || o.manager->wasListed || o.message.signature != Names::snapshotType || o.application->cause >= 0)
        return;
    const Variant objects = child(o.message.body, 0);
    forEachEntry(objects.get(), [&o](std::string_view path, GVariant *interfaces) {
        Occasion at = o;
        at.object = path;
        if (Report::has(interfaces, Names::call) && !isKnown(o, path))
            missing(at, "is in GetManagedObjects");
    });
});

// It says something, and nobody has heard of it.
const Check spoke({Event::StatusSent}, [](const Occasion &o) {
    const bool hasCalls = std::any_of(o.application->calls.begin(), o.application->calls.end(),
        [](const auto &entry) { return entry.second.isKnown; });
    if (!o.call && !hasCalls && !o.application->managers.empty() && o.application->cause < 0)
        missing(o, "sends StatusChanged");
});

} // namespace
