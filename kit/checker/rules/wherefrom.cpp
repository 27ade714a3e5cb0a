// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// The host found no object manager at the path that was registered: why. What is seen next tells it.

#include "analysis/analysis.h"
#include "analysis/names.h"
#include "analysis/report.h"

static const Rule wrongPath("registration", "registered-wrong-path", Severity::Error,
    {"The path that was registered is not the one of the object manager.",
        "The host asks for calls and listens to announcements at the registered path only, so no call shows.",
        "Register the path that answers to GetManagedObjects.",
        "call RegisterCallManager (\"/org/example\")\nsignal InterfacesAdded from /org/example/calls",
        "call RegisterCallManager (\"/org/example/calls\")\nsignal InterfacesAdded from /org/example/calls"},
    {"*"});

static const Rule otherConnection("registration", "registered-other-connection", Severity::Error,
    {"The connection that registered is not the one that has the objects.",
        "A registration counts for the connection that made it, and the host looks for the objects there.",
        "Register and export on one connection; most libraries share one connection when they are asked for it.",
        "call RegisterCallManager (\"/calls\") from :1.7\nsignal InterfacesAdded from :1.8 /calls",
        "call RegisterCallManager (\"/calls\") from :1.8\nsignal InterfacesAdded from :1.8 /calls"},
    {"not-announced", "announced-elsewhere", "status-elsewhere"});

static const Rule tooEarly("registration", "registered-too-early", Severity::Warning,
    {"The object manager was exported behind the registration.",
        "The host asks for the calls once, at once: those that exist by then are never seen.",
        "Export the object manager first, and register then.",
        "call RegisterCallManager (\"/calls\")\ncall GetManagedObjects → error UnknownObject\n(export /calls)",
        "(export /calls)\ncall RegisterCallManager (\"/calls\")\ncall GetManagedObjects → reply"},
    {"not-announced", "status-elsewhere", "snapshot-error", "ended-not-removed"});

namespace {

bool isNothingThere(std::string_view error)
{
    return error == "org.freedesktop.DBus.Error.UnknownObject" || error == "org.freedesktop.DBus.Error.UnknownMethod"
        || error == "org.freedesktop.DBus.Error.UnknownInterface";
}

struct Missing
{
    bool isOpen = false;
    std::string path;
};

std::string asked(const Missing &missing)
{
    return "It registered " + missing.path + ", where nothing answers to GetManagedObjects";
}

void settle(const Occasion &o, Application &application, const Rule &rule, const std::string &what)
{
    auto &missing = application.memory.of<Missing>();
    Occasion at = o;
    at.application = &application;
    at.call = nullptr;
    at.object = missing.path;
    const int cause = at.report(rule, what);
    const auto manager = application.managers.find(missing.path);
    if (&rule != &tooEarly)
        application.cause = cause;
    else if (manager != application.managers.end())
        manager->second.cause = cause;
    missing.isOpen = false;
}

void lookFor(const Occasion &o)
{
    if (!isNothingThere(o.message.error))
        return;
    o.application->memory.of<Missing>() = {true, std::string(o.object)};
    o.later(1200 * milliseconds, [](const Occasion &later) {
        auto &missing = later.application->memory.of<Missing>();
        if (missing.isOpen)
            settle(later, *later.application, wrongPath, asked(missing) + '.');
    });
}

const Check failed({Event::SnapshotFailed}, lookFor);

// Objects seen at a path of the application itself.
void seenAt(const Occasion &o, std::string_view path)
{
    auto &missing = o.application->memory.of<Missing>();
    if (!missing.isOpen)
        return;
    if (path != missing.path)
        settle(o, *o.application, wrongPath, asked(missing) + "; its object manager is at " + std::string(path) + '.');
    else
        settle(o, *o.application, tooEarly, asked(missing) + " when the host asked; it came there later.");
}

// Objects seen on another connection of the process, or of an unknown one at the very path.
void seenOnSibling(const Occasion &o, std::string_view path)
{
    for (auto &[name, other] : o.world.applications) {
        const bool isSibling = other.pid != 0 ? other.pid == o.application->pid : o.application->pid == 0;
        auto &missing = other.memory.of<Missing>();
        if (&other == o.application || !isSibling || !missing.isOpen || missing.path != path)
            continue;
        settle(o, other, otherConnection,
            asked(missing) + "; another connection of the same process, " + o.application->name + ", has it.");
        o.application->cause = other.cause;
    }
}

const Check announced({Event::Announced}, [](const Occasion &o) {
    if (!o.call)
        return;
    if (o.application->managers.empty())
        seenOnSibling(o, o.managerPath);
    else
        seenAt(o, o.managerPath);
    if (o.application->cause >= 0 && !o.call->isKnown)
        o.call->cause = o.application->cause;
});

const Check probed({Event::ProbeAnswered}, [](const Occasion &o) {
    if (o.message.signature != Names::snapshotType)
        return;
    if (o.application->managers.empty())
        seenOnSibling(o, o.managerPath);
    else
        seenAt(o, o.managerPath);
});

const Check leaving({Event::Left}, [](const Occasion &o) {
    const Missing missing = o.application->memory.of<Missing>();
    if (missing.isOpen)
        settle(o, *o.application, wrongPath, asked(missing) + '.');
});

// Asked by somebody else, for the host's own question was not seen.
const Check probeFailed({Event::ProbeFailed}, [](const Occasion &o) {
    if (o.manager && o.manager->wasListed)
        lookFor(o);
});

} // namespace
