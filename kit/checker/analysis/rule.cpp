// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "analysis/rule.h"

#include <algorithm>
#include <array>
#include <utility>

// In the order of a call's life, which is that of the pages.
static constexpr std::array<std::string_view, 9> areas
    = {"registration", "snapshot", "announcing", "status", "ending", "commands", "audio", "several calls", "weight"};

static std::vector<const Rule *> &registry()
{
    static std::vector<const Rule *> rules;
    return rules;
}

static bool isBefore(const Rule *left, const Rule *right)
{
    const auto rank = [](const Rule *rule) { return std::find(areas.begin(), areas.end(), rule->area); };
    return std::make_pair(rank(left), left->name) < std::make_pair(rank(right), right->name);
}

std::string_view nameOf(Severity severity)
{
    constexpr std::array<std::string_view, 3> names = {"error", "warning", "note"};
    return names.at(static_cast<std::size_t>(severity));
}

Rule::Rule(const char *area, const char *name, Severity severity, Texts texts, std::vector<std::string_view> explains)
    : area(area),
      name(name),
      severity(severity),
      texts(texts),
      explains(std::move(explains))
{
    registry().push_back(this);
}

std::vector<const Rule *> Rule::all()
{
    std::vector<const Rule *> rules = registry();
    std::sort(rules.begin(), rules.end(), isBefore);
    return rules;
}

const Rule *Rule::find(std::string_view name)
{
    const auto found
        = std::find_if(registry().begin(), registry().end(), [name](const Rule *rule) { return rule->name == name; });
    return found == registry().end() ? nullptr : *found;
}

bool Rule::isCauseOf(const Rule &other) const
{
    return this != &other && std::any_of(explains.begin(), explains.end(), [&other](std::string_view name) {
        return name == other.name || name == "*";
    });
}
