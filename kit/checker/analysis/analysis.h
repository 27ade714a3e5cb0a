// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef KIT_CHECKER_ANALYSIS_H
#define KIT_CHECKER_ANALYSIS_H

#include "analysis/occasion.h"
#include "analysis/tracker.h"

#include <functional>
#include <queue>

/**
 * Follows what applications and a host say to each other, and finds what breaks the rules. Messages go in, in the
 * bus's order; events and findings come out. It reads and writes nothing itself: time is the messages'.
 */
class Analysis
{
public:
    explicit Analysis(const std::string &hostName);

    void add(const Message &message);

    /** Lets time pass; what was to come by now and has not is judged. */
    void advance(Time now);

    /** What the process of a connection is called, which no message tells. */
    void learnProgram(const std::string &name, unsigned pid, const std::string &program);

    World &world() { return m_world; }
    Findings &findings() { return m_findings; }

    /** Told of everything that happens. */
    std::function<void(const Occasion &)> onEvent;

    // For rules and the tracker.
    void forgetProgram(const std::string &name) { m_programs.erase(name); }
    void schedule(Time at, std::function<void(Time)> action);
    void happen(const Occasion &occasion) const;
    std::string describe(const Application &application) const;
    std::uint64_t nextId() { return ++m_lastId; }

private:
    struct Timer
    {
        Time at = 0;
        std::uint64_t order = 0;
        std::function<void(Time)> action;
        bool operator<(const Timer &other) const { return std::tie(at, order) > std::tie(other.at, other.order); }
    };

    World m_world;
    Findings m_findings;
    Tracker m_tracker;
    std::priority_queue<Timer> m_timers;
    std::uint64_t m_lastId = 0;
    ByName<std::string> m_programs;
};

#endif
