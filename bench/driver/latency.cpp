// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// One message at a time: how long it takes to where it has its effect.

#include "measurements.h"
#include "party.h"

#include <QtCore/QTemporaryFile>
#include <memory>
#include <stdexcept>

namespace {

// What is up before anything is measured.
struct Scene
{
    std::vector<Kind> kinds;
    CallKind call;
    int calls;
    Start start = {};
};

// Does the thing for the so-manieth time.
using Once = std::function<Values(Party &party, uint32_t time)>;

std::vector<Contender> start(const Bench &bench, const Scene &scene, const Once &once)
{
    std::vector<Contender> contenders;
    for (const Kind kind : scene.kinds) {
        const auto party = std::make_shared<Party>(bench.address, kind, scene.start);
        party->bringUp(scene.call, scene.calls);
        contenders.push_back({party->who(), [=, time = 0U]() mutable { return once(*party, time++); }});
    }
    return contenders;
}

std::vector<Contender> startBesideRelay(const Bench &bench, RelayedSocket &relay, const Scene &scene, const Once &once)
{
    std::vector<Contender> contenders = start(bench, scene, once);
    contenders.insert(contenders.begin(), {"relay", [&] { return Values{relay.oneWay()}; }});
    return contenders;
}

// The application's StatusChanged until the host's. Incoming and dialing: no timer runs beside.
double status(Party &party, uint32_t call)
{
    static uint32_t alternating = 2;
    alternating = 5 - alternating;
    const int64_t begin = party.application.changeStatus(call, alternating);
    return double(party.receiver.next(EventKind::Status).at - begin);
}

void measureStatus(const Bench &bench, const char *name, const Scene &scene, const Turns &turns)
{
    RelayedSocket relay;
    // Every call in its turn, whatever place it has in anybody's list.
    const Once once = [calls = uint32_t(scene.calls)](
                          Party &party, uint32_t time) { return Values{status(party, time * 7919 % calls)}; };
    bench.measure(
        {{name, scene.calls, "ns", {}}}, [&] { return startBesideRelay(bench, relay, scene, once); }, turns);
}

} // namespace

void measureStatus(const Bench &bench)
{
    for (const int calls : {1, 10, 100, 1000}) {
        if (!bench.isShort || calls <= 100)
            measureStatus(
                bench, "status", {{Kind::Peer, Kind::Bare, Kind::Plugin}, CallKind::Plain, calls}, {20, 3, 50});
    }
}

// How many lines the plug-in's tracing has for one status, and the host's for asking for it.
static Row tracedLines(const Bench &bench)
{
    constexpr int times = 5;
    Row row = {"status, traced lines", 1, "lines", {}};
    QTemporaryFile log;
    if (!log.open())
        throw std::runtime_error("cannot make a file for a log");
    Party party(bench.address, Kind::Plugin, Start{{}, "*=false;voicecall.info=true", log.fileName().toStdString()});
    party.bringUp(CallKind::Plain, 1);
    log.seek(log.size());
    for (int round = 0; round < 20; ++round) {
        for (int i = 0; i < times; ++i)
            status(party, 0);
        row.add(party.who(), round, double(log.readAll().count('\n')) / times);
    }
    return row;
}

void measureLog(const Bench &bench)
{
    bench.results.add(tracedLines(bench));
    static const struct
    {
        const char *name;
        const char *rules;
    } modes[] = {{"status, log silent", "*=false"}, {"status, log traced", "voicecall.info=true"}};
    for (const auto &mode : modes)
        measureStatus(bench, mode.name,
            {{Kind::Bare, Kind::Plugin}, CallKind::Plain, 1, Start{{}, mode.rules, "/dev/null"}}, {20, 2, 50});
}

// What the host does until the last of so many calls has heard of it, and how long it keeps the host's main thread.
static Values command(Party &party, Command command, int calls)
{
    party.receiver.request(command);
    const Event sent = party.receiver.next(EventKind::Done);
    const int64_t received = party.application.waitForCommands(calls);
    if (party.receiver.kind() == Kind::Peer)
        return {double(received - sent.at)};
    return {double(received - sent.at), double(sent.cost)};
}

void measureCommands(const Bench &bench)
{
    static const struct
    {
        std::string name;
        Command command;
        std::vector<Kind> kinds;
    } rows[] = {{"Accept", Command::Answer, {Kind::Peer, Kind::Bare, Kind::Plugin}},
        {"SetHold", Command::Hold, {Kind::Bare, Kind::Plugin}},
        {"SendDTMF", Command::SendTones, {Kind::Bare, Kind::Plugin}}};

    RelayedSocket relay;
    for (const auto &row : rows) {
        const Scene scene = {row.kinds, CallKind::Full, 1};
        const Once once = [&](Party &party, uint32_t) { return command(party, row.command, 1); };
        bench.measure({{row.name, 0, "ns", {}}, {row.name + ", main thread", 0, "ns", {}}},
            [&] { return startBesideRelay(bench, relay, scene, once); }, {20, 3, 50});
    }
}

namespace {

// A receiver at which applications register that it has not seen before.
struct Registered
{
    Registered(const Bench &bench, Kind kind) : bench(bench), receiver(loop, kind) { }

    // The call until its answer.
    Values once()
    {
        double nanoseconds = 0;
        {
            Application application(loop, bench.address, receiver);
            nanoseconds = double(application.registerManager());
            if (receiver.kind() != Kind::Peer)
                application.waitForSnapshots(1);
        }
        if (receiver.kind() != Kind::Peer)
            receiver.next(EventKind::ManagerGone);
        return {nanoseconds};
    }

    const Bench &bench;
    Loop loop;
    Receiver receiver;
};

} // namespace

void measureRegistration(const Bench &bench)
{
    RelayedSocket relay;
    const auto start = [&] {
        std::vector<Contender> contenders = {{"relay", [&] { return Values{relay.roundTrip()}; }}};
        for (const Kind kind : {Kind::Peer, Kind::Bare, Kind::Plugin}) {
            const auto registered = std::make_shared<Registered>(bench, kind);
            contenders.push_back({nameOf(kind), [=] { return registered->once(); }});
        }
        return contenders;
    };
    bench.measure({{"RegisterCallManager", 0, "ns", {}}}, start, {20, 3, 10});
}

// InterfacesAdded until the host hears of the call; then it is withdrawn again.
static Values announcement(Party &party, CallKind kind, uint32_t call)
{
    const int64_t begin = party.application.announce(kind, call);
    const int64_t end = party.receiver.next(EventKind::CallAdded).at;
    if (kind == CallKind::Full)
        party.expectAudioState(1);
    party.application.withdraw(call);
    party.receiver.next(EventKind::CallGone);
    return {double(end - begin)};
}

void measureAnnouncement(const Bench &bench)
{
    static const struct
    {
        const char *name;
        CallKind kind;
    } rows[] = {{"InterfacesAdded", CallKind::Full}, {"InterfacesAdded, Call1 only", CallKind::Plain}};
    RelayedSocket relay;
    for (const auto &row : rows) {
        const Scene scene = {{Kind::Peer, Kind::Bare, Kind::Sending, Kind::Plugin}, row.kind, 0};
        const Once once = [&](Party &party, uint32_t time) { return announcement(party, row.kind, time); };
        bench.measure(
            {{row.name, 0, "ns", {}}}, [&] { return startBesideRelay(bench, relay, scene, once); }, {20, 2, 25});
    }
}

void measureAudio(const Bench &bench)
{
    static const struct
    {
        std::string name;
        Command command;
    } rows[] = {{"audio route", Command::ChangeRoute}, {"audio devices", Command::ChangeDevices}};
    for (const int calls : {1, 10, 100}) {
        const Scene scene = {{Kind::Bare, Kind::Plugin}, CallKind::Full, calls};
        for (const auto &row : rows) {
            const Once once = [&](Party &party, uint32_t) { return command(party, row.command, calls); };
            bench.measure({{row.name, calls, "ns", {}}, {row.name + ", main thread", calls, "ns", {}}},
                [&] { return start(bench, scene, once); }, {20, std::max(1, 100 / (calls + 10)), 10});
        }
    }
}
