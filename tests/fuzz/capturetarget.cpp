// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// Any bytes as a capture, through the checker's reader, its analysis and all rules.

#include "analysis/analysis.h"
#include "analysis/eventtext.h"
#include "capture/capturereader.h"
#include "capture/redaction.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>

static void take(GDBusMessage *message, const CaptureReader::Packet &packet, Analysis *analysis, Redaction *redaction)
{
    analysis->add(Message(message, packet.time, packet.number, packet.bytes.size()));
    redaction->apply(message);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> file(
        fmemopen(const_cast<std::uint8_t *>(data), size, "rb"), std::fclose); // NOLINT: only read
    CaptureReader reader(file.get());
    CaptureReader::Packet packet;
    Analysis analysis("org.tarnwickle.voicecall");
    analysis.onEvent = [](const Occasion &occasion) { EventText::of(occasion); };
    Redaction redaction;
    while (reader.next(&packet)) {
        GDBusMessage *message = g_dbus_message_new_from_blob(
            packet.bytes.data(), packet.bytes.size(), G_DBUS_CAPABILITY_FLAGS_UNIX_FD_PASSING, nullptr);
        if (!message)
            continue;
        take(message, packet, &analysis, &redaction);
        g_object_unref(message);
    }
    for (const Finding &finding : analysis.findings().all())
        finding.text();
    return 0;
}
