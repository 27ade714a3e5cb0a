// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "analysis/calltracker.h"

#include "analysis/analysis.h"
#include "analysis/names.h"
#include "analysis/report.h"

#include <algorithm>

// How long a call that has gone is remembered, for what is still said about it.
static constexpr Time remembered = 5000 * milliseconds;

CallTracker::CallTracker(Analysis &analysis, World &world) : m_analysis(analysis), m_world(world) { }

Application &CallTracker::application(std::string_view name)
{
    if (Application *known = m_world.find(name))
        return *known;
    Application &made = m_world.applications[std::string(name)];
    made.name = name;
    made.id = m_analysis.nextId();
    made.isBorn = m_world.born.find(name) != m_world.born.end();
    const auto process = m_world.processes.find(name);
    made.pid = process == m_world.processes.end() ? 0 : process->second;
    return made;
}

Call &CallTracker::freshCall(Application &application, std::string_view path)
{
    const auto found = application.calls.find(path);
    if (found != application.calls.end() && !found->second.isGone)
        return found->second;
    if (found != application.calls.end())
        application.calls.erase(found);
    Call &call = application.calls.emplace(path, Call(std::string(path))).first->second;
    call.id = m_analysis.nextId();
    call.cause = application.cause;
    return call;
}

void CallTracker::signal(const Message &message)
{
    Application *sender = m_world.find(message.sender);
    Occasion occasion{m_analysis, m_world, Event::Signalled, message, sender};
    const bool isOfCalls = message.interface == Names::call || message.interface == Names::audio;
    if (!sender && isOfCalls && m_world.born.find(message.sender) != m_world.born.end())
        occasion.application = sender = &application(message.sender);
    if (sender)
        m_analysis.happen(occasion);
    if (message.interface == Names::objectManager)
        return message.member == "InterfacesAdded" ? announce(occasion) : remove(occasion);
    if (!sender)
        return;
    occasion.object = message.path;
    occasion.call = m_world.findCall(message.sender, message.path);
    if (message.member == "StatusChanged")
        return changeStatus(occasion);
    if (message.interface == Names::audio)
        occasion.event = Event::RequestSent;
    else if (message.isSignal(Names::properties, "PropertiesChanged") && message.signature == "sa{sv}as")
        occasion.event = Event::PropertyChanged;
    else
        return;
    m_analysis.happen(occasion);
}

void CallTracker::announce(Occasion occasion)
{
    const Message &message = occasion.message;
    const bool isReadable = message.signature == Names::reportType;
    const Variant object = message.body && g_variant_n_children(message.body) > 0 ? child(message.body, 0) : nullptr;
    const Variant interfaces = isReadable ? child(message.body, 1) : nullptr;
    const bool concernsCalls = isReadable && Report::concernsCalls(interfaces.get());
    if (!occasion.application && !concernsCalls)
        return;
    if (!occasion.application)
        occasion.application = &application(message.sender);
    Application &owner = *occasion.application;
    if (object && (hasType(object.get(), "o") || hasType(object.get(), "s")))
        occasion.object = textOf(object.get());
    occasion.managerPath = message.path;
    const auto manager = owner.managers.find(message.path);
    const bool isHeard = isReadable && manager != owner.managers.end();
    if (manager != owner.managers.end())
        occasion.manager = &manager->second;
    if (concernsCalls || (!isReadable && !occasion.object.empty()))
        occasion.call = &freshCall(owner, occasion.object);
    occasion.interfaces = interfaces.get();
    occasion.event = Event::Announced;
    m_analysis.happen(occasion);
    if (isHeard)
        report(occasion);
}

void CallTracker::report(Occasion occasion)
{
    occasion.event = Event::Reported;
    m_analysis.happen(occasion);
    Call *call = occasion.call;
    if (!call)
        return;
    if (call->isKnown || Report::has(occasion.interfaces, Names::call)) {
        const bool isFirst = !call->isKnown;
        if (isFirst) {
            Report::read(occasion.interfaces, call);
            call->isKnown = true;
            call->reportedAt = occasion.message.time;
            call->reportedIn = occasion.message.number;
            call->isFromSnapshot = occasion.isSnapshot;
            return;
        }
        forEachEntry(
            occasion.interfaces, [call](std::string_view name, GVariant *) { call->interfaces.emplace(name); });
    } else {
        forEachEntry(occasion.interfaces, [call](std::string_view name, GVariant *) { call->forgotten.emplace(name); });
    }
}

void CallTracker::readAll(const Message &message, Application &application, Manager &manager, std::string_view path)
{
    const Variant objects = child(message.body, 0);
    for (gsize i = 0, count = g_variant_n_children(objects.get()); i < count; ++i) {
        const Variant entry = child(objects.get(), i);
        const Variant object = child(entry.get(), 0);
        const Variant interfaces = child(entry.get(), 1);
        Occasion occasion{m_analysis, m_world, Event::Reported, message, &application, &manager, path};
        occasion.object = textOf(object.get());
        occasion.interfaces = interfaces.get();
        occasion.isSnapshot = true;
        if (Report::concernsCalls(interfaces.get()))
            occasion.call = &freshCall(application, occasion.object);
        report(occasion);
    }
}

void CallTracker::snapshot(const Message &message, Application &application, Manager &manager, std::string_view path)
{
    readAll(message, application, manager, path);
}

void CallTracker::assume(const Message &message, Application &application, Manager &manager, std::string_view path)
{
    std::set<std::uint64_t> before;
    for (const auto &[name, call] : application.calls)
        before.insert(call.id);
    readAll(message, application, manager, path);
    for (auto &[name, call] : application.calls) {
        if (before.count(call.id) == 0)
            call.wasAssumed = call.isShown = call.hasAudioState = true;
    }
}

bool CallTracker::holdsCalls(const Message &message)
{
    const Variant objects = child(message.body, 0);
    bool found = false;
    forEachEntry(objects.get(),
        [&found](std::string_view, GVariant *interfaces) { found = found || Report::concernsCalls(interfaces); });
    return found;
}

void CallTracker::relay(const Message &message)
{
    const bool isAdded = message.member == "InterfacesAdded" && message.signature == "soa{sa{sv}}";
    if (!isAdded)
        return;
    const Variant service = child(message.body, 0);
    const Variant path = child(message.body, 1);
    const Variant interfaces = child(message.body, 2);
    Call *call = m_world.findCall(textOf(service.get()), textOf(path.get()));
    if (!call || call->isGone || !Report::has(interfaces.get(), Names::call))
        return;
    call->isShown = true;
    Occasion occasion{m_analysis, m_world, Event::Relayed, message, m_world.find(textOf(service.get()))};
    occasion.call = call;
    occasion.object = call->path;
    occasion.interfaces = interfaces.get();
    m_analysis.happen(occasion);
}

void CallTracker::changeStatus(Occasion occasion)
{
    const Message &message = occasion.message;
    Call *call = occasion.call;
    if (message.interface != Names::call && !call)
        return;
    if (message.signature == "u" && message.interface == Names::call)
        occasion.status = g_variant_get_uint32(child(message.body, 0).get());
    // Before the watching began, there may have been more than it was told of.
    const auto isListed = [](const auto &entry) { return entry.second.wasListed; };
    if (!call && std::any_of(occasion.application->managers.begin(), occasion.application->managers.end(), isListed))
        return;
    occasion.event = Event::StatusSent;
    m_analysis.happen(occasion);
    if (!call || !occasion.status || call->isGone)
        return;
    call->sent = *occasion.status;
    if (call->isKnown && (call->isShown || call->isSubscribed))
        call->status = *occasion.status;
}

void CallTracker::remove(Occasion occasion)
{
    const Message &message = occasion.message;
    if (!occasion.application || message.member != "InterfacesRemoved")
        return;
    const Variant object = message.body ? child(message.body, 0) : nullptr;
    const Variant interfaces = message.signature == "oas" ? child(message.body, 1) : nullptr;
    if (object && (hasType(object.get(), "o") || hasType(object.get(), "s")))
        occasion.object = textOf(object.get());
    occasion.call = m_world.findCall(message.sender, occasion.object);
    occasion.interfaces = interfaces.get();
    occasion.managerPath = message.path;
    const auto manager = occasion.application->managers.find(message.path);
    occasion.manager = manager == occasion.application->managers.end() ? nullptr : &manager->second;
    occasion.event = Event::Removed;
    m_analysis.happen(occasion);
    if (!occasion.call || !interfaces || occasion.call->isGone)
        return;
    bool isEnd = false;
    for (gsize i = 0, count = g_variant_n_children(interfaces.get()); i < count; ++i)
        isEnd = isEnd || textOf(child(interfaces.get(), i).get()) == Names::call;
    if (occasion.manager && isEnd && occasion.call->isKnown)
        end(occasion);
    else if (!occasion.call->isKnown)
        occasion.application->calls.erase(occasion.call->path);
}

void CallTracker::end(Occasion occasion)
{
    occasion.event = Event::CallEnds;
    m_analysis.happen(occasion);
    Call &call = *occasion.call;
    call.isGone = true;
    call.removedAt = occasion.message.time;
    m_analysis.schedule(occasion.message.time + remembered,
        [&world = m_world, name = occasion.application->name, path = call.path, id = call.id](Time) {
            Call *gone = world.findCall(name, path);
            if (gone && gone->id == id)
                world.find(name)->calls.erase(path);
        });
}

void CallTracker::endAll(const Message &message, Application &application)
{
    for (auto &[path, call] : application.calls) {
        Occasion occasion{m_analysis, m_world, Event::CallEnds, message, &application};
        occasion.call = &call;
        occasion.object = path;
        if (call.isKnown && !call.isGone)
            m_analysis.happen(occasion);
    }
}

void CallTracker::forgetAll()
{
    for (auto &[name, application] : m_world.applications) {
        application.managers.clear();
        application.calls.clear();
    }
    m_world.devices.clear();
}
