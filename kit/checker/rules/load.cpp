// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "analysis/analysis.h"
#include "analysis/names.h"

#include <algorithm>

static const Rule twoActive("several calls", "two-active-calls", Severity::Warning,
    {"Two calls of the application are active at once.",
        "The host holds no call by itself: both far ends are heard, and hear.",
        "Hold the first call (StatusChanged 7) before another becomes active, unless it is a conference.",
        "signal StatusChanged (5) from /calls/two while /calls/one is active",
        "signal StatusChanged (7) from /calls/one\nsignal StatusChanged (5) from /calls/two"});

static const Rule flood("weight", "flood", Severity::Warning,
    {"The application sends more signals than a call can need.",
        "Each wakes the host and all that follow it, and a few thousand a second keep it from its work.",
        "Send a signal when something has changed.", "300 signals StatusChanged in a second",
        "signal StatusChanged when the status has changed"});

static const Rule large("weight", "large-message", Severity::Warning,
    {"A message is larger than a call can need.",
        "The host reads it whole and passes it on to everybody who listens; above the bus's limit the sender is thrown "
        "out.",
        "Send names and addresses; leave pictures and texts out of the properties.",
        "InterfacesAdded with a RemoteName of a million letters", "InterfacesAdded of a few hundred bytes"});

namespace {

constexpr std::size_t largest = 65536;
constexpr unsigned mostInASecond = 300;

struct Rate
{
    Time since = 0;
    unsigned count = 0;
};

const Check signalled({Event::Signalled}, [](const Occasion &o) {
    if (!o.application || o.message.kind != Message::Kind::Signal)
        return;
    const std::string_view interface = o.message.interface;
    const bool isOfCalls = interface == Names::call || interface == Names::audio || interface == Names::objectManager;
    if (!isOfCalls)
        return;
    if (o.message.size > largest)
        o.report(large, "A message of it has " + std::to_string(o.message.size) + " bytes.");
    Rate &rate = o.application->memory.of<Rate>();
    if (o.now() - rate.since > 1000 * milliseconds)
        rate = {o.now(), 0};
    if (++rate.count == mostInASecond)
        o.report(flood, "It sent " + std::to_string(mostInASecond) + " signals of calls within a second.");
});

bool isUp(const Call &call) { return call.isKnown && !call.isGone && Status::isActive(call.sent); }

const Check active({Event::StatusSent, Event::Reported}, [](const Occasion &o) {
    const bool isAnswered = o.status && Status::isActive(*o.status);
    if (!o.call || !o.application || o.application->calls.size() < 2 || (o.event == Event::StatusSent && !isAnswered))
        return;
    o.later(1500 * milliseconds, [](const Occasion &later) {
        if (!isUp(*later.call))
            return;
        for (const auto &[path, other] : later.application->calls) {
            if (&other != later.call && isUp(other)) {
                later.report(
                    twoActive, path + " and " + later.call->path + " have both been active for over a second.");
                return;
            }
        }
    });
});

} // namespace
