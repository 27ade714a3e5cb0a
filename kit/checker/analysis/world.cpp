// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "analysis/world.h"

#include <array>

std::string_view Status::wordOf(unsigned status)
{
    constexpr std::array<std::string_view, firstUnknown> words
        = {"disconnected", "disconnected", "dialing", "incoming", "disconnected", "active", "active", "held"};
    return status < words.size() ? words.at(status) : "no status";
}

Application *World::find(std::string_view name)
{
    const auto found = applications.find(name);
    return found == applications.end() ? nullptr : &found->second;
}

Call *World::findCall(std::string_view application, std::string_view path)
{
    Application *owner = find(application);
    if (!owner)
        return nullptr;
    const auto found = owner->calls.find(path);
    return found == owner->calls.end() ? nullptr : &found->second;
}

std::vector<Application *> World::siblingsOf(const Application &application)
{
    std::vector<Application *> siblings;
    for (auto &[name, other] : applications) {
        if (other.pid == application.pid && other.pid != 0 && &other != &application)
            siblings.push_back(&other);
    }
    return siblings;
}
