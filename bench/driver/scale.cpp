// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// Many calls, many registrations: how long they take to come and to go, and what they occupy.

#include "measurements.h"
#include "party.h"

#include <algorithm>
#include <memory>

namespace {

// One program that is measured, and a value of each row for every time that it was.
struct Measured
{
    Loop loop;
    Receiver receiver;
    std::vector<double> coming;
    std::vector<double> going;
    Event before = {};
    Event after = {};

    explicit Measured(const Bench &bench, Kind kind) : receiver(loop, kind)
    {
        // What the first application makes everybody allocate for good is not the calls'.
        bringUp(bench, 1, false);
        going.clear();
        coming.clear();
        before = receiver.memory();
    }

    // A snapshot of so many calls, and the application's departure.
    void bringUp(const Bench &bench, int calls, bool isMemoryTaken)
    {
        auto application = std::make_unique<Application>(loop, bench.address, receiver);
        application->setSnapshot(CallKind::Plain, calls);
        application->holdSnapshot();
        application->registerManager();
        const int64_t begin = application->sendSnapshot();
        coming.push_back(double(receiver.nth(EventKind::CallAdded, calls).at - begin));
        const int64_t left = leave(std::move(application), isMemoryTaken);
        const int64_t gone = receiver.nth(EventKind::CallGone, calls).at;
        going.push_back(double(std::max(gone, receiver.next(EventKind::ManagerGone).at) - left));
    }

    // So many registrations of one application, and its departure; `coming` is the whole of them.
    void registerMany(const Bench &bench, int registrations, bool isMemoryTaken)
    {
        auto application = std::make_unique<Application>(loop, bench.address, receiver);
        double sum = 0;
        for (int i = 0; i < registrations; ++i)
            sum += double(application->registerManager());
        coming.push_back(sum);
        application->waitForSnapshots(registrations);
        const int64_t left = leave(std::move(application), isMemoryTaken);
        going.push_back(double(receiver.nth(EventKind::ManagerGone, registrations).at - left));
    }

    // When it left, once all is at rest and the memory is taken, if it is.
    int64_t leave(std::unique_ptr<Application> application, bool isMemoryTaken)
    {
        application->settle();
        if (isMemoryTaken)
            after = receiver.memory();
        const int64_t left = now();
        application.reset();
        return left;
    }

    double heap(int count) const { return double(after.heap - before.heap) / count; }
    double resident(int count) const { return double(after.resident - before.resident) / count; }
};

constexpr Kind kinds[] = {Kind::Bare, Kind::Sending, Kind::Plugin};

void add(const Bench &bench, const std::string &name, int size, const char *unit,
    const std::vector<std::unique_ptr<Measured>> &all,
    const std::function<std::vector<double>(const Measured &)> &value)
{
    Row row = {name, size, unit, {}};
    for (size_t i = 0; i < all.size(); ++i)
        row.samples.push_back({nameOf(kinds[i]), value(*all[i])});
    bench.results.add(row);
}

struct Size
{
    int count;
    int times;
};

using Step = void (Measured::*)(const Bench &, int, bool);

void measureSize(
    const Bench &bench, const Size &size, Step step, const char *coming, const char *going, const char *each)
{
    std::vector<std::unique_ptr<Measured>> all;
    for (const Kind kind : kinds)
        all.push_back(std::make_unique<Measured>(bench, kind));
    for (int i = 0; i < size.times; ++i) {
        for (const auto &measured : all)
            (measured.get()->*step)(bench, size.count, i == 0);
    }
    add(bench, coming, size.count, "ns", all, [](const Measured &measured) { return measured.coming; });
    add(bench, going, size.count, "ns", all, [](const Measured &measured) { return measured.going; });
    if (size.count < 1000)
        return;
    add(bench, std::string("heap per ") + each, size.count, "bytes", all,
        [&](const Measured &measured) { return std::vector<double>{measured.heap(size.count)}; });
    add(bench, std::string("resident per ") + each, size.count, "bytes", all,
        [&](const Measured &measured) { return std::vector<double>{measured.resident(size.count)}; });
}

} // namespace

void measureScale(const Bench &bench)
{
    static const Size sizes[] = {{1, 40}, {10, 30}, {100, 20}, {1000, 5}, {4000, 2}};
    for (const Size &size : sizes) {
        if (!bench.isShort || size.count <= 100)
            measureSize(bench, size, &Measured::bringUp, "snapshot", "teardown", "call");
    }
}

void measureDeparture(const Bench &bench)
{
    static const Size sizes[] = {{1, 40}, {10, 30}, {100, 10}, {1000, 3}, {4000, 1}};
    for (const Size &size : sizes) {
        if (!bench.isShort || size.count <= 100)
            measureSize(bench, size, &Measured::registerMany, "registrations", "departure", "registration");
    }
}
