// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "analysis/names.h"
#include "capture/capturewriter.h"
#include "capture/redaction.h"
#include "commands/commands.h"
#include "commands/follower.h"

#include <cstdio>
#include <set>

namespace {

/** Decides what belongs into the capture: of replies only those to calls that are in it. */
class Sieve
{
public:
    explicit Sieve(Follower &follower) : m_follower(follower) { }

    bool passes(const Message &message)
    {
        if (message.kind == Message::Kind::Return || message.kind == Message::Kind::Error)
            return m_calls.erase({std::string(message.destination), message.replySerial}) > 0;
        if (!concerns(message.sender) && !concerns(message.destination) && !isRelay(message))
            return false;
        if (message.kind == Message::Kind::Call && m_calls.size() < 100000)
            m_calls.emplace(std::string(message.sender), message.serial);
        return true;
    }

private:
    // What the host tells everybody of a call names the call's application.
    bool isRelay(const Message &message) const
    {
        if (message.interface != Names::serviceManager || !message.body || g_variant_n_children(message.body) == 0)
            return false;
        const Variant service = child(message.body, 0);
        return hasType(service.get(), "s") && concerns(textOf(service.get()));
    }

    // What the bus says concerns everybody; what is broadcast has no destination.
    bool concerns(std::string_view name) const
    {
        const Selection &selection = m_follower.selection();
        return selection.isEverybody() || name == Names::bus
            || (!name.empty() && selection.contains(std::string(name)));
    }

    Follower &m_follower;
    std::set<std::pair<std::string, std::uint32_t>> m_calls;
};

} // namespace

int Commands::record(const Options &options)
{
    const std::string name = options.argument(0);
    Follower follower(options.host, options.argument(1));
    CaptureWriter writer(name);
    Sieve sieve(follower);
    Redaction redaction;
    std::uint64_t count = 0;
    follower.onMessage = [&](const Monitor::Item &item) {
        if (!sieve.passes(Message(item.message.get(), item.time, item.number, 0)))
            return;
        // The analysis reads the message itself behind this.
        const BusMessage copy(g_dbus_message_copy(item.message.get(), nullptr));
        if (options.isRedacted && copy)
            redaction.apply(copy.get());
        if (writer.error().empty() && writer.write(options.isRedacted ? copy.get() : item.message.get(), item.time))
            ++count;
        else
            follower.stop();
    };
    std::string error = writer.error().empty() ? "" : name + ": " + writer.error();
    if (error.empty() && follower.start(&error)) {
        std::fprintf(stderr, "ringlet-check: recording to %s; Ctrl-C ends it\n", name.c_str());
        follower.run(&error);
        if (!writer.flush() || !writer.error().empty())
            error = name + ": " + writer.error();
    }
    if (!error.empty())
        std::fprintf(stderr, "ringlet-check: %s\n", error.c_str());
    else
        std::fprintf(stderr, "ringlet-check: %llu messages\n", static_cast<unsigned long long>(count));
    return error.empty() ? Exit::clean : Exit::impossible;
}
