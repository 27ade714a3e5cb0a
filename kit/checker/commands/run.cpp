// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "commands/commands.h"
#include "commands/output.h"
#include "commands/trial.h"

#include <algorithm>
#include <array>
#include <cstdio>

static bool isEverything(const Finding &) { return true; }

static const char *wordFor(Step::Result result)
{
    static constexpr std::array<const char *, 3> words = {"pass", "fail", "not possible"};
    return words.at(static_cast<std::size_t>(result));
}

static std::string named(const Trial &trial, const Findings &findings, const char *wanted)
{
    std::string names;
    for (const Rule *rule : Rule::all()) {
        const bool isBroken = std::any_of(findings.all().begin(), findings.all().end(),
            [rule](const Finding &finding) { return finding.rule == rule && finding.severity != Severity::Note; });
        const char *state = isBroken ? "broken" : trial.exercised().count(rule->area) > 0 ? "kept" : "not exercised";
        if (std::string_view(state) == wanted)
            names += (names.empty() ? "" : " ") + std::string(rule->name);
    }
    return names;
}

static void printText(Trial &trial)
{
    for (const Step &step : trial.steps())
        std::printf(
            "%-13s %s%s\n", wordFor(step.result), step.name.c_str(), step.why.empty() ? "" : (": " + step.why).c_str());
    std::puts("");
    Output::print(trial.findings(), Format::Text, isEverything);
    for (const char *state : {"broken", "not exercised", "kept"})
        std::printf("\nRules %s: %s\n", state, named(trial, trial.findings(), state).c_str());
}

static void printJson(Trial &trial)
{
    std::printf("{\"steps\":[");
    const char *separator = "\n";
    for (const Step &step : trial.steps()) {
        std::printf(R"(%s{"step":%s,"result":"%s","why":%s})", separator, Output::quoted(step.name).c_str(),
            wordFor(step.result), Output::quoted(step.why).c_str());
        separator = ",\n";
    }
    std::printf("],\n\"report\":");
    Output::print(trial.findings(), Format::Json, isEverything);
    std::puts("}");
}

static void printJunit(Trial &trial)
{
    std::string cases;
    for (const Step &step : trial.steps()) {
        cases += R"(  <testcase classname="steps" name=")" + Output::escaped(step.name) + "\">";
        if (step.result == Step::Result::Fail)
            cases += "<failure message=\"" + Output::escaped(step.why) + "\"/>";
        if (step.result == Step::Result::NotPossible)
            cases += "<skipped message=\"" + Output::escaped(step.why) + "\"/>";
        cases += "</testcase>\n";
    }
    std::fputs(Output::junit(trial.findings(), isEverything, "", cases, trial.steps().size()).c_str(), stdout);
}

int Commands::run(const Options &options)
{
    Trial trial(options);
    std::string error;
    if (!trial.start(&error)) {
        std::fprintf(stderr, "ringlet-check: %s\n", error.c_str());
        return Exit::impossible;
    }
    trial.run();
    if (options.format == Format::Json)
        printJson(trial);
    else if (options.format == Format::Junit)
        printJunit(trial);
    else
        printText(trial);
    if (!trial.hadCall()) {
        std::fprintf(stderr, "ringlet-check: no call came\n");
        return Exit::impossible;
    }
    const bool hasFailed = std::any_of(
        trial.steps().begin(), trial.steps().end(), [](const Step &step) { return step.result == Step::Result::Fail; });
    return hasFailed || trial.findings().isAnyCounted(isEverything) ? Exit::findings : Exit::clean;
}
