// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef KIT_CHECKER_RULE_H
#define KIT_CHECKER_RULE_H

#include <string>
#include <string_view>
#include <vector>

enum class Severity { Error, Warning, Note };

std::string_view nameOf(Severity severity);

/**
 * A rule of the wire contract. Made once, as a static object of a file in rules/, and found in all() from then.
 * Severity: an error is a call that does not show, or shows wrongly; a warning works by luck or in part.
 */
struct Rule
{
    struct Texts
    {
        const char *meaning; // what is wrong, one sentence
        const char *matters; // what comes of it, one sentence that stands in every finding
        const char *remedy; // what to do, one sentence that stands in every finding
        const char *wrong; // messages, a line each
        const char *right;
    };

    Rule(const char *area, const char *name, Severity severity, Texts texts,
        std::vector<std::string_view> explains = {});
    Rule(const Rule &) = delete;
    Rule &operator=(const Rule &) = delete;
    ~Rule() = default;

    /** Every rule, by area and name. */
    static std::vector<const Rule *> all();

    /** Null when there is none of this name. */
    static const Rule *find(std::string_view name);

    /** Whether a finding of `other` follows from one of this rule. */
    bool isCauseOf(const Rule &other) const;

    std::string_view area;
    std::string_view name;
    Severity severity;
    Texts texts;
    std::vector<std::string_view> explains; // names of rules whose findings follow from this one's; "*" for all
};

#endif
