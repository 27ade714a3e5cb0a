// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "analysis/analysis.h"
#include "analysis/names.h"

static const Rule error("snapshot", "snapshot-error", Severity::Error,
    {"GetManagedObjects was answered with an error.",
        "The host asks once and does not ask again, so calls that exist by then never show.",
        "Answer GetManagedObjects with all objects, also when there is none: an empty a{oa{sa{sv}}}.",
        "call GetManagedObjects → error org.example.Error.Broken", "call GetManagedObjects → {}"},
    {"not-announced", "status-elsewhere"});

static const Rule unanswered("snapshot", "snapshot-unanswered", Severity::Error,
    {"GetManagedObjects was not answered within two seconds.",
        "Until the answer comes, calls that existed at the registration do not show.",
        "Answer from the main loop, and let nothing block it; register when the loop runs.",
        "call GetManagedObjects, and nothing", "call GetManagedObjects → reply at once"},
    {"snapshot-late", "not-announced", "status-elsewhere", "announced-and-in-snapshot"});

static const Rule late("snapshot", "snapshot-late", Severity::Warning,
    {"GetManagedObjects was answered late.",
        "Until then calls do not show, and what is announced meanwhile may be reported twice.",
        "Answer at once with what there is.", "call GetManagedObjects → reply a second later",
        "call GetManagedObjects → reply at once"},
    {"announced-and-in-snapshot"});

static const Rule type("snapshot", "snapshot-type", Severity::Error,
    {"The answer to GetManagedObjects has another type than a{oa{sa{sv}}}.",
        "The host takes such an answer for an error, and calls that exist by then never show.",
        "Answer with objects, their interfaces and their properties: a{oa{sa{sv}}}.",
        "call GetManagedObjects → ao [\"/calls/one\"]",
        "call GetManagedObjects → a{oa{sa{sv}}} {\"/calls/one\": {\"zelkovar.Call.Call1\": {...}}}"},
    {"not-announced", "status-elsewhere"});

namespace {

constexpr Time patience = 2000 * milliseconds;
constexpr Time atOnce = 500 * milliseconds;

std::string at(const Occasion &o) { return "GetManagedObjects at " + std::string(o.object); }

const Check asked({Event::Asked}, [](const Occasion &o) {
    const std::string path(o.object);
    o.later(patience, [path, askedAt = o.now()](const Occasion &later) {
        const auto manager = later.application->managers.find(path);
        // Another host may have asked since.
        if (manager != later.application->managers.end() && manager->second.askedAt == askedAt
            && !manager->second.isAnswered && !manager->second.hasFailed)
            manager->second.cause
                = later.report(unanswered, "The host's " + at(later) + " has not been answered for two seconds.", path);
    });
});

// Whoever leaves with the question lying was not going to answer it.
const Check leaving({Event::Left}, [](const Occasion &o) {
    for (const auto &[path, manager] : o.application->managers) {
        if (manager.askedAt != 0 && !manager.isAnswered && !manager.hasFailed && o.now() - manager.askedAt > atOnce / 5)
            o.report(unanswered,
                "It left the bus without having answered the host's GetManagedObjects at " + path + '.', path);
    }
});

const Check answered({Event::SnapshotAnswered}, [](const Occasion &o) {
    const Time took = o.now() - o.manager->askedAt;
    if (took > atOnce)
        o.report(late, at(o) + " was answered after " + std::to_string(took / milliseconds) + " ms.", o.object);
    if (o.message.signature.substr(0, Names::snapshotType.size()) != Names::snapshotType)
        o.manager->cause = o.report(type,
            at(o) + " was answered with the type \"" + std::string(o.message.signature) + "\", not a{oa{sa{sv}}}.",
            o.object);
});

bool isNothingThere(std::string_view name)
{
    return name == "org.freedesktop.DBus.Error.UnknownObject" || name == "org.freedesktop.DBus.Error.UnknownMethod"
        || name == "org.freedesktop.DBus.Error.UnknownInterface";
}

void fail(const Occasion &o)
{
    // Another error than that nothing is there: that has rules of its own.
    if (isNothingThere(o.message.error))
        return;
    const bool isNoReply = o.message.error == "org.freedesktop.DBus.Error.NoReply"
        || o.message.error == "org.freedesktop.DBus.Error.Timeout";
    o.manager->cause = isNoReply
        ? o.report(unanswered, at(o) + " was not answered.", o.object)
        : o.report(error, at(o) + " was answered with " + std::string(o.message.error) + '.', o.object);
}

const Check failed({Event::SnapshotFailed}, fail);

// Asked by somebody else, when the host's own question was not seen.
const Check probeFailed({Event::ProbeFailed}, [](const Occasion &o) {
    if (o.manager && o.manager->wasListed)
        fail(o);
});

const Check probed({Event::ProbeAnswered}, [](const Occasion &o) {
    if (o.manager && o.manager->wasListed && o.message.signature != Names::snapshotType)
        o.manager->cause = o.report(type,
            at(o) + " is answered with the type \"" + std::string(o.message.signature) + "\", not a{oa{sa{sv}}}.",
            o.object);
});

} // namespace
