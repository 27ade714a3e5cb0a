// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// What happens when nothing does.

#include "measurements.h"
#include "party.h"

#include <filesystem>
#include <fstream>
#include <memory>

namespace {

constexpr int applications = 10;
constexpr int callsEach = 10;

// A receiver with a hundred calls that are ringing, of which one may be active.
struct Resting
{
    Resting(const Bench &bench, const char *who, Kind kind, bool hasActiveCall) : who(who), receiver(loop, kind)
    {
        for (int i = 0; i < applications; ++i) {
            all.push_back(std::make_unique<Application>(loop, bench.address, receiver));
            all.back()->setSnapshot(CallKind::Plain, callsEach);
            all.back()->registerManager();
            all.back()->waitForSnapshots(1);
        }
        receiver.nth(EventKind::CallAdded, applications * callsEach);
        all.back()->settle();
        if (hasActiveCall) {
            all.front()->changeStatus(0, 5);
            receiver.next(EventKind::Status);
        }
    }

    // How often its threads have gone to sleep so far, which is how often they were woken.
    int64_t wakeUps() const
    {
        int64_t sum = 0;
        const auto tasks = "/proc/" + std::to_string(receiver.process()) + "/task";
        for (const auto &task : std::filesystem::directory_iterator(tasks)) {
            std::ifstream status(task.path() / "status");
            for (std::string word; status >> word;) {
                int64_t count = 0;
                if (word == "voluntary_ctxt_switches:" && status >> count)
                    sum += count;
            }
        }
        return sum;
    }

    // And from here on it is counted anew.
    int64_t sinceLast()
    {
        const int64_t last = before;
        before = wakeUps();
        return before - last;
    }

    const char *who;
    Loop loop;
    Receiver receiver;
    std::vector<std::unique_ptr<Application>> all;
    int64_t before = 0;
};

// Sees every message on the bus.
class Monitor
{
public:
    Monitor(Loop &loop, const std::string &address) : m_loop(loop), m_bus(address)
    {
        m_bus.call(Message::call(
            {"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus.Monitoring"}, "BecomeMonitor")
                       .strings({})
                       .number(0));
        m_loop.watch(m_bus.descriptor(), [this] { m_bus.pump([this](const Message &) { ++m_count; }); });
        // The bus tells it first that it has lost its name.
        m_loop.runFor(500);
        m_count = 0;
    }
    ~Monitor() { m_loop.forget(m_bus.descriptor()); }

    int count() const { return m_count; }

private:
    Loop &m_loop;
    BusConnection m_bus;
    int m_count = 0;
};

} // namespace

void measureIdle(const Bench &bench)
{
    constexpr int seconds = 3;
    const int windows = bench.isShort ? 2 : 20;
    std::vector<std::unique_ptr<Resting>> all;
    all.push_back(std::make_unique<Resting>(bench, "bare", Kind::Bare, false));
    all.push_back(std::make_unique<Resting>(bench, "plug-in", Kind::Plugin, false));
    all.push_back(std::make_unique<Resting>(bench, "plug-in, one ongoing", Kind::Plugin, true));

    Loop loop;
    Monitor monitor(loop, bench.address);
    Row wakeUps = {"idle, wake-ups", seconds, "count", {}};
    Row messages = {"idle, messages", seconds, "count", {}};
    for (const auto &resting : all)
        resting->before = resting->wakeUps();
    for (int window = 0; window < windows; ++window) {
        const int before = monitor.count();
        loop.runFor(seconds * 1000);
        for (const auto &resting : all)
            wakeUps.add(resting->who, window, double(resting->sinceLast()));
        messages.add("all on the bus", window, double(monitor.count() - before));
    }
    bench.results.add(wakeUps);
    bench.results.add(messages);
}
