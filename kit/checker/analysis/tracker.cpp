// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "analysis/tracker.h"

#include "analysis/analysis.h"
#include "analysis/names.h"
#include "analysis/variants.h"

Tracker::Tracker(Analysis &analysis, World &world)
    : m_analysis(analysis),
      m_world(world),
      m_calls(analysis, world),
      m_commands(analysis, world)
{
}

void Tracker::add(const Message &message)
{
    if (Application *application = m_world.find(message.sender))
        application->lastSent = message.time;
    switch (message.kind) {
    case Message::Kind::Call:
        return addCall(message);
    case Message::Kind::Return:
    case Message::Kind::Error:
        return addReply(message);
    case Message::Kind::Signal:
        return addSignal(message);
    case Message::Kind::Other:
        break;
    }
}

void Tracker::addCall(const Message &message)
{
    if (message.member == "RegisterCallManager" || message.interface == Names::service)
        addRegistration(message);
    else if (message.member == "GetManagedObjects")
        addQuestion(message);
    else if (message.interface == Names::call || message.interface == Names::tones
        || message.interface == Names::audio) {
        if (m_commands.command(message))
            m_questions.ask(
                message, Question::About::Command, std::string(message.destination), std::string(message.path));
    } else if (message.isCall(Names::serviceManager, "ListCallManagers"))
        m_questions.ask(message, Question::About::Managers);
    else if (message.interface == Names::bus)
        addBusCall(message);
}

void Tracker::addBusCall(const Message &message)
{
    if (message.signature != "s")
        return;
    const Variant argument = child(message.body, 0);
    const std::string_view text = textOf(argument.get());
    if (message.member == "GetConnectionUnixProcessID")
        m_questions.ask(message, Question::About::Process, std::string(text));
    else if (message.member == "GetNameOwner" && text == m_world.hostName)
        m_questions.ask(message, Question::About::HostOwner);
    else if (message.member == "AddMatch" && m_world.isHost(message.sender))
        m_commands.subscribe(text);
}

// Whatever it was meant to be: the rules tell what is wrong with it.
void Tracker::addRegistration(const Message &message)
{
    Application &application = m_calls.application(message.sender);
    const bool isRight = m_world.isHost(message.destination) && message.path == Names::servicePath
        && message.signature == "o" && (message.interface == Names::service || message.interface.empty());
    Occasion occasion{m_analysis, m_world, Event::RegisterCalled, message, &application};
    const Variant argument = message.signature == "o" || message.signature == "s" ? child(message.body, 0) : nullptr;
    if (argument)
        occasion.object = textOf(argument.get());
    m_analysis.happen(occasion);
    m_questions.ask(
        message, Question::About::Registration, application.name, isRight ? std::string(occasion.object) : "");
    if (!isRight || (m_world.isHostKnown && m_world.host.empty()))
        return;
    Manager &manager = application.managers[std::string(occasion.object)];
    if (manager.registeredAt == 0) {
        manager.registeredAt = message.time;
        manager.number = message.number;
    }
}

void Tracker::addQuestion(const Message &message)
{
    if (m_world.isHost(message.destination))
        return m_questions.ask(message, Question::About::HostCalls, std::string(message.destination));
    Application *application = m_world.find(message.destination);
    const auto manager = application ? application->managers.find(message.path) : ByName<Manager>::iterator();
    const bool isRegistered = application && manager != application->managers.end();
    // In a capture that says nothing of the host, whoever asks first is it.
    if (isRegistered && m_world.host.empty() && manager->second.askedAt == 0)
        learnHost(message.sender);
    const bool isHost = isRegistered && m_world.isHost(message.sender);
    m_questions.ask(message, isHost ? Question::About::Snapshot : Question::About::Probe,
        std::string(message.destination), std::string(message.path));
    if (!isHost)
        return;
    manager->second.askedAt = message.time;
    m_analysis.happen({m_analysis, m_world, Event::Asked, message, application, &manager->second, message.path});
}

void Tracker::addReply(const Message &message)
{
    const std::optional<Question> question = m_questions.take(message);
    if (!question)
        return;
    switch (question->about) {
    case Question::About::Registration:
        return answerRegistration(message, *question);
    case Question::About::Snapshot:
        return answerSnapshot(message, *question);
    case Question::About::Probe:
        return answerProbe(message, *question);
    case Question::About::Managers:
        return answerManagers(message);
    case Question::About::Process:
        return answerProcess(message, *question);
    case Question::About::HostOwner:
        return answerOwner(message);
    case Question::About::Command:
        return m_commands.answer(message, *question);
    case Question::About::HostCalls:
        break;
    }
}

void Tracker::answerRegistration(const Message &message, const Question &question)
{
    Application *application = m_world.find(question.application);
    if (!application)
        return;
    const auto manager = application->managers.find(question.path);
    const bool isRegistered = manager != application->managers.end();
    Occasion occasion{m_analysis, m_world, Event::Registered, message, application};
    occasion.object = occasion.managerPath = question.path;
    occasion.manager = isRegistered ? &manager->second : nullptr;
    if (message.kind == Message::Kind::Error) {
        occasion.event = Event::RegisterFailed;
        m_analysis.happen(occasion);
        if (isRegistered && manager->second.askedAt == 0)
            application->managers.erase(manager);
        return;
    }
    if (m_world.host.empty())
        learnHost(message.sender);
    m_analysis.happen(occasion);
    if (isRegistered)
        manager->second.isReplied = true;
}

void Tracker::answerSnapshot(const Message &message, const Question &question)
{
    Application *application = m_world.find(question.application);
    const auto manager = application ? application->managers.find(question.path) : ByName<Manager>::iterator();
    if (!application || manager == application->managers.end())
        return;
    Occasion occasion{
        m_analysis, m_world, Event::SnapshotAnswered, message, application, &manager->second, question.path};
    if (message.kind == Message::Kind::Error) {
        occasion.event = Event::SnapshotFailed;
        manager->second.hasFailed = true;
        manager->second.why = message.error;
        return m_analysis.happen(occasion);
    }
    m_analysis.happen(occasion);
    manager->second.isAnswered = true;
    if (message.signature.substr(0, Names::snapshotType.size()) == Names::snapshotType)
        m_calls.snapshot(message, *application, manager->second, question.path);
    else
        manager->second.hasFailed = true;
}

void Tracker::answerProbe(const Message &message, const Question &question)
{
    Application *application = m_world.find(question.application);
    if (!application && message.signature == Names::snapshotType && CallTracker::holdsCalls(message))
        application = &m_calls.application(question.application);
    if (!application)
        return;
    const auto manager = application->managers.find(question.path);
    Occasion occasion{m_analysis, m_world, Event::ProbeAnswered, message, application};
    occasion.object = occasion.managerPath = question.path;
    occasion.manager = manager == application->managers.end() ? nullptr : &manager->second;
    if (message.kind == Message::Kind::Error)
        occasion.event = Event::ProbeFailed;
    m_analysis.happen(occasion);
    // What was there before anybody watched is taken as the host has to have read it.
    if (occasion.manager && occasion.manager->wasListed && message.signature == Names::snapshotType) {
        m_calls.assume(message, *application, *occasion.manager, question.path);
        occasion.manager->wasListed = false;
    }
}

void Tracker::answerManagers(const Message &message)
{
    if (message.signature != "a(so)")
        return;
    learnHost(message.sender);
    const Variant list = child(message.body, 0);
    for (gsize i = 0, count = g_variant_n_children(list.get()); i < count; ++i) {
        const Variant entry = child(list.get(), i);
        const Variant name = child(entry.get(), 0);
        const Variant path = child(entry.get(), 1);
        ByName<Manager> &managers = m_calls.application(textOf(name.get())).managers;
        if (managers.find(textOf(path.get())) != managers.end())
            continue;
        Manager &manager = managers[std::string(textOf(path.get()))];
        manager.registeredAt = message.time;
        manager.wasListed = manager.isReplied = manager.isAnswered = true;
    }
}

void Tracker::answerOwner(const Message &message)
{
    const bool isThere = message.kind == Message::Kind::Return && message.signature == "s";
    changeHost(message, isThere ? textOf(child(message.body, 0).get()) : std::string_view());
}

void Tracker::answerProcess(const Message &message, const Question &question)
{
    if (message.signature != "u")
        return;
    const unsigned pid = g_variant_get_uint32(child(message.body, 0).get());
    m_world.processes[question.application] = pid;
    if (Application *application = m_world.find(question.application))
        application->pid = pid;
}

void Tracker::addSignal(const Message &message)
{
    if (message.sender == Names::bus) {
        if (message.member == "NameOwnerChanged" && message.signature == "sss")
            changeOwner(message);
        return;
    }
    if (message.interface == Names::serviceManager && message.path == Names::servicePath) {
        if (m_world.host.empty())
            learnHost(message.sender);
        return m_calls.relay(message);
    }
    if (!m_world.isHost(message.sender))
        m_calls.signal(message);
}

void Tracker::changeOwner(const Message &message)
{
    const Variant name = child(message.body, 0);
    const Variant before = child(message.body, 1);
    const Variant after = child(message.body, 2);
    if (textOf(name.get()) == m_world.hostName)
        return changeHost(message, textOf(after.get()));
    if (textOf(name.get()).substr(0, 1) != ":")
        return;
    if (textOf(before.get()).empty())
        m_world.born.emplace(textOf(name.get()));
    else if (textOf(after.get()).empty())
        leave(message, textOf(name.get()));
}

void Tracker::learnHost(std::string_view owner)
{
    m_world.host = owner;
    m_world.isHostKnown = true;
}

void Tracker::changeHost(const Message &message, std::string_view owner)
{
    if (m_world.isHostKnown && m_world.host == owner)
        return;
    const bool wasThere = !m_world.host.empty();
    if (wasThere) {
        for (auto &[name, application] : m_world.applications)
            m_analysis.happen({m_analysis, m_world, Event::HostLeft, message, &application});
        m_calls.forgetAll();
    }
    learnHost(owner);
    m_world.hostSince = message.time;
    if (owner.empty())
        return;
    for (auto &[name, application] : m_world.applications)
        m_analysis.happen({m_analysis, m_world, Event::HostAppeared, message, &application});
}

void Tracker::leave(const Message &message, std::string_view name)
{
    if (Application *application = m_world.find(name)) {
        m_analysis.happen({m_analysis, m_world, Event::Left, message, application});
        m_calls.endAll(message, *application);
        m_world.applications.erase(application->name);
    }
    m_questions.forget(name);
    m_world.born.erase(std::string(name));
    m_world.processes.erase(std::string(name));
    m_analysis.forgetProgram(std::string(name));
}
