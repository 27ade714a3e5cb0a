// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef KIT_CHECKER_OUTPUT_H
#define KIT_CHECKER_OUTPUT_H

#include "analysis/finding.h"
#include "commands/options.h"

/** Findings as people and programs read them. */
namespace Output {
using Wanted = std::function<bool(const Finding &)>;

/** A text in JSON's double quotes; bytes that are no UTF-8 are replaced. */
std::string quoted(std::string_view text);
/** A text inside of XML. */
std::string escaped(std::string_view text);

/** Without what would steer a terminal. */
std::string printable(std::string_view text);

/** The time of day, or when it is far from a day of ours, seconds. */
std::string timeOf(Time time);

/** One finding with all that follows from it. */
std::string text(const Findings &findings, const Finding &finding);
std::string json(const Findings &findings, const Finding &finding);

/** The same for CI: a case for each finding and for each rule that was kept, behind `first`, which has so many. */
std::string junit(const Findings &findings, const Wanted &isWanted, const std::string &error,
    const std::string &first = {}, std::size_t count = 0);

/** Prints all that are wanted and follow from no other; the exit code. `error` says why there may be more. */
int print(const Findings &findings, Format format, const Wanted &isWanted, const std::string &error = {});
} // namespace Output

#endif
