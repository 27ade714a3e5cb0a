// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "commands/options.h"

#include <algorithm>
#include <array>

namespace {

struct Command
{
    const char *name;
    std::size_t fewest;
    std::size_t most;
    const char *options; // that it knows, beside --host
};

constexpr std::array<Command, 7> commands = {{
    {"why", 0, 1, "--format"},
    {"watch", 0, 1, "--format"},
    {"record", 1, 2, "--redact"},
    {"read", 1, 2, "--format"},
    {"run", 0, 0, "--format --host-command --session --ring --dial"},
    {"explain", 1, 1, ""},
    {"rules", 0, 0, "--format"},
}};

struct Valued
{
    const char *name;
    std::string Options::*value;
};

const std::array<Valued, 4> valued = {{{"--host", &Options::host}, {"--host-command", &Options::hostCommand},
    {"--ring", &Options::ring}, {"--dial", &Options::dial}}};

struct Flag
{
    const char *name;
    bool Options::*value;
};

const std::array<Flag, 2> flags = {{{"--redact", &Options::isRedacted}, {"--session", &Options::usesSession}}};

bool setFormat(const std::string &word, Format *format)
{
    const std::array<std::pair<const char *, Format>, 3> formats
        = {{{"text", Format::Text}, {"json", Format::Json}, {"junit", Format::Junit}}};
    for (const auto &[name, value] : formats) {
        if (word == name)
            *format = value;
    }
    return word == "text" || word == "json" || word == "junit";
}

// Takes the option at `index` and the value behind it; the name of what is wrong, or nothing.
std::string take(const std::vector<std::string> &words, std::size_t *index, Options *options)
{
    const std::string &word = words[*index];
    for (const Flag &flag : flags) {
        if (word == flag.name) {
            options->*flag.value = true;
            return {};
        }
    }
    const bool isFormat = word == "--format";
    const auto *const known
        = std::find_if(valued.begin(), valued.end(), [&word](const Valued &option) { return word == option.name; });
    if (!isFormat && known == valued.end())
        return "unknown option " + word;
    if (++*index >= words.size())
        return word + " needs a value";
    if (isFormat)
        return setFormat(words[*index], &options->format) ? "" : "--format is text, json or junit";
    options->*(known->value) = words[*index];
    return words[*index].empty() ? word + " is empty" : "";
}

std::string judge(const Options &options, const std::vector<std::string> &given)
{
    const auto *const command = std::find_if(
        commands.begin(), commands.end(), [&options](const Command &known) { return options.command == known.name; });
    if (options.command.empty())
        return "a command is missing";
    if (command == commands.end())
        return "unknown command " + options.command;
    if (options.arguments.size() < command->fewest)
        return options.command + " needs an argument";
    if (options.arguments.size() > command->most)
        return options.command + " does not take \"" + options.arguments[command->most] + '"';
    for (const std::string &option : given) {
        if (option != "--host" && (std::string(command->options) + ' ').find(option + ' ') == std::string::npos)
            return options.command + " does not know " + option;
    }
    const bool isRun = options.command == "run";
    if (isRun != !options.program.empty())
        return isRun ? "run needs -- and a program" : options.command + " takes no program";
    if (options.command == "watch" && options.format == Format::Junit)
        return "watch prints text or json";
    return {};
}

} // namespace

Options Options::parse(const std::vector<std::string> &words, std::string *error)
{
    Options options;
    std::vector<std::string> given;
    for (std::size_t i = 0; i < words.size() && error->empty(); ++i) {
        if (words[i] == "--") {
            options.program.assign(words.begin() + static_cast<std::ptrdiff_t>(i) + 1, words.end());
            break;
        }
        if (words[i].size() > 1 && words[i][0] == '-') {
            given.push_back(words[i]);
            *error = take(words, &i, &options);
        } else if (options.command.empty())
            options.command = words[i];
        else
            options.arguments.push_back(words[i]);
    }
    if (error->empty())
        *error = judge(options, given);
    return options;
}

const char *Options::usage()
{
    return R"(Usage: ringlet-check why [APPLICATION]          what is wrong right now
       ringlet-check watch [APPLICATION]        follow the session bus, until Ctrl-C
       ringlet-check record FILE [APPLICATION]  write the messages that concern calls to a capture
       ringlet-check read FILE [APPLICATION]    the findings of a capture, pcap or pcapng
       ringlet-check run [OPTION...] -- PROGRAM [ARGUMENT...]
                                                examine a program on a bus and with a host of its own
       ringlet-check explain RULE               what a rule means, right and wrong on the wire
       ringlet-check rules                      all rules

APPLICATION is a bus name, a process id or a program's name; without it everybody is looked at.

  --host NAME        bus name of the host; default org.tarnwickle.voicecall
  --format FORMAT    why, read, run, rules: text, json or junit; watch: text or json
  --redact           record: replace names, addresses and tones
  --host-command C   run: start this host instead of voicecalld with the plug-in
  --session          run: use the bus and the host that are there, without restarts
  --ring COMMAND     run: a shell command that lets a call come in
  --dial COMMAND     run: a shell command that lets a call go out
  --help, --version

Exit codes: 0 nothing found, 1 errors or warnings found, 2 wrong command line, 3 could not be tried.)";
}
