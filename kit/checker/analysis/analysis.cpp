// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "analysis/analysis.h"

Analysis::Analysis(const std::string &hostName) : m_tracker(*this, m_world) { m_world.hostName = hostName; }

void Analysis::add(const Message &message)
{
    advance(message.time);
    m_tracker.add(message);
}

void Analysis::advance(Time now)
{
    while (!m_timers.empty() && m_timers.top().at <= now) {
        const Timer timer = m_timers.top();
        m_timers.pop();
        timer.action(timer.at);
    }
}

void Analysis::learnProgram(const std::string &name, unsigned pid, const std::string &program)
{
    m_programs[name] = program;
    m_world.processes[name] = pid;
    if (Application *application = m_world.find(name)) {
        application->pid = pid;
        application->program = program;
    }
}

void Analysis::schedule(Time at, std::function<void(Time)> action) { m_timers.push({at, nextId(), std::move(action)}); }

void Analysis::happen(const Occasion &occasion) const
{
    if (onEvent)
        onEvent(occasion);
    Check::run(occasion);
}

std::string Analysis::describe(const Application &application) const
{
    std::string text = application.name;
    const auto program = m_programs.find(application.name);
    if (program != m_programs.end() && !program->second.empty())
        text += ' ' + program->second;
    if (application.pid != 0)
        text += ", pid " + std::to_string(application.pid);
    return text;
}
