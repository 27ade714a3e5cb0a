// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef KIT_CHECKER_OPTIONS_H
#define KIT_CHECKER_OPTIONS_H

#include <string>
#include <vector>

/** Exit codes of the program. */
namespace Exit {
constexpr int clean = 0; // no error, no warning
constexpr int findings = 1;
constexpr int usage = 2;
constexpr int impossible = 3; // no bus, not allowed to monitor, a file that cannot be read
} // namespace Exit

enum class Format { Text, Json, Junit };

/** The command line, taken apart. */
struct Options
{
    std::string command;
    std::vector<std::string> arguments;
    std::vector<std::string> program; // behind "--"
    std::string host = "org.tarnwickle.voicecall";
    Format format = Format::Text;
    bool isRedacted = false;
    bool usesSession = false;
    std::string hostCommand;
    std::string ring;
    std::string dial;

    /** Puts what was wrong into `error`; then the rest means nothing. */
    static Options parse(const std::vector<std::string> &words, std::string *error);

    static const char *usage();

    /** The word behind the command, or the second; empty when there is none. */
    std::string argument(std::size_t index) const
    {
        return index < arguments.size() ? arguments[index] : std::string();
    }
};

#endif
