// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "analysis/rule.h"
#include "commands/commands.h"
#include "commands/output.h"

#include <cstdio>
#include <sstream>

static std::string indented(const char *lines)
{
    std::istringstream stream(lines);
    std::string result;
    for (std::string line; std::getline(stream, line);)
        result += "    " + line + '\n';
    return result;
}

static std::string explained(const Rule &rule)
{
    return std::string(rule.name) + " (" + std::string(nameOf(rule.severity)) + ", " + std::string(rule.area) + ")\n\n"
        + rule.texts.meaning + '\n' + rule.texts.matters + '\n' + rule.texts.remedy + "\n\nWrong:\n\n"
        + indented(rule.texts.wrong) + "\nRight:\n\n" + indented(rule.texts.right);
}

int Commands::explain(const Options &options)
{
    const Rule *rule = Rule::find(options.argument(0));
    if (!rule) {
        std::fprintf(
            stderr, "ringlet-check: there is no rule %s; see ringlet-check rules\n", options.argument(0).c_str());
        return Exit::usage;
    }
    std::fputs(explained(*rule).c_str(), stdout);
    return Exit::clean;
}

static std::string asJson(const Rule &rule)
{
    const auto member = [](const char *key, std::string_view value) {
        return '"' + std::string(key) + "\":" + Output::quoted(value);
    };
    return '{' + member("rule", rule.name) + ',' + member("severity", nameOf(rule.severity)) + ','
        + member("area", rule.area) + ',' + member("meaning", rule.texts.meaning) + ','
        + member("matters", rule.texts.matters) + ',' + member("remedy", rule.texts.remedy) + ','
        + member("wrong", rule.texts.wrong) + ',' + member("right", rule.texts.right) + '}';
}

int Commands::rules(const Options &options)
{
    const char *separator = "[\n";
    for (const Rule *rule : Rule::all()) {
        if (options.format == Format::Json)
            std::printf("%s%s", separator, asJson(*rule).c_str());
        else
            std::printf("%-32s%-9s%-15s%s\n", std::string(rule->name).c_str(),
                std::string(nameOf(rule->severity)).c_str(), std::string(rule->area).c_str(), rule->texts.meaning);
        separator = ",\n";
    }
    if (options.format == Format::Json)
        std::puts("]");
    return Exit::clean;
}
