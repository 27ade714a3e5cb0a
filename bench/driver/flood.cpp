// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// One application at full rate while another one's call is answered.

#include "measurements.h"
#include "party.h"

#include <algorithm>
#include <atomic>
#include <thread>

namespace {

constexpr int windowMs = 800;
// Fewer have no p99.
constexpr int answersOfAWindow = 120;
constexpr int rounds = 20;

// Sends the status of a call as fast as the bus takes it, for as long as this lives.
class Flood
{
public:
    Flood(const Bench &bench, const Receiver &receiver) : m_application(m_loop, bench.address, receiver)
    {
        m_application.setSnapshot(CallKind::Flood, 1);
        m_application.registerManager();
        m_application.waitForSnapshots(1);
    }

    /** How many were sent while `meanwhile` ran. */
    template <typename Function>
    int64_t during(Function meanwhile)
    {
        std::atomic<bool> isOver = {false};
        int64_t sent = 0;
        std::thread sender([&] {
            for (; !isOver; ++sent) {
                m_application.changeStatus(0, 3);
                m_application.flush();
            }
        });
        meanwhile();
        isOver = true;
        sender.join();
        return sent;
    }

private:
    Loop m_loop;
    Application m_application;
};

struct Flooded
{
    Flooded(const Bench &bench, Kind kind, const std::string &logging)
        : party(bench.address, kind, Start{{}, logging, "/dev/null"}),
          flood(bench, party.receiver)
    {
        party.receiver.next(EventKind::CallAdded);
        party.bringUp(CallKind::Plain, 1);
    }

    // The host's Accept until it sees the status with which the application answers, nanoseconds.
    double answer()
    {
        constexpr uint32_t honestCall = 1; // behind the flooder's
        party.receiver.request(Command::Answer, honestCall);
        const Event sent = party.receiver.next(EventKind::Done);
        party.application.waitForCommands(1);
        party.application.changeStatus(0, 3);
        return double(party.receiver.next(EventKind::Status).at - sent.at);
    }

    Party party;
    Flood flood;
};

// The rows of one way of logging.
struct Rows
{
    Row quiet;
    Row flooded;
    Row rate;
};

// A while without the flood, and a while with it.
void window(Flooded &flooded, Rows &rows, int round)
{
    const char *who = flooded.party.who();
    // Behind what has piled up.
    flooded.answer();
    for (int i = 0; i < 100; ++i)
        rows.quiet.add(who, round, flooded.answer());
    const int64_t begin = now();
    const int64_t sent = flooded.flood.during([&] {
        for (int i = 0; i < answersOfAWindow || now() - begin < int64_t(windowMs) * 1000000; ++i)
            rows.flooded.add(who, round, flooded.answer());
    });
    rows.rate.add(who, round, double(sent) * 1e9 / double(now() - begin));
}

// With these logging rules, and this behind the rows' names.
void measureWith(const Bench &bench, const std::string &logging, const std::string &suffix)
{
    Rows rows = {{"answer, no flood" + suffix, 0, "ns", {}}, {"answer under flood" + suffix, 0, "ns", {}},
        {"flood" + suffix, 0, "messages/s", {}}};
    for (int round = 0; round < (bench.isShort ? 1 : rounds); ++round) {
        std::vector<Kind> kinds = {Kind::Bare, Kind::Plugin};
        if (round % 2 != 0)
            std::reverse(kinds.begin(), kinds.end());
        for (const Kind kind : kinds) {
            Flooded flooded(bench, kind, logging);
            window(flooded, rows, round);
        }
    }
    for (const Row &row : {rows.quiet, rows.flooded, rows.rate})
        bench.results.add(row);
}

} // namespace

void measureFlood(const Bench &bench)
{
    dbus_threads_init_default();
    measureWith(bench, {}, {});
    measureWith(bench, "*=false", ", log silent");
}
