// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "commands/commands.h"

#include <algorithm>
#include <cstdio>

static int perform(const Options &options)
{
    struct Command
    {
        const char *name;
        int (*run)(const Options &);
    };
    static constexpr Command commands[]
        = {{"why", Commands::why}, {"watch", Commands::watch}, {"record", Commands::record}, {"read", Commands::read},
            {"run", Commands::run}, {"explain", Commands::explain}, {"rules", Commands::rules}};
    const auto *const found = std::find_if(std::begin(commands), std::end(commands),
        [&options](const Command &command) { return options.command == command.name; });
    return found->run(options);
}

int main(int argc, char *argv[])
{
    const std::vector<std::string> words(argv + 1, argv + argc);
    if (!words.empty() && (words[0] == "--help" || words[0] == "-h")) {
        std::puts(Options::usage());
        return Exit::clean;
    }
    if (!words.empty() && words[0] == "--version") {
        std::puts("ringlet-check " RINGLET_VERSION);
        return Exit::clean;
    }
    std::string error;
    const Options options = Options::parse(words, &error);
    if (!error.empty()) {
        std::fprintf(stderr, "ringlet-check: %s; see ringlet-check --help\n", error.c_str());
        return Exit::usage;
    }
    return perform(options);
}
