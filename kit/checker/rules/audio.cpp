// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "analysis/analysis.h"
#include "analysis/names.h"
#include "analysis/variants.h"

#include <algorithm>
#include <deque>

static const Rule tooEarly("audio", "request-too-early", Severity::Warning,
    {"A route or a mute was asked for before the first UpdateAudioRouteState.",
        "The host listens to requests of a call from then on only; this one is lost.",
        "Wait for UpdateAudioRouteState of the call, after a restart of the host as well.",
        "signal InterfacesAdded\nsignal RequestMute (true)",
        "signal InterfacesAdded\ncall UpdateAudioRouteState\nsignal RequestMute (true)"});

static const Rule wrongStatus("audio", "request-in-wrong-status", Severity::Warning,
    {"A route or a mute was asked for while the call was neither active nor dialing.",
        "The host ignores such a request without a word.", "Ask while the status is 2 or 5.",
        "StatusChanged (7)\nsignal RequestMute (true)", "StatusChanged (5)\nsignal RequestMute (true)"});

static const Rule signature("audio", "request-signature", Severity::Error,
    {"RequestMute or RequestAudioRoute has other arguments than it has to have.",
        "The host drops such a signal without a word, and nothing is muted or routed.",
        "Send one b with RequestMute, and two s, input first, with RequestAudioRoute.", "signal RequestMute (uint32 1)",
        "signal RequestMute (true)"});

static const Rule unknownDevice("audio", "route-unknown-device", Severity::Warning,
    {"A device was asked for that the host has not named.", "The host ignores the request.",
        "Ask for ids that stand in the last UpdateAudioRouteState.", R"(signal RequestAudioRoute ("hw:1", "hw:1"))",
        R"(signal RequestAudioRoute ("headset", "headset"))"});

static const Rule swapped("audio", "route-swapped", Severity::Error,
    {"Input and output of RequestAudioRoute are exchanged.", "Neither device can be what it is asked to be.",
        "Send the input device first and the output device second.",
        R"(signal RequestAudioRoute ("speaker", "microphone"))",
        R"(signal RequestAudioRoute ("microphone", "speaker"))"});

static const Rule echo("audio", "mute-echo", Severity::Warning,
    {"Mute goes to and fro between the host and the application.",
        "Each takes the other's word for a new wish, and they never come to rest.",
        "Send RequestMute when the person at the application has pressed the button, and not when the host tells.",
        "call UpdateAudioRoute (true, ...)\nsignal RequestMute (false)\ncall UpdateAudioRoute (false, ...)\n"
        "signal RequestMute (true)",
        "call UpdateAudioRoute (true, ...), and nothing"},
    {"flood", "status-repeated"});

static const Rule opened("audio", "opened-microphone-at-restart", Severity::Warning,
    {"The microphone was muted, and is open since the host was restarted.",
        "A new host starts with an open microphone, and the person believes that nobody hears.",
        "Keep the last mute state, and send RequestMute (true) when the first UpdateAudioRouteState of the new host "
        "says "
        "false.",
        "(new host) call UpdateAudioRouteState (..., false, ...), and nothing",
        "(new host) call UpdateAudioRouteState (..., false, ...)\nsignal RequestMute (true)"});

namespace {

bool isRoute(const Message &message) { return message.member == "RequestAudioRoute"; }

bool isInForm(const Message &message)
{
    return message.signature == (isRoute(message) ? "ss" : "b") && message.interface == Names::audio;
}

void judgeDevices(const Occasion &o)
{
    const Variant input = child(o.message.body, 0);
    const Variant output = child(o.message.body, 1);
    const auto &devices = o.world.devices;
    const auto in = devices.find(textOf(input.get()));
    const auto out = devices.find(textOf(output.get()));
    const std::string asked = o.call->path + " asks for the input \"" + std::string(textOf(input.get()))
        + "\" and the output \"" + std::string(textOf(output.get())) + "\".";
    const bool areKnown = in != devices.end() && out != devices.end();
    if (areKnown && !in->second.isInput && !out->second.isOutput)
        o.report(swapped, asked);
    else if (!devices.empty() && (!areKnown || !in->second.isInput || !out->second.isOutput))
        o.report(unknownDevice, asked);
}

const Check request({Event::RequestSent}, [](const Occasion &o) {
    if (!o.call || !o.call->isKnown || o.call->isGone || (!isRoute(o.message) && o.message.member != "RequestMute"))
        return;
    const std::string name = std::string(o.message.member) + " of " + o.call->path;
    if (!isInForm(o.message)) {
        o.report(signature, name + " has the type \"" + std::string(o.message.signature) + "\".", o.message.member);
        return;
    }
    if (!o.call->hasAudioState)
        o.report(tooEarly, name + " came before the host had sent UpdateAudioRouteState.");
    else if (!Status::isActive(o.call->status) && o.call->status != Status::dialing)
        o.report(wrongStatus, name + " came while the host shows " + std::string(Status::wordOf(o.call->status)) + '.');
    else if (isRoute(o.message))
        judgeDevices(o);
});

struct Turn
{
    Time at = 0;
    bool flag = false;
    bool isAsked = false; // by the application; else told by the host
};

struct Turns
{
    std::deque<Turn> all;
};

// A turn is a mute flag, of whichever side, that is not the one before it.
void turn(const Occasion &o, bool flag, bool isAsked)
{
    constexpr std::size_t toAndFro = 4;
    auto &all = o.call->memory.of<Turns>().all;
    if (!all.empty() && all.back().flag == flag)
        return;
    all.push_back({o.now(), flag, isAsked});
    while (o.now() - all.front().at > 1000 * milliseconds)
        all.pop_front();
    const auto asked = std::count_if(all.begin(), all.end(), [](const Turn &one) { return one.isAsked; });
    if (all.size() > toAndFro && asked > 1)
        o.report(echo, "Mute of " + o.call->path + " changed " + std::to_string(toAndFro) + " times within a second.");
}

struct Muted
{
    bool is = false;
    bool isAskedFor = false;
};

const Check asked({Event::RequestSent}, [](const Occasion &o) {
    if (!o.call || !o.call->isKnown || o.message.member != "RequestMute" || o.message.signature != "b")
        return;
    const bool isMuted = g_variant_get_boolean(child(o.message.body, 0).get()) != FALSE;
    turn(o, isMuted, true);
    o.call->memory.of<Muted>().isAskedFor = isMuted;
});

struct Microphone
{
    ByName<bool> muted; // paths of calls that were muted when the host went, and whether they had asked for it
};

std::optional<bool> flagOf(const Message &message)
{
    const gsize index = message.member == "UpdateAudioRouteState" ? 1 : 0;
    if (!message.body || g_variant_n_children(message.body) <= index)
        return std::nullopt;
    const Variant flag = child(message.body, index);
    return hasType(flag.get(), "b") ? std::optional<bool>(g_variant_get_boolean(flag.get()) != FALSE) : std::nullopt;
}

const Check lost({Event::HostLeft}, [](const Occasion &o) {
    auto &microphone = o.application->memory.of<Microphone>();
    for (auto &[path, call] : o.application->calls) {
        if (call.isKnown && !call.isGone && call.memory.of<Muted>().is)
            microphone.muted[path] = call.memory.of<Muted>().isAskedFor;
    }
});

void judgeRestart(const Occasion &o, bool isMuted)
{
    auto &muted = o.application->memory.of<Microphone>().muted;
    const auto before = muted.find(o.call->path);
    if (before == muted.end())
        return;
    // Who muted it at the host may well look after it there.
    const Severity severity = before->second ? Severity::Warning : Severity::Note;
    muted.erase(before);
    if (isMuted)
        return;
    o.later(1000 * milliseconds, [severity](const Occasion &later) {
        const bool canAsk = Status::isActive(later.call->status) || later.call->status == Status::dialing;
        if (!later.call->memory.of<Muted>().is && !later.world.isMuted && canAsk)
            later.report(
                opened, severity, later.call->path + " was muted before the host was restarted, and is not now.");
    });
}

const Check told({Event::AudioTold}, [](const Occasion &o) {
    const std::optional<bool> isMuted = flagOf(o.message);
    if (!isMuted)
        return;
    turn(o, *isMuted, false);
    if (o.message.member == "UpdateAudioRouteState")
        judgeRestart(o, *isMuted);
    o.call->memory.of<Muted>().is = *isMuted;
});

} // namespace
