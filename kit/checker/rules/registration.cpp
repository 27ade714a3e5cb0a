// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "analysis/analysis.h"
#include "analysis/names.h"

#include <algorithm>
#include <utility>

static const Rule noHost("registration", "no-host", Severity::Error,
    {"There is no host on the bus at which to register.", "Without a host nobody shows calls.",
        "Start the host, or look whether the application is on the same session bus; watch the host's name and "
        "register "
        "when it is taken.",
        "call RegisterCallManager → error ServiceUnknown",
        "signal NameOwnerChanged (host's name, \"\", \":1.9\")\ncall RegisterCallManager → reply"},
    {"*"});

static const Rule callWrong("registration", "register-call-wrong", Severity::Error,
    {"RegisterCallManager was called with another interface, path, destination or type than the host has.",
        "The host refuses the call, so the application is not registered and none of its calls shows.",
        "Call zelkovar.Call.Service1.RegisterCallManager at /zelkovar/call/service with one object path (type o).",
        "call RegisterCallManager (\"/calls\") of type s",
        "call RegisterCallManager (objectpath \"/calls\") of type o"},
    {"*"});

static const Rule again("registration", "registered-again", Severity::Note,
    {"A path was registered that this connection has registered already.", "The host drops it and answers as ever.",
        "Register once for each time that the host's name is taken.",
        "call RegisterCallManager (\"/calls\"), twice with the same host",
        "call RegisterCallManager (\"/calls\"), once with every host"});

static const Rule newHost("registration", "not-registered-with-new-host", Severity::Error,
    {"The host was restarted, and the application has not registered with the new one.",
        "A new host knows nobody, so the calls are gone from the list.",
        "Watch the owner of the host's name and register every time that it is taken.",
        R"(signal NameOwnerChanged (host's name, "", ":1.20"), and nothing)",
        "signal NameOwnerChanged (host's name, \"\", \":1.20\")\ncall RegisterCallManager (\"/calls\")"},
    {"*"});

static const Rule andLeft("registration", "registered-and-left", Severity::Error,
    {"The connection that registered has left the bus, and its process goes on without it.",
        "A registration ends with the connection that made it.",
        "Register on the connection that has the objects, and keep it open.",
        R"(call RegisterCallManager from :1.7, NameOwnerChanged (":1.7", ":1.7", ""))",
        "call RegisterCallManager from the connection that stays"},
    {"*"});

static const Rule notRegistered("registration", "not-registered", Severity::Error,
    {"The application has calls on the bus, and is not registered.",
        "The host asks and listens only where it was registered.",
        "Call RegisterCallManager on this connection with the path of the object manager.",
        "signal InterfacesAdded with zelkovar.Call.Call1, without RegisterCallManager before",
        "call RegisterCallManager (\"/calls\")\nsignal InterfacesAdded from /calls"},
    {"*"});

namespace {

bool isNobody(std::string_view error)
{
    return error == "org.freedesktop.DBus.Error.ServiceUnknown" || error == "org.freedesktop.DBus.Error.NameHasNoOwner";
}

std::string mistakeIn(const Occasion &o)
{
    const Message &m = o.message;
    const auto instead
        = [](const char *what, std::string_view is) { return std::string(what) + " \"" + std::string(is) + '"'; };
    if (m.interface != Names::service && !m.interface.empty())
        return instead("interface", m.interface);
    if (m.path != Names::servicePath)
        return instead("object path", m.path);
    if (m.member != "RegisterCallManager")
        return instead("method", m.member);
    if (m.signature != "o")
        return instead("arguments of type", m.signature);
    return o.world.isHost(m.destination) ? "" : instead("destination", m.destination);
}

const Check called({Event::RegisterCalled}, [](const Occasion &o) {
    const std::string mistake = mistakeIn(o);
    if (!mistake.empty()) {
        o.application->cause = o.report(callWrong, "It tried to register with the " + mistake + '.');
        return;
    }
    // Whoever waited for the host has done well.
    Findings &findings = o.analysis.findings();
    const int cause = std::exchange(o.application->cause, -1);
    if (cause >= 0 && findings.all().at(static_cast<std::size_t>(cause)).rule == &noHost && !o.world.host.empty())
        findings.soften(cause);
    const auto manager = o.application->managers.find(o.object);
    if (manager != o.application->managers.end())
        o.report(again, "It registered " + std::string(o.object) + " again.");
});

const Check sought({Event::HostSought}, [](const Occasion &o) {
    if (o.world.host.empty())
        o.report(noHost, "Nobody owns the name " + o.world.hostName + '.');
});

const Check refused({Event::RegisterFailed}, [](const Occasion &o) {
    if (o.application->cause >= 0 || !isNobody(o.message.error))
        return;
    // Whoever tries and goes on to wait for the host does nothing wrong.
    o.later(1500 * milliseconds, [](const Occasion &later) {
        if (later.world.host.empty() && later.application->managers.empty())
            later.application->cause = later.report(
                noHost, "It called RegisterCallManager while nobody owns the name " + later.world.hostName + '.');
    });
});

struct Registered
{
    bool isEver = false;
};

const Check lost({Event::HostLeft},
    [](const Occasion &o) { o.application->memory.of<Registered>().isEver |= !o.application->managers.empty(); });

const Check appeared({Event::HostAppeared}, [](const Occasion &o) {
    if (!o.application->memory.of<Registered>().isEver)
        return;
    o.later(2000 * milliseconds, [](const Occasion &later) {
        if (later.application->managers.empty() && !later.world.host.empty())
            later.application->cause
                = later.report(newHost, "A new host has been there for two seconds, and it has not registered again.");
    });
});

// The findings of processes whose registered connection has gone: what others of them do follows from it.
struct Gone
{
    std::map<unsigned, int> causes;
};

// All connections of a process that ends go one behind the other; only one that goes alone is a mistake.
void lookWhoStays(const Occasion &o, const std::string &path, Time stayed)
{
    Finding finding;
    finding.rule = &andLeft;
    finding.application = o.application->name;
    finding.who = o.analysis.describe(*o.application);
    finding.path = path;
    finding.what
        = "It registered " + path + " and left the bus " + std::to_string(stayed / milliseconds) + " ms later.";
    finding.time = o.now();
    finding.number = o.message.number;
    o.analysis.schedule(o.now() + 500 * milliseconds,
        [&analysis = o.analysis, &world = o.world, pid = o.application->pid, finding](Time) {
            const bool isAlone = std::none_of(world.processes.begin(), world.processes.end(),
                [pid](const auto &process) { return process.second == pid; });
            if (!isAlone)
                world.memory.of<Gone>().causes[pid] = analysis.findings().add(finding);
        });
}

const Check leaving({Event::Left}, [](const Occasion &o) {
    const auto &managers = o.application->managers;
    const bool hadCalls = std::any_of(o.application->calls.begin(), o.application->calls.end(),
        [](const auto &entry) { return entry.second.isKnown; });
    if (managers.empty() || hadCalls || managers.begin()->second.wasListed)
        return;
    const Time stayed = o.now() - managers.begin()->second.registeredAt;
    if (stayed < 2000 * milliseconds && o.application->pid != 0)
        lookWhoStays(o, managers.begin()->first, stayed);
});

const Check unregistered({Event::Announced}, [](const Occasion &o) {
    const auto &causes = o.world.memory.of<Gone>().causes;
    const auto gone = causes.find(o.application->pid);
    if (o.application->managers.empty() && o.application->cause < 0 && gone != causes.end())
        o.application->cause = gone->second;
    if (o.call && !o.call->isKnown && o.application->cause >= 0)
        o.call->cause = o.application->cause;
    const bool isStranger = o.application->managers.empty() && o.application->cause < 0 && o.application->isBorn;
    if (!isStranger || !o.call || !o.world.siblingsOf(*o.application).empty())
        return;
    o.later(1000 * milliseconds, [](const Occasion &later) {
        if (later.application->managers.empty() && later.application->cause < 0 && !later.world.host.empty())
            later.application->cause = later.report(
                notRegistered, "It announced the call " + std::string(later.object) + " and has not registered.");
    });
});

// Somebody has looked: it has calls, and nobody knows of them.
const Check found({Event::ProbeAnswered}, [](const Occasion &o) {
    if (!o.application->managers.empty() || o.application->cause >= 0)
        return;
    o.later(1500 * milliseconds, [](const Occasion &later) {
        if (later.application->managers.empty() && later.application->cause < 0 && !later.world.host.empty())
            later.application->cause = later.report(
                notRegistered, "It has calls at " + std::string(later.object) + " and is not registered.");
    });
});

} // namespace
