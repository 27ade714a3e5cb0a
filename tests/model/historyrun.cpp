// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "historyrun.h"

#include "callmodel.h"
#include "historytext.h"
#include "pluginworld.h"

#include <algorithm>
#include <applicationruntime.h>
#include <stdexcept>
#include <unistd.h>

// Whether what comes of the two is certain when the second does not wait for the first: the bus keeps the order
// of one sender's messages only, and the plug-in hears nothing of an object before it has subscribed to it.
static bool canFollowAtOnce(const Step &first, const Step &second)
{
    if (!isByApplication(first.kind) || !isByApplication(second.kind))
        return !isByApplication(first.kind) && !isByApplication(second.kind);
    if (first.application != second.application || isLeave(first.kind))
        return false;
    // The bus daemon may miss the application before the plug-in has asked for its process.
    if (isLeave(second.kind))
        return first.kind != StepKind::Register;
    if (isCallSignal(second.kind))
        return isCallSignal(first.kind);
    if (isReport(second.kind) || isAnswer(second.kind))
        return first.kind != StepKind::Register;
    return true;
}

static std::string listed(const Lines &lines)
{
    std::string all;
    for (const std::string &line : lines)
        all += "    " + line + "\n";
    return all.empty() ? "    nothing\n" : all;
}

static std::string compared(const char *what, bool same, const Lines &expected, const Lines &actual)
{
    return same ? "" : std::string("  ") + what + " should be\n" + listed(expected) + "  and is\n" + listed(actual);
}

static std::string compared(const char *what, const ExpectedLog &expected, const Lines &actual)
{
    return compared(what, expected.matches(actual), expected.lines(), actual);
}

static std::string compared(const char *what, const Lines &expected, const Lines &actual)
{
    return compared(what, expected == actual, expected, actual);
}

namespace {

class Run
{
public:
    explicit Run(BusMonitor &monitor)
        : m_world(monitor),
          m_model(ApplicationRuntime::instance().getAppIdByPid(getpid()).toStdString())
    {
    }

    HistoryResult operator()(const History &history)
    {
        try {
            for (auto step = history.begin(); step != history.end() && m_difference.empty(); ++step)
                perform(*step);
            if (m_difference.empty())
                pause();
            if (m_difference.empty())
                m_difference = compared("What comes of the plug-in's end", Lines{}, m_world.end());
        } catch (const std::runtime_error &error) {
            m_difference = "After\n" + text(m_sinceLastPause) + "  " + error.what() + "\n";
        }
        return {m_difference, m_steps};
    }

private:
    void perform(const Step &step)
    {
        const bool isCertain = std::all_of(m_sinceLastPause.begin(), m_sinceLastPause.end(),
            [&](const Step &before) { return canFollowAtOnce(before, step); });
        if (!m_sinceLastPause.empty() && !(step.atOnce && isCertain))
            pause();
        if (!m_difference.empty() || !m_model.isPossible(step))
            return;
        m_sinceLastPause.push_back(step);
        const std::vector<std::string> calls = m_model.callIds(step);
        m_model.take(step);
        m_world.perform(step, calls);
        ++m_steps;
    }

    void pause()
    {
        m_world.settle();
        const std::string found = compared("What happens", m_model.takeLog(), m_world.takeLog())
            + compared("What is registered", m_model.registry(), m_world.registry())
            + compared("What the host has", m_model.state(), m_world.state())
            + compared("What outlives its removal", Lines{}, m_world.leftOver());
        m_model.pause();
        if (!found.empty())
            m_difference = "After\n" + text(m_sinceLastPause) + found;
        m_sinceLastPause.clear();
    }

    PluginWorld m_world;
    CallModel m_model;
    History m_sinceLastPause;
    std::string m_difference;
    int m_steps = 0;
};

} // namespace

HistoryResult runHistory(BusMonitor &monitor, const History &history) { return Run(monitor)(history); }
