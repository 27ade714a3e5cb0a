// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef KIT_CHECKER_MESSAGE_H
#define KIT_CHECKER_MESSAGE_H

#include <cstdint>
#include <gio/gio.h>
#include <string_view>

/** Microseconds since the epoch. */
using Time = std::int64_t;
constexpr Time milliseconds = 1000;

/** A message as the bus carried it; texts and body belong to the GDBusMessage that it was read from. */
struct Message
{
    enum class Kind { Other, Call, Return, Error, Signal };

    Message() = default;
    Message(GDBusMessage *message, Time time, std::uint64_t number, std::size_t size);

    bool isCall(std::string_view interface, std::string_view member) const;
    bool isSignal(std::string_view interface, std::string_view member) const;

    Kind kind = Kind::Other;
    Time time = 0;
    std::uint64_t number = 0; // counted from 1
    std::size_t size = 0; // bytes; 0 when unknown
    std::uint32_t serial = 0;
    std::uint32_t replySerial = 0;
    std::uint32_t descriptors = 0;
    std::string_view sender, destination, path, interface, member, error, signature;
    GVariant *body = nullptr; // a tuple; null when there are no arguments
};

#endif
