// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// How fast the checker reads: readcapture FILE COUNT reads the capture over and over until it has had COUNT messages,
// with GLib alone and with the analysis behind it, and prints both and their ratio.

#include "analysis/analysis.h"
#include "capture/capturereader.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sys/resource.h>

namespace {

struct Pass
{
    std::uint64_t count = 0;
    Time last = 0;
};

// One reading of the whole file, its times moved so that they go on where the last reading ended.
Pass readOnce(const char *name, Time start, std::uint64_t left, Analysis *analysis)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> file(std::fopen(name, "rb"), std::fclose);
    if (!file)
        return {};
    CaptureReader reader(file.get());
    CaptureReader::Packet packet;
    Pass pass;
    Time first = 0;
    while (pass.count < left && reader.next(&packet)) {
        first = pass.count == 0 ? packet.time : first;
        GDBusMessage *message = g_dbus_message_new_from_blob(
            packet.bytes.data(), packet.bytes.size(), G_DBUS_CAPABILITY_FLAGS_UNIX_FD_PASSING, nullptr);
        pass.last = start + packet.time - first;
        if (message && analysis)
            analysis->add(Message(message, pass.last, packet.number, packet.bytes.size()));
        if (message)
            g_object_unref(message);
        ++pass.count;
    }
    return pass;
}

// Messages in a second.
double rateOf(const char *name, std::uint64_t wanted, Analysis *analysis)
{
    const auto begin = std::chrono::steady_clock::now();
    Pass pass;
    for (std::uint64_t count = 0; count < wanted; count += pass.count) {
        pass = readOnce(name, pass.last + 1000000, wanted - count, analysis);
        if (pass.count == 0)
            return 0;
    }
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    return static_cast<double>(wanted) / took.count();
}

} // namespace

int main(int argc, char *argv[])
{
    const std::uint64_t wanted = argc == 3 ? std::strtoull(argv[2], nullptr, 10) : 0;
    if (wanted == 0) {
        std::fputs("Usage: readcapture FILE COUNT\n", stderr);
        return 2;
    }
    Analysis analysis("org.tarnwickle.voicecall");
    const double alone = rateOf(argv[1], wanted, nullptr);
    const double analysed = rateOf(argv[1], wanted, &analysis);
    if (alone == 0 || analysed == 0) {
        std::fprintf(stderr, "readcapture: %s cannot be read\n", argv[1]);
        return 1;
    }
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("GLib alone %.0f/s, with the analysis %.0f/s, ratio %.2f, %ld KiB at most\n", alone, analysed,
        alone / analysed, usage.ru_maxrss);
    return 0;
}
