// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// Many calls, many registrations: how long they take to come and to go, and what they occupy.

#include "measurements.h"
#include "party.h"

#include <algorithm>
#include <memory>

namespace {

// From here on the memory is a question: below, what is allocated only once is more.
constexpr int manyForMemory = 1000;

// One program that is measured. What it does gives how long all took to come, how long to go, and, where they are
// many, what each occupied meanwhile: bytes of the heap, bytes of resident memory.
class Measured
{
public:
    Measured(const Bench &bench, Kind kind) : m_bench(bench), m_receiver(m_loop, kind)
    {
        // What the first application makes everybody allocate for good is not the calls'.
        bringUp(1);
        m_before = m_receiver.memory();
    }

    // A snapshot of so many calls, and the application's departure.
    Values bringUp(int calls)
    {
        auto application = std::make_unique<Application>(m_loop, m_bench.address, m_receiver);
        application->setSnapshot(CallKind::Plain, calls);
        application->holdSnapshot();
        application->registerManager();
        const int64_t begin = application->sendSnapshot();
        const double coming = double(m_receiver.nth(EventKind::CallAdded, calls).at - begin);
        const Values occupied = rest(*application, calls);
        const int64_t left = leave(std::move(application));
        const int64_t gone = m_receiver.nth(EventKind::CallGone, calls).at;
        return values(coming, double(std::max(gone, m_receiver.next(EventKind::ManagerGone).at) - left), occupied);
    }

    // So many registrations of one application, one after the other, and its departure.
    Values registerMany(int registrations)
    {
        auto application = std::make_unique<Application>(m_loop, m_bench.address, m_receiver);
        double coming = 0;
        for (int i = 0; i < registrations; ++i)
            coming += double(application->registerManager());
        application->waitForSnapshots(registrations);
        const Values occupied = rest(*application, registrations);
        const int64_t left = leave(std::move(application));
        return values(coming, double(m_receiver.nth(EventKind::ManagerGone, registrations).at - left), occupied);
    }

private:
    static Values values(double coming, double going, const Values &occupied)
    {
        Values all = {coming, going};
        all.insert(all.end(), occupied.begin(), occupied.end());
        return all;
    }

    // Waits until all is at rest; what each of them occupies, if that is a question.
    Values rest(Application &application, int count)
    {
        application.settle();
        if (count < manyForMemory)
            return {};
        const Event now = m_receiver.memory();
        return {double(now.heap - m_before.heap) / count, double(now.resident - m_before.resident) / count};
    }

    // When it left.
    static int64_t leave(std::unique_ptr<Application> application)
    {
        const int64_t left = now();
        application.reset();
        return left;
    }

    const Bench &m_bench;
    Loop m_loop;
    Receiver m_receiver;
    Event m_before = {};
};

struct Size
{
    int count;
    int rounds;
};

constexpr Size sizes[] = {{1, 40}, {10, 30}, {100, 20}, {1000, 20}, {4000, 20}};

// What comes and goes, and who is measured.
struct Subjects
{
    const char *coming;
    const char *going;
    const char *each;
    std::vector<Kind> kinds;
    Values (Measured::*step)(int count);
};

void measureSize(const Bench &bench, const Subjects &subjects, const Size &size)
{
    const auto start = [&] {
        std::vector<Contender> contenders;
        for (const Kind kind : subjects.kinds) {
            const auto measured = std::make_shared<Measured>(bench, kind);
            contenders.push_back({nameOf(kind),
                [=, step = subjects.step, count = size.count] { return (measured.get()->*step)(count); }});
        }
        return contenders;
    };
    std::vector<Row> rows = {{subjects.coming, size.count, "ns", {}}, {subjects.going, size.count, "ns", {}}};
    if (size.count >= manyForMemory) {
        rows.push_back({std::string("heap per ") + subjects.each, size.count, "bytes", {}});
        rows.push_back({std::string("resident per ") + subjects.each, size.count, "bytes", {}});
    }
    bench.measure(rows, start, {size.rounds});
}

void measureSizes(const Bench &bench, const Subjects &subjects)
{
    for (const Size &size : sizes) {
        if (!bench.isShort || size.count <= 100)
            measureSize(bench, subjects, size);
    }
}

} // namespace

void measureScale(const Bench &bench)
{
    measureSizes(
        bench, {"snapshot", "teardown", "call", {Kind::Bare, Kind::Sending, Kind::Plugin}, &Measured::bringUp});
}

// Nobody sends anything when a call manager comes or goes, so that there is one floor.
void measureDeparture(const Bench &bench)
{
    measureSizes(
        bench, {"registrations", "departure", "registration", {Kind::Bare, Kind::Plugin}, &Measured::registerMany});
}
