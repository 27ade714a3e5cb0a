// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "analysis/commandtracker.h"

#include "analysis/analysis.h"
#include "analysis/names.h"
#include "analysis/variants.h"

#include <algorithm>

// Of one call; behind that the oldest is taken for never answered.
static constexpr std::size_t mostOpen = 64;

CommandTracker::CommandTracker(Analysis &analysis, World &world) : m_analysis(analysis), m_world(world) { }

static std::string quoted(std::string_view key, std::string_view value)
{
    return std::string(key) + "='" + std::string(value) + '\'';
}

void CommandTracker::subscribe(std::string_view rule)
{
    if (rule.find("member='StatusChanged'") == std::string_view::npos)
        return;
    for (auto &[name, application] : m_world.applications) {
        if (rule.find(quoted("sender", name)) == std::string_view::npos)
            continue;
        for (auto &[path, call] : application.calls)
            call.isSubscribed = call.isSubscribed || rule.find(quoted("path", path)) != std::string_view::npos;
    }
}

bool CommandTracker::command(const Message &message)
{
    Application *application = m_world.find(message.destination);
    Call *call = m_world.findCall(message.destination, message.path);
    if (!call)
        return false;
    Command command{message.serial, std::string(message.member), false, message.time, message.number};
    if (message.member == "SetHold" && message.signature == "b")
        command.flag = g_variant_get_boolean(child(message.body, 0).get());
    Occasion occasion{m_analysis, m_world, Event::Commanded, message, application};
    occasion.call = call;
    occasion.object = call->path;
    occasion.command = &command;
    if (message.interface == Names::audio)
        occasion.event = Event::AudioTold;
    m_analysis.happen(occasion);
    if (message.interface == Names::audio)
        hearAudio(message, *call);
    if (call->open.size() >= mostOpen)
        call->open.erase(call->open.begin());
    call->open.push_back(command);
    return true;
}

void CommandTracker::answer(const Message &message, const Question &question)
{
    Call *call = m_world.findCall(question.application, question.path);
    if (!call)
        return;
    const auto found = std::find_if(call->open.begin(), call->open.end(),
        [&message](const Command &command) { return command.serial == message.replySerial; });
    if (found == call->open.end())
        return;
    const Command command = *found;
    Occasion occasion{m_analysis, m_world, Event::CommandAnswered, message, m_world.find(question.application)};
    occasion.call = call;
    occasion.object = call->path;
    occasion.command = &command;
    if (message.kind == Message::Kind::Error)
        occasion.event = Event::CommandFailed;
    m_analysis.happen(occasion);
    call->open.erase(found);
}

void CommandTracker::hearAudio(const Message &message, Call &call)
{
    const bool isState = message.member == "UpdateAudioRouteState";
    if (isState)
        call.hasAudioState = true;
    if (isState && message.signature == "a(sibbsa{sv})bss") {
        m_world.devices.clear();
        const Variant devices = child(message.body, 0);
        for (gsize i = 0, count = g_variant_n_children(devices.get()); i < count; ++i) {
            const Variant device = child(devices.get(), i);
            m_world.devices[std::string(textOf(child(device.get(), 0).get()))]
                = {g_variant_get_boolean(child(device.get(), 2).get()) != FALSE,
                    g_variant_get_boolean(child(device.get(), 3).get()) != FALSE};
        }
    }
    const gsize flag = isState ? 1 : 0;
    if (message.body && g_variant_n_children(message.body) > flag && hasType(child(message.body, flag).get(), "b"))
        m_world.isMuted = g_variant_get_boolean(child(message.body, flag).get());
}
