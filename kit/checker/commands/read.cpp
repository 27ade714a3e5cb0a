// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "analysis/analysis.h"
#include "capture/capturereader.h"
#include "commands/bus.h"
#include "commands/commands.h"
#include "commands/output.h"

#include <cerrno>
#include <cstring>

// What the reader gives, taken apart; what is no D-Bus message is counted and passed over.
static std::size_t analyse(CaptureReader *reader, Analysis *analysis)
{
    std::size_t unreadable = 0;
    CaptureReader::Packet packet;
    while (reader->next(&packet)) {
        const BusMessage message(g_dbus_message_new_from_blob(
            packet.bytes.data(), packet.bytes.size(), G_DBUS_CAPABILITY_FLAGS_UNIX_FD_PASSING, nullptr));
        if (message)
            analysis->add(Message(message.get(), packet.time, packet.number, packet.bytes.size()));
        else
            ++unreadable;
    }
    return unreadable;
}

int Commands::read(const Options &options)
{
    const std::string name = options.argument(0);
    std::FILE *file = std::fopen(name.c_str(), "rb");
    if (!file) {
        std::fprintf(stderr, "ringlet-check: %s: %s\n", name.c_str(), std::strerror(errno));
        return Exit::impossible;
    }
    CaptureReader reader(file);
    Analysis analysis(options.host);
    const std::size_t unreadable = analyse(&reader, &analysis);
    std::fclose(file);
    std::string error = reader.error().empty() ? "" : name + ": " + reader.error();
    if (unreadable > 0)
        error += (error.empty() ? name + ": " : "; ") + std::to_string(unreadable) + " packets are no D-Bus messages";

    Selection selection(options.argument(1));
    for (const Finding &finding : analysis.findings().all()) {
        const auto pid = finding.who.find("pid ");
        if (pid != std::string::npos)
            selection.learn(finding.application, static_cast<unsigned>(std::stoul(finding.who.substr(pid + 4))), "");
    }
    return Output::print(
        analysis.findings(), options.format,
        [&selection](const Finding &finding) { return selection.contains(finding.application); }, error);
}
