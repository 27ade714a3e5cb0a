// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "commands/output.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <glib.h>
#include <set>
#include <unistd.h>

static std::string valid(std::string_view text)
{
    char *made = g_utf8_make_valid(text.data(), static_cast<gssize>(text.size()));
    std::string result = made;
    g_free(made);
    return result;
}

std::string Output::quoted(std::string_view text)
{
    std::string result = "\"";
    for (const char letter : valid(text)) {
        std::array<char, 8> code = {};
        if (letter == '"' || letter == '\\')
            result += std::string("\\") + letter;
        else if (static_cast<unsigned char>(letter) < 0x20) {
            std::snprintf(code.data(), code.size(), "\\u%04x", static_cast<unsigned>(letter));
            result += code.data();
        } else
            result += letter;
    }
    return result + '"';
}

std::string Output::escaped(std::string_view text)
{
    std::string clean = valid(text);
    for (char &letter : clean) {
        if (static_cast<unsigned char>(letter) < 0x20 && letter != '\n')
            letter = ' ';
    }
    char *made = g_markup_escape_text(clean.c_str(), -1);
    std::string result = made;
    g_free(made);
    return result;
}

std::string Output::timeOf(Time time)
{
    const std::time_t seconds = time / 1000000;
    std::tm parts = {};
    localtime_r(&seconds, &parts);
    std::array<char, 32> text = {};
    std::snprintf(text.data(), text.size(), "%02d:%02d:%02d.%03d", parts.tm_hour, parts.tm_min, parts.tm_sec,
        static_cast<int>(time / 1000 % 1000));
    return text.data();
}

// What other people's programs have sent must not steer the terminal.
std::string Output::printable(std::string_view text)
{
    std::string result = valid(text);
    for (char &letter : result) {
        if (static_cast<unsigned char>(letter) < 0x20 || letter == 0x7f)
            letter = '?';
    }
    return result;
}

static std::vector<std::string> following(const Findings &findings, const Finding &finding)
{
    std::vector<std::string> lines = finding.follows;
    for (const Finding &other : findings.all()) {
        if (other.cause >= 0 && &findings.all()[static_cast<std::size_t>(other.cause)] == &finding)
            lines.push_back(std::string(other.rule->name) + ": " + other.what);
    }
    return lines;
}

static std::string coloured(Severity severity)
{
    const std::string name(nameOf(severity));
    if (!isatty(STDOUT_FILENO))
        return name;
    const std::array<const char *, 3> colours = {"\033[1;31m", "\033[1;33m", "\033[1m"};
    return colours.at(static_cast<std::size_t>(severity)) + name + "\033[0m";
}

std::string Output::text(const Findings &findings, const Finding &finding)
{
    std::string result = coloured(finding.severity) + ' ' + std::string(finding.rule->name);
    if (!finding.who.empty())
        result += "  " + Output::printable(finding.who);
    if (finding.number > 0)
        result += "  " + timeOf(finding.time) + ", message " + std::to_string(finding.number);
    result += "\n    " + Output::printable(finding.text()) + '\n';
    if (finding.times > 1)
        result += "    " + std::to_string(finding.times) + " times in all.\n";
    const std::vector<std::string> lines = following(findings, finding);
    if (!lines.empty())
        result += "    What follows from it:\n";
    for (const std::string &line : lines)
        result += "      " + Output::printable(line) + '\n';
    return result;
}

std::string Output::json(const Findings &findings, const Finding &finding)
{
    std::string result = "{\"rule\":" + quoted(finding.rule->name) + ",\"severity\":" + quoted(nameOf(finding.severity))
        + ",\"application\":" + quoted(finding.application) + ",\"who\":" + quoted(finding.who)
        + ",\"path\":" + quoted(finding.path) + ",\"time\":" + std::to_string(finding.time)
        + ",\"message\":" + std::to_string(finding.number) + ",\"times\":" + std::to_string(finding.times)
        + ",\"text\":" + quoted(finding.text()) + ",\"follows\":[";
    const char *separator = "";
    for (const std::string &line : following(findings, finding)) {
        result += separator + quoted(line);
        separator = ",";
    }
    return result + "]}";
}

static std::string failed(const Findings &findings, const Finding &finding)
{
    return "  <testcase classname=\"" + Output::escaped(finding.who) + "\" name=\"" + std::string(finding.rule->name)
        + "\">\n    <failure type=\"" + std::string(nameOf(finding.severity)) + "\" message=\""
        + Output::escaped(finding.what) + "\">" + Output::escaped(Output::text(findings, finding))
        + "</failure>\n  </testcase>\n";
}

std::string Output::junit(const Findings &findings, const Wanted &isWanted, const std::string &error,
    const std::string &first, std::size_t count)
{
    std::set<std::string_view> broken;
    std::size_t found = 0;
    std::string cases = first;
    for (const Finding &finding : findings.all()) {
        if (finding.cause >= 0 || finding.severity == Severity::Note || !isWanted(finding))
            continue;
        broken.insert(finding.rule->name);
        ++found;
        cases += failed(findings, finding);
    }
    std::size_t kept = 0;
    for (const Rule *rule : Rule::all()) {
        if (broken.count(rule->name) > 0)
            continue;
        ++kept;
        cases += R"(  <testcase classname="rules" name=")" + std::string(rule->name) + "\"/>\n";
    }
    if (!error.empty())
        cases += "  <system-err>" + Output::escaped(error) + "</system-err>\n";
    const auto number = [](std::size_t value) { return '"' + std::to_string(value) + '"'; };
    std::size_t failures = found;
    // A failed step has its own.
    for (std::size_t at = first.find("<failure"); at != std::string::npos; at = first.find("<failure", at + 1))
        ++failures;
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuite name=\"ringlet-check\" tests="
        + number(kept + found + count) + " failures=" + number(failures) + ">\n" + cases + "</testsuite>\n";
}

static void printJson(const Findings &findings, const Output::Wanted &isWanted, const std::string &error)
{
    std::string result = "{\"findings\":[";
    const char *separator = "\n";
    for (const Finding &finding : findings.all()) {
        if (finding.cause >= 0 || !isWanted(finding))
            continue;
        result += separator + Output::json(findings, finding);
        separator = ",\n";
    }
    result += "],\n\"error\":" + Output::quoted(error) + "}\n";
    std::fputs(result.c_str(), stdout);
}

static void printText(const Findings &findings, const Output::Wanted &isWanted)
{
    bool isAny = false;
    for (const Finding &finding : findings.all()) {
        if (finding.cause >= 0 || !isWanted(finding))
            continue;
        std::fputs(Output::text(findings, finding).c_str(), stdout);
        isAny = true;
    }
    if (!isAny)
        std::puts("Nothing found.");
}

int Output::print(const Findings &findings, Format format, const Wanted &isWanted, const std::string &error)
{
    if (format == Format::Json)
        printJson(findings, isWanted, error);
    else if (format == Format::Junit)
        std::fputs(junit(findings, isWanted, error).c_str(), stdout);
    else
        printText(findings, isWanted);
    if (!error.empty())
        std::fprintf(stderr, "ringlet-check: %s\n", printable(error).c_str());
    if (!error.empty())
        return Exit::impossible;
    return findings.isAnyCounted(isWanted) ? Exit::findings : Exit::clean;
}
