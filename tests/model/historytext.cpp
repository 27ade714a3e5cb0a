// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "historytext.h"

#include <algorithm>
#include <functional>
#include <istream>
#include <map>
#include <sstream>
#include <stdexcept>

// The words of each kind; what begins with % is a field of the step.
static const std::map<StepKind, std::string> &phrases()
{
    static const std::map<StepKind, std::string> all{
        {StepKind::Configure, "the host configures the plug-in"},
        {StepKind::ConfigureWithNull, "the host configures the plug-in with null"},
        {StepKind::ConfigureAgain, "another host configures the plug-in"},
        {StepKind::Start, "the host starts the plug-in"},
        {StepKind::Suspend, "the host suspends the plug-in"},
        {StepKind::Resume, "the host resumes the plug-in"},
        {StepKind::Finalize, "the host finalizes the plug-in"},
        {StepKind::Register, "%application registers %manager"},
        {StepKind::RegisterBadly, "%application registers a wrong type"},
        {StepKind::TakeName, "%application takes a bus name"},
        {StepKind::Leave, "%application leaves the bus"},
        {StepKind::LeaveHalfWay, "%application leaves the bus amid adding %interfaces to %object at %manager"},
        {StepKind::ForgeAnswer, "%application answers for %text at %manager with %objects"},
        {StepKind::ClaimDeparture, "%application claims that %text has left"},
        {StepKind::Answer, "%application answers at %manager with %objects"},
        {StepKind::AnswerWithMore, "%application answers at %manager with a further argument and %objects"},
        {StepKind::AnswerBadly, "%application answers at %manager with wrong type %number"},
        {StepKind::AnswerWithError, "%application answers at %manager with error %number and %objects"},
        {StepKind::Add, "%application adds %interfaces to %object at %manager"},
        {StepKind::AddBadly, "%application adds a wrong type to %object at %manager"},
        {StepKind::Remove, "%application removes %names of %object at %manager"},
        {StepKind::RemoveBadly, "%application removes a wrong type of %object at %manager"},
        {StepKind::Status, "%application says status %number of %object"},
        {StepKind::StatusBadly, "%application says wrong type %number as status of %object"},
        {StepKind::RequestMute, "%application requests mute %on in %object"},
        {StepKind::RequestRoute, "%application requests input %text and output %otherText in %object"},
        {StepKind::RequestBadly, "%application requests wrong type %number in %object"},
        {StepKind::HostAnswer, "the host answers %application %object"},
        {StepKind::HostHangup, "the host hangs up %application %object"},
        {StepKind::HostHold, "the host sets hold %on for %application %object"},
        {StepKind::HostHoldByName, "the host holds %application %object by name"},
        {StepKind::HostDtmf, "the host sends tones %text to %application %object"},
        {StepKind::HostDeflect, "the host deflects %application %object"},
        {StepKind::HostMerge, "the host merges %application %object"},
        {StepKind::HostSplit, "the host splits %application %object"},
        {StepKind::HostDial, "the host dials through %application %manager"},
        {StepKind::Mute, "the host sets mute %on"},
        {StepKind::SelectInput, "the host selects input %text"},
        {StepKind::SelectOutput, "the host selects output %text"},
        {StepKind::Devices, "the host has %number devices"},
    };
    return all;
}

static const char atOnce[] = "at once: ";

using Lines = std::vector<std::string>;

static Lines words(const std::string &line)
{
    std::istringstream in(line);
    Lines all;
    for (std::string word; in >> word;)
        all.push_back(word);
    return all;
}

template <typename Entries, typename Text>
static std::string joined(const Entries &entries, const char *between, Text text)
{
    std::string all;
    for (const auto &entry : entries)
        all += (&entry == &*entries.begin() ? "" : between) + text(entry);
    return entries.empty() ? "nothing" : all;
}

// Reads the forms that joined() writes, from left to right.
class Reader
{
public:
    explicit Reader(std::string_view text) : m_rest(text) { }

    bool atEnd() const { return m_rest.empty(); }

    bool take(char c)
    {
        const bool there = !atEnd() && m_rest.front() == c;
        m_rest.remove_prefix(there ? 1 : 0);
        return there;
    }

    void require(char c)
    {
        if (!take(c))
            throw std::runtime_error(std::string("'") + c + "' is missing before '" + std::string(m_rest) + "'");
    }

    std::string until(const char *ends)
    {
        const std::string_view taken = m_rest.substr(0, m_rest.find_first_of(ends));
        m_rest.remove_prefix(taken.size());
        return std::string(taken);
    }

    const PropertyValue *value()
    {
        const PropertyValue *value = propertyValueAt(m_rest);
        if (!value)
            throw std::runtime_error(
                "'" + std::string(m_rest) + "' begins with none of the values of propertyvalue.cpp");
        m_rest.remove_prefix(std::string_view(value->text).size());
        return value;
    }

private:
    std::string_view m_rest;
};

static const char commonPrefix[] = "zelkovar.Call.";

std::string shortInterfaceName(const std::string &name)
{
    const std::string prefix = commonPrefix;
    return name.compare(0, prefix.size(), prefix) == 0 ? name.substr(prefix.size()) : name;
}

// A name without a dot is short for one of ours.
static std::string fullInterfaceName(const std::string &name)
{
    return name.find('.') == std::string::npos ? commonPrefix + name : name;
}

static std::string text(const Properties &properties)
{
    const auto one = [](const auto &property) { return property.first + "=" + property.second->text; };
    return properties.empty() ? "" : "{" + joined(properties, ",", one) + "}";
}

static std::string text(const Interfaces &interfaces)
{
    return joined(interfaces, "+",
        [](const InterfaceReport &report) { return shortInterfaceName(report.name) + text(report.properties); });
}

static Interfaces readInterfaces(const std::string &word)
{
    Interfaces interfaces;
    if (word == "nothing")
        return interfaces;
    Reader reader(word);
    do {
        InterfaceReport report;
        report.name = fullInterfaceName(reader.until("{+"));
        if (reader.take('{')) {
            do {
                const std::string name = reader.until("=");
                reader.require('=');
                report.properties.emplace_back(name, reader.value());
            } while (reader.take(','));
            reader.require('}');
        }
        interfaces.push_back(report);
    } while (reader.take('+'));
    if (!reader.atEnd())
        throw std::runtime_error("'" + word + "' goes on after its last interface");
    return interfaces;
}

static Lines readNames(const std::string &word)
{
    std::vector<std::string> names;
    for (const InterfaceReport &report : readInterfaces(word))
        names.push_back(report.name);
    return names;
}

static ObjectReport readObject(const std::string &word)
{
    const std::size_t colon = word.find(':');
    if (colon == std::string::npos)
        throw std::runtime_error("'" + word + "' is not a path, a colon and interfaces");
    return {word.substr(0, colon), readInterfaces(word.substr(colon + 1))};
}

static std::vector<ObjectReport> readObjects(const std::string &rest)
{
    std::vector<ObjectReport> objects;
    if (rest != "nothing")
        for (const std::string &word : words(rest))
            objects.push_back(readObject(word));
    return objects;
}

static bool readBool(const std::string &word)
{
    if (word != "true" && word != "false")
        throw std::runtime_error("'" + word + "' is neither true nor false");
    return word == "true";
}

static unsigned readNumber(const std::string &word)
{
    if (word.empty() || word.size() > 10 || word.find_first_not_of("0123456789") != std::string::npos)
        throw std::runtime_error("'" + word + "' is not a number");
    return unsigned(std::stoul(word));
}

static char readApplication(const std::string &word)
{
    if (word.size() != 1 || word[0] < 'A' || word[0] > 'Z')
        throw std::runtime_error("'" + word + "' is not the letter of an application");
    return word[0];
}

static std::string readPath(const std::string &word)
{
    if (word.empty() || word[0] != '/')
        throw std::runtime_error("'" + word + "' is not an object path");
    return word;
}

static std::string readText(const std::string &word) { return word == "empty" ? "" : word; }

static std::string writeText(const std::string &text) { return text.empty() ? "empty" : text; }

struct Field
{
    std::function<std::string(const Step &)> write;
    std::function<void(Step &, const std::string &)> read;
};

static const std::map<std::string, Field> &fields()
{
    static const std::map<std::string, Field> all{
        {"%application",
            {[](const Step &s) { return std::string(1, s.application); },
                [](Step &s, const std::string &w) { s.application = readApplication(w); }}},
        {"%manager",
            {[](const Step &s) { return s.manager; }, [](Step &s, const std::string &w) { s.manager = readPath(w); }}},
        {"%object",
            {[](const Step &s) { return s.object; }, [](Step &s, const std::string &w) { s.object = readPath(w); }}},
        {"%interfaces",
            {[](const Step &s) { return text(s.interfaces); },
                [](Step &s, const std::string &w) { s.interfaces = readInterfaces(w); }}},
        {"%names",
            {[](const Step &s) { return joined(s.names, "+", shortInterfaceName); },
                [](Step &s, const std::string &w) { s.names = readNames(w); }}},
        {"%objects",
            {[](const Step &s) {
                 return joined(s.objects, " ",
                     [](const ObjectReport &object) { return object.path + ":" + text(object.interfaces); });
             },
                [](Step &s, const std::string &w) { s.objects = readObjects(w); }}},
        {"%number",
            {[](const Step &s) { return std::to_string(s.number); },
                [](Step &s, const std::string &w) { s.number = readNumber(w); }}},
        {"%on",
            {[](const Step &s) { return std::string(s.on ? "true" : "false"); },
                [](Step &s, const std::string &w) { s.on = readBool(w); }}},
        {"%text",
            {[](const Step &s) { return writeText(s.text); },
                [](Step &s, const std::string &w) { s.text = readText(w); }}},
        {"%otherText",
            {[](const Step &s) { return writeText(s.otherText); },
                [](Step &s, const std::string &w) { s.otherText = readText(w); }}},
    };
    return all;
}

std::string text(const Step &step)
{
    std::string line = step.atOnce ? atOnce : "";
    for (const std::string &word : words(phrases().at(step.kind))) {
        const auto field = fields().find(word);
        line += (field == fields().end() ? word : field->second.write(step)) + " ";
    }
    line.pop_back();
    return line;
}

std::string text(const History &history)
{
    std::string all;
    for (const Step &step : history)
        all += text(step) + "\n";
    return all;
}

// Pairs the words of a line with those of the phrase; a list of objects takes the rest. Empty when they differ.
static std::map<std::string, std::string> fieldsIn(Lines given, const Lines &expected)
{
    for (std::size_t rest = expected.size(); expected.back() == "%objects" && rest < given.size(); ++rest)
        given[expected.size() - 1] += " " + given[rest];
    if (expected.back() == "%objects" && given.size() > expected.size())
        given.resize(expected.size());
    std::map<std::string, std::string> found;
    if (given.size() != expected.size())
        return found;
    for (std::size_t i = 0; i < given.size(); ++i) {
        if (expected[i][0] != '%' && expected[i] != given[i])
            return {};
        found[expected[i]] = given[i];
    }
    return found;
}

static Step readStep(StepKind kind, const std::map<std::string, std::string> &found)
{
    Step step;
    step.kind = kind;
    for (const auto &[name, word] : found)
        if (fields().count(name) != 0)
            fields().at(name).read(step, word);
    return step;
}

Step parseStep(const std::string &line)
{
    const std::size_t start = line.compare(0, sizeof atOnce - 1, atOnce) == 0 ? sizeof atOnce - 1 : 0;
    std::string reason = "no step is worded so; the wordings stand in historytext.cpp";
    // Words before fields: of two phrases that fit, the one with fewer fields is meant.
    Step best;
    std::size_t fewest = SIZE_MAX;
    const Lines given = words(line.substr(start));
    for (const auto &[kind, phrase] : phrases()) {
        const auto found = fieldsIn(given, words(phrase));
        const auto fieldCount = std::size_t(std::count(phrase.begin(), phrase.end(), '%'));
        if (found.empty() || fieldCount >= fewest)
            continue;
        try {
            best = readStep(kind, found);
            fewest = fieldCount;
        } catch (const std::runtime_error &error) {
            reason = error.what();
        }
    }
    if (fewest == SIZE_MAX)
        throw std::runtime_error("'" + line + "': " + reason);
    best.atOnce = start > 0;
    return best;
}

History parseHistory(std::istream &in)
{
    History history;
    for (std::string line; std::getline(in, line);)
        if (!words(line).empty() && words(line)[0][0] != '#')
            history.push_back(parseStep(line));
    return history;
}
