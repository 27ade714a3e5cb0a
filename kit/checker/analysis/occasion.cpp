// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "analysis/occasion.h"

#include "analysis/analysis.h"

#include <array>

static std::vector<Check::Look> &checksOf(Event event)
{
    static std::array<std::vector<Check::Look>, eventCount> checks;
    return checks.at(static_cast<std::size_t>(event));
}

Occasion::Occasion(Analysis &analysis, World &world, Event event, const Message &message, Application *application,
    Manager *manager, std::string_view managerPath)
    : analysis(analysis),
      world(world),
      event(event),
      message(message),
      application(application),
      manager(manager),
      managerPath(managerPath),
      object(managerPath)
{
}

Check::Check(std::initializer_list<Event> events, Look look)
{
    for (const Event event : events)
        checksOf(event).push_back(look);
}

void Check::run(const Occasion &occasion)
{
    for (const Look look : checksOf(occasion.event))
        look(occasion);
}

int Occasion::report(const Rule &rule, const std::string &what, std::string_view detail) const
{
    return report(rule, rule.severity, what, detail);
}

int Occasion::report(const Rule &rule, Severity severity, const std::string &what, std::string_view detail) const
{
    Finding finding;
    finding.rule = &rule;
    finding.severity = severity;
    finding.detail = detail;
    finding.what = what;
    finding.time = message.time;
    finding.number = message.number;
    if (application) {
        finding.application = application->name;
        finding.who = analysis.describe(*application);
    }
    if (call) {
        finding.path = call->path;
        finding.cause = call->cause;
    } else {
        finding.path = object;
    }
    if (finding.cause < 0 && application)
        finding.cause = application->cause;
    return analysis.findings().add(std::move(finding));
}

void Occasion::later(Time delay, const std::function<void(const Occasion &)> &look) const
{
    const std::string name = application ? application->name : std::string();
    const std::uint64_t applicationId = application ? application->id : 0;
    const std::string path(call ? std::string_view(call->path) : object);
    const std::uint64_t callId = call ? call->id : 0;
    const std::uint64_t number = message.number;
    analysis.schedule(message.time + delay, [=, &world = world, &analysis = analysis](Time now) {
        Message moment;
        moment.time = now;
        moment.number = number;
        Occasion occasion{analysis, world, Event::Signalled, moment};
        occasion.application = world.find(name);
        occasion.object = path;
        if (!name.empty() && (!occasion.application || occasion.application->id != applicationId))
            return;
        if (callId != 0) {
            occasion.call = world.findCall(name, path);
            if (!occasion.call || occasion.call->id != callId || occasion.call->isGone)
                return;
        }
        look(occasion);
    });
}
