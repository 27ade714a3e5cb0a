// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// What is done to a call that is up.

#include "analysis/names.h"
#include "commands/trial.h"

#include <algorithm>
#include <csignal>

static constexpr int patience = 4000; // ms

static GVariant *words(const char *text) { return g_variant_new("(s)", text); }

static bool isHeld(unsigned status) { return status == Status::held; }

void Trial::show()
{
    const Call *one = call();
    const bool isNamed = !one->name.empty() || !one->uri.empty();
    judge("shown with name or address and status", isNamed && one->hasStatus,
        isNamed ? "it has no Status that can be read" : "it has neither RemoteName nor Uri");
}

void Trial::hold()
{
    if (!call() || !call()->isHoldable)
        return skip("held and resumed", "the call is not Holdable");
    pressed(
        "held", "Hold", g_variant_new("(b)", TRUE), [this] { return hasStatus(isHeld); }, "it has not become held");
    pressed(
        "resumed", "Hold", g_variant_new("(b)", FALSE), [this] { return hasStatus(Status::isActive); },
        "it has not become active");
}

void Trial::tones()
{
    if (!call() || call()->interfaces.count(Names::tones) == 0)
        return skip("tones", "the call has no DTMF1");
    const auto isAnswered = [this] { return areAllAnswered(); };
    pressed("a tone", "SendDtmf", words("1"), isAnswered, "SendDTMF was not answered");
    for (const char *tone : {"2", "3", "4", "5", "6", "7", "8", "9"})
        press("SendDtmf", words(tone));
    pressed("tones in a burst", "SendDtmf", words("0"), isAnswered, "not every SendDTMF was answered");
}

bool Trial::tellAudio(const char *method, GVariant *arguments)
{
    m_exercised.insert("audio");
    m_follower.bus().ask(
        m_options.host, std::string(Names::desktopPath), "org.tarnwickle.voicecall.Audio1", method, arguments);
    return waitFor([this] { return areAllAnswered(); }, patience);
}

void Trial::audio()
{
    if (!call() || call()->interfaces.count(Names::audio) == 0)
        return skip("muted and unmuted by the host", "the call has no AudioControl1");
    const World &world = m_follower.analysis().world();
    const bool isDone = tellAudio("SetMicrophoneMuted", g_variant_new("(b)", TRUE))
        && waitFor([&world] { return world.isMuted; }, patience)
        && tellAudio("SetMicrophoneMuted", g_variant_new("(b)", FALSE))
        && waitFor([&world] { return !world.isMuted; }, patience);
    judge("muted and unmuted by the host", isDone, "UpdateAudioRoute was not answered, or did not come");
}

void Trial::otherDevice()
{
    const std::string name = "another input and output";
    std::string input;
    std::string output;
    for (const auto &[id, device] : m_follower.analysis().world().devices) {
        if (device.isInput)
            input = id;
        if (device.isOutput)
            output = id;
    }
    if (!call() || input.empty() || output.empty())
        return skip(name, "the call has no AudioControl1, or the host names no devices");
    const bool isDone = tellAudio("SelectInputDevice", words(input.c_str()))
        && tellAudio("SelectOutputDevice", words(output.c_str()));
    judge(name, isDone, "UpdateAudioRoute was not answered");
}

void Trial::restart()
{
    const std::string name = "host killed and back with a call up";
    if (m_options.usesSession)
        return skip(name, "the host of the session is not restarted");
    const bool hasAudio = call() && call()->interfaces.count(Names::audio) > 0;
    const unsigned before = call() ? call()->sent : 0;
    if (hasAudio)
        tellAudio("SetMicrophoneMuted", g_variant_new("(b)", TRUE));
    const World &world = m_follower.analysis().world();
    m_host->signal(SIGKILL);
    waitFor([&world] { return world.host.empty(); }, patience);
    m_host = hostProcess();
    const bool isBack
        = waitFor([this, before] { return call() && call()->isShown && call()->sent == before; }, 2 * patience);
    judge(name, isBack, "the call is not shown by the new host, or not with its status");
    if (!hasAudio || !isBack)
        return skip("microphone stays muted over a restart", "the call has no AudioControl1, or is not back");
    const bool isMuted = waitFor([&world] { return world.isMuted; }, 1500);
    if (isMuted)
        return pass("microphone stays muted over a restart");
    skip("microphone stays muted over a restart", "the host had muted it, and nobody asked the new one to");
}

void Trial::stop()
{
    const std::string name = "host stopped for three seconds";
    if (m_options.usesSession)
        return skip(name, "the host of the session is not stopped");
    m_host->signal(SIGSTOP);
    waitFor([] { return false; }, 3000);
    m_host->signal(SIGCONT);
    judge(name, waitFor([this] { return call() != nullptr && m_program->isRunning(); }, patience), "the call has gone");
}

void Trial::hangUp()
{
    pressed(
        "hung up", "Hangup", nullptr, [this] { return call() == nullptr; }, "the call is still there");
}

// Straight to where the call was: the host itself does not speak to it any more.
void Trial::commandBehindRemoval()
{
    const std::string name = "a command behind the removal";
    if (call() || m_application.empty())
        return skip(name, "the call was not removed");
    bool isAnswered = true;
    auto before = m_follower.bus().onMessage;
    m_follower.bus().onMessage = [&isAnswered](GDBusMessage *message) {
        const char *error = g_dbus_message_get_error_name(message);
        isAnswered = isAnswered && (!error || std::string_view(error) != "org.freedesktop.DBus.Error.NoReply");
    };
    m_follower.bus().ask(m_application, m_path, Names::call, "Accept");
    m_follower.bus().onMessage = before;
    judge(name, isAnswered && m_program->isRunning(), "it was not answered");
}

void Trial::reject()
{
    if (!ring(m_options.ring, false))
        return skip("rejected while ringing", "no further call came; --ring lets one come");
    pressed(
        "rejected while ringing", "Hangup", nullptr, [this] { return call() == nullptr; }, "the call is still there");
}

void Trial::secondCall()
{
    const std::string name = "a second call while one is up";
    if (m_options.ring.empty() || !ring(m_options.ring, false))
        return skip(name, "no further call came; --ring lets one come");
    m_exercised.insert("several calls");
    const std::string first = m_path;
    press("Answer");
    waitFor([this] { return hasStatus(Status::isActive); }, patience);
    if (!ring(m_options.ring, false))
        return skip(name, "no second call came");
    press("Answer");
    const bool isUp = waitFor([this] { return hasStatus(Status::isActive); }, patience);
    const auto isFirstAside = [this, &first] { return !findCall(first) || !Status::isActive(findCall(first)->sent); };
    judge(name, isUp && waitFor(isFirstAside, 1500), isUp ? "both are active" : "the second has not become active");
    for (const std::string &path : {m_path, first}) {
        m_path = path;
        press("Hangup");
    }
}

void Trial::dial()
{
    if (m_options.dial.empty() || !ring(m_options.dial, false))
        return skip("dialled", "no call went out; --dial lets one");
    judge("dialled", call()->sent == Status::dialing || Status::isActive(call()->sent),
        "it is shown with another status");
    press("Hangup");
}

void Trial::loseBus()
{
    if (!m_bus)
        return skip("bus gone", "the bus of the session is not ended");
    m_bus->process().signal(SIGKILL);
    m_bus->process().waitForEnd(patience);
    m_program->waitForEnd(1000);
    judge("bus gone", !m_program->hasCrashed(), "the program has crashed");
}
