// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "commands/trial.h"

#include "analysis/names.h"

#include <algorithm>
#include <csignal>
#include <unistd.h>

static constexpr int patience = 4000; // ms

bool Trial::waitFor(const Condition &condition, int milliseconds)
{
    const Time end = now() + static_cast<Time>(milliseconds) * 1000;
    const guint tick = g_timeout_add(
        20, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
    m_follower.handlePending();
    while (!condition() && now() < end) {
        g_main_context_iteration(nullptr, TRUE);
        m_follower.handlePending();
    }
    g_source_remove(tick);
    return condition();
}

void Trial::pass(const std::string &name) { m_steps.push_back({name, Step::Result::Pass, ""}); }

void Trial::fail(const std::string &name, const std::string &why)
{
    m_steps.push_back({name, Step::Result::Fail, why});
}

void Trial::skip(const std::string &name, const std::string &why)
{
    m_steps.push_back({name, Step::Result::NotPossible, why});
}

void Trial::judge(const std::string &name, bool isGood, const std::string &why)
{
    if (isGood)
        pass(name);
    else
        fail(name, why);
}

std::unique_ptr<Process> Trial::hostProcess()
{
    const std::string command = m_options.hostCommand.empty() ? "voicecalld" : m_options.hostCommand;
    return std::make_unique<Process>(Process::shell("exec " + command));
}

bool Trial::start(std::string *error)
{
    if (!m_options.usesSession)
        m_bus = PrivateBus::start(error);
    if (!error->empty() || !m_follower.start(error))
        return false;
    m_follower.keepAsking();
    const World &world = m_follower.analysis().world();
    if (m_options.usesSession && !waitFor([&world] { return !world.host.empty(); }, 1000)) {
        *error = "nobody owns the name " + m_options.host;
        return false;
    }
    m_program = std::make_unique<Process>(m_options.program);
    return true;
}

Call *Trial::findCall(const std::string &path)
{
    Call *found = m_follower.analysis().world().findCall(m_application, path);
    return found && found->isKnown && !found->isGone ? found : nullptr;
}

bool Trial::hasStatus(bool (*isIt)(unsigned))
{
    const Call *one = call();
    return one && isIt(one->sent);
}

std::string Trial::hostCall()
{
    const Call *wanted = call();
    const Variant objects = wanted ? m_follower.bus().ask(m_options.host, std::string(Names::desktopPath),
                                Names::objectManager, "GetManagedObjects")
                                   : nullptr;
    if (!objects || !hasType(objects.get(), "a{oa{sa{sv}}}"))
        return {};
    const std::string mark = '/' + m_application + '@';
    std::string found;
    forEachEntry(objects.get(), [&](std::string_view path, GVariant *interfaces) {
        bool isUri = false;
        bool isOwn = false;
        forEachEntry(interfaces, [&](std::string_view, GVariant *properties) {
            forEachEntry(properties, [&](std::string_view key, GVariant *value) {
                const std::string_view text = hasType(value, "s") ? textOf(value) : std::string_view();
                isUri = isUri || (key == "Uri" && text == wanted->uri);
                isOwn = isOwn || (key == "ProviderId" && text.find(mark) != std::string_view::npos);
            });
        });
        if (isUri && isOwn)
            found = path;
    });
    return found;
}

bool Trial::press(const char *method, GVariant *arguments)
{
    const Variant owned(arguments ? g_variant_ref_sink(arguments) : nullptr);
    const std::string path = hostCall();
    if (path.empty())
        return false;
    m_follower.bus().ask(m_options.host, path, Names::desktopCall, method, owned.get());
    return true;
}

void Trial::pressed(const std::string &name, const char *method, GVariant *arguments, const Condition &effect,
    const std::string &failure)
{
    m_exercised.insert("commands");
    if (!press(method, arguments))
        return skip(name, "the host does not show the call, or cannot be told to do anything");
    judge(name, waitFor(effect, patience), failure);
}

bool Trial::areAllAnswered()
{
    const Call *one = call();
    return one && one->open.empty();
}

void Trial::appear()
{
    const std::string name = "host not there yet at the start";
    const auto isRegistered = [this] {
        for (const auto &[unique, application] : m_follower.analysis().world().applications) {
            if (!application.managers.empty())
                m_application = unique;
        }
        return !m_application.empty();
    };
    if (m_options.usesSession) {
        waitFor(isRegistered, patience);
        return skip(name, "the host of the session is not restarted");
    }
    waitFor([this] { return !m_program->isRunning(); }, 1000);
    if (!m_program->isRunning())
        return fail(name, "the program has ended");
    m_host = hostProcess();
    if (!waitFor([this] { return !m_follower.analysis().world().host.empty(); }, 3 * patience))
        return skip(name, "the host could not be started, or does not take the name " + m_options.host);
    judge(name, waitFor(isRegistered, patience), "it has not registered since the host came");
}

// Waits for a call that has not had its turn; `command` lets one come.
bool Trial::ring(const std::string &command, bool isFirst)
{
    const auto isThere = [this] {
        const Application *application = m_follower.analysis().world().find(m_application);
        if (!application)
            return false;
        for (const auto &[path, one] : application->calls) {
            if (one.isKnown && one.isShown && !one.isGone && m_seen.count(path) == 0)
                m_path = path;
        }
        return call() != nullptr && m_seen.count(m_path) == 0;
    };
    const bool isAsked = command.empty() && isatty(STDIN_FILENO) != 0;
    // One may come by itself.
    if (isFirst && waitFor(isThere, 2000))
        return m_seen.insert(m_path).second;
    if (command.empty() && !isAsked)
        return false;
    std::unique_ptr<Process> ringing;
    if (isAsked)
        std::fprintf(stderr, "ringlet-check: please let a call come in, within a minute\n");
    else
        ringing = std::make_unique<Process>(Process::shell(command));
    return waitFor(isThere, isAsked ? 60000 : 3 * patience) && m_seen.insert(m_path).second;
}

void Trial::run()
{
    appear();
    m_hadCall = ring(m_options.ring, true);
    if (!m_hadCall)
        return;
    m_exercised.insert({"announcing", "status", "ending", "weight"});
    show();
    pressed(
        "answered", "Answer", nullptr, [this] { return hasStatus(Status::isActive); }, "it has not become active");
    pressed(
        "answered twice", "Answer", nullptr, [this] { return areAllAnswered() && hasStatus(Status::isActive); },
        "the second Accept was not answered, or has changed the call");
    hold();
    tones();
    audio();
    otherDevice();
    restart();
    stop();
    hangUp();
    commandBehindRemoval();
    reject();
    secondCall();
    dial();
    skip("cancelled by the far end", "only the far end can do it; let it hang up while ringlet-check watch runs");
    skip("muted by the application", "only the application can do it; press its button while ringlet-check watch runs");
    // Rules that wait for something that does not come are judged by then.
    waitFor([] { return false; }, patience);
    loseBus();
}
