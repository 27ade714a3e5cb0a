// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "analysis/eventtext.h"

#include "analysis/variants.h"

#include <array>

namespace {

using Text = std::string (*)(const Occasion &);

std::string arguments(const Occasion &o) { return o.message.body ? ' ' + printed(o.message.body) : std::string(); }

std::string none(const Occasion &) { return {}; }

std::string object(const Occasion &o) { return std::string(o.object); }

std::string status(const Occasion &o)
{
    return object(o) + " StatusChanged" + arguments(o)
        + (o.status ? ' ' + std::string(Status::wordOf(*o.status)) : std::string());
}

// In the order of the events.
constexpr std::array<Text, eventCount> texts = {
    [](const Occasion &) { return std::string("a host has appeared"); },
    [](const Occasion &) { return std::string("the host has left"); },
    [](const Occasion &o) { return "registers " + object(o); },
    [](const Occasion &o) { return "is refused: " + std::string(o.message.error); },
    [](const Occasion &o) { return "is registered at " + object(o); },
    [](const Occasion &o) { return "is asked for its objects at " + object(o); },
    [](const Occasion &) { return std::string("answers with its objects"); },
    [](const Occasion &o) { return "answers with " + std::string(o.message.error); },
    none,
    none,
    [](const Occasion &o) { return "announces " + object(o); },
    none,
    [](const Occasion &o) { return object(o) + " is shown by the host"; },
    [](const Occasion &o) { return "removes " + object(o); },
    status,
    [](const Occasion &o) { return object(o) + ' ' + std::string(o.message.member) + arguments(o); },
    [](const Occasion &o) { return object(o) + " PropertiesChanged"; },
    [](const Occasion &o) { return object(o) + " is told to " + o.command->member + arguments(o); },
    [](const Occasion &o) { return object(o) + " is told " + o.command->member; },
    none,
    [](const Occasion &o) {
        return object(o) + " answers " + o.command->member + " with " + std::string(o.message.error);
    },
    [](const Occasion &o) { return object(o) + " has ended"; },
    [](const Occasion &) { return std::string("has left the bus"); },
    none,
    none,
    none,
};

} // namespace

std::string EventText::of(const Occasion &occasion)
{
    return texts.at(static_cast<std::size_t>(occasion.event))(occasion);
}
