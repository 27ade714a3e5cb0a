// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "analysis/eventtext.h"
#include "commands/commands.h"
#include "commands/follower.h"
#include "commands/output.h"

#include <cstdio>

namespace {

class Printer
{
public:
    Printer(Follower &follower, Format format) : m_follower(follower), m_isJson(format == Format::Json) { }

    void event(const Occasion &occasion) const
    {
        const std::string text = EventText::of(occasion);
        const std::string name = occasion.application ? occasion.application->name : "";
        if (text.empty() || !m_follower.selection().contains(name))
            return;
        const std::string who = occasion.application ? m_follower.analysis().describe(*occasion.application) : "";
        const std::string number = std::to_string(occasion.message.number);
        if (m_isJson)
            print("{\"time\":" + std::to_string(occasion.message.time) + ",\"message\":" + number
                + ",\"application\":" + Output::quoted(name) + ",\"who\":" + Output::quoted(who)
                + ",\"event\":" + Output::quoted(text) + "}\n");
        else
            print(Output::timeOf(occasion.message.time) + "  " + who + "  " + Output::printable(text) + '\n');
    }

    void finding(const Finding &finding) const
    {
        const Findings &findings = m_follower.analysis().findings();
        if (!m_follower.selection().contains(finding.application))
            return;
        if (m_isJson)
            print("{\"finding\":" + Output::json(findings, finding) + "}\n");
        else
            print(Output::text(findings, finding));
    }

    /** What came before the watching began. */
    void unseen() const
    {
        for (const auto &[name, application] : m_follower.analysis().world().applications) {
            if (m_isJson || application.isBorn || !m_follower.selection().contains(name))
                continue;
            print("not seen: how " + m_follower.analysis().describe(application)
                + " registered, and what it did before\n");
        }
    }

private:
    static void print(const std::string &text)
    {
        std::fputs(text.c_str(), stdout);
        std::fflush(stdout);
    }

    Follower &m_follower;
    bool m_isJson;
};

} // namespace

int Commands::watch(const Options &options)
{
    Follower follower(options.host, options.argument(0));
    const Printer printer(follower, options.format);
    Analysis &analysis = follower.analysis();
    analysis.onEvent = [&printer](const Occasion &occasion) { printer.event(occasion); };
    analysis.findings().onNew = [&printer](const Finding &finding) { printer.finding(finding); };
    follower.keepAsking();
    std::string error;
    if (!follower.start(&error)) {
        std::fprintf(stderr, "ringlet-check: %s\n", error.c_str());
        return Exit::impossible;
    }
    follower.handlePending();
    printer.unseen();
    std::fprintf(stderr, "ringlet-check: watching; Ctrl-C ends it\n");
    follower.run(&error);
    const auto isWanted
        = [&follower](const Finding &finding) { return follower.selection().contains(finding.application); };
    if (options.format == Format::Json)
        return Output::print(analysis.findings(), options.format, isWanted, error);
    if (!error.empty())
        std::fprintf(stderr, "ringlet-check: %s\n", error.c_str());
    if (!error.empty())
        return Exit::impossible;
    return analysis.findings().isAnyCounted(isWanted) ? Exit::findings : Exit::clean;
}
