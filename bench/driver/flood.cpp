// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// One application at full rate while another one's call is answered.

#include "measurements.h"
#include "party.h"

#include <atomic>
#include <memory>
#include <thread>

namespace {

constexpr int windowMs = 800;
constexpr int turns = 20;

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
    std::vector<double> quiet;
    std::vector<double> flooded;
    std::vector<double> worst; // of each window, of a hundred
    std::vector<double> rates; // messages a second
};

// A while without the flood, and a while with it.
void window(Flooded &flooded)
{
    // Behind what has piled up.
    flooded.answer();
    for (int i = 0; i < 100; ++i)
        flooded.quiet.push_back(flooded.answer());
    const int64_t begin = now();
    Samples answers;
    const int64_t sent = flooded.flood.during([&] {
        while (now() - begin < int64_t(windowMs) * 1000000)
            answers.values.push_back(flooded.answer());
    });
    flooded.flooded.insert(flooded.flooded.end(), answers.values.begin(), answers.values.end());
    flooded.worst.push_back(answers.percentile(0.99));
    flooded.rates.push_back(double(sent) * 1e9 / double(now() - begin));
    flooded.answer();
}

// With these logging rules, and this behind the rows' names.
void measureWith(const Bench &bench, const std::string &logging, const std::string &suffix)
{
    std::vector<std::unique_ptr<Flooded>> all;
    for (const Kind kind : {Kind::Bare, Kind::Plugin})
        all.push_back(std::make_unique<Flooded>(bench, kind, logging));
    for (int i = 0; i < (bench.isShort ? 1 : turns); ++i) {
        for (const auto &flooded : all)
            window(*flooded);
    }
    Row quiet = {"answer, no flood" + suffix, 0, "ns", {}};
    Row flooded = {"answer under flood" + suffix, 0, "ns", {}};
    Row worst = {"p99 of a flood" + suffix, 0, "ns", {}};
    Row rate = {"flood" + suffix, 0, "messages/s", {}};
    for (const auto &one : all) {
        quiet.samples.push_back({one->party.who(), one->quiet});
        flooded.samples.push_back({one->party.who(), one->flooded});
        worst.samples.push_back({one->party.who(), one->worst});
        rate.samples.push_back({one->party.who(), one->rates});
    }
    bench.results.add(quiet);
    bench.results.add(flooded);
    bench.results.add(worst);
    bench.results.add(rate);
}

} // namespace

void measureFlood(const Bench &bench)
{
    dbus_threads_init_default();
    measureWith(bench, {}, {});
    measureWith(bench, "*=false", ", log silent");
}
