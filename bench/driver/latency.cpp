// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// One message at a time: how long it takes to where it has its effect.

#include "measurements.h"
#include "party.h"
#include "turns.h"

#include <QtCore/QTemporaryFile>
#include <memory>
#include <stdexcept>

using Parties = std::vector<std::unique_ptr<Party>>;

static Parties parties(
    const Bench &bench, std::initializer_list<Kind> kinds, CallKind call, int calls, const Start &start = {})
{
    Parties all;
    for (const Kind kind : kinds) {
        all.push_back(std::make_unique<Party>(bench.address, kind, start));
        all.back()->bringUp(call, calls);
    }
    return all;
}

// The application's StatusChanged until the host's. Incoming and dialing: no timer runs beside.
static double status(Party &party, uint32_t call)
{
    static uint32_t alternating = 2;
    alternating = 5 - alternating;
    const int64_t begin = party.application.changeStatus(call, alternating);
    return double(party.receiver.next(EventKind::Status).at - begin);
}

static Row statusRow(const Parties &all, RelayedSocket &relay, const char *name, int calls, const Turns &turns)
{
    std::vector<Contender> contenders = {{"relay", [&] { return relay.oneWay(); }}};
    for (const auto &party : all) {
        contenders.push_back({party->who(), [&party = *party, calls, i = 0]() mutable {
                                  // Every call in its turn, whatever place it has in anybody's list.
                                  return status(party, uint32_t(i++ * 7919 % calls));
                              }});
    }
    return measure(name, calls, "ns", contenders, turns);
}

void measureStatus(const Bench &bench)
{
    RelayedSocket relay;
    for (const int calls : {1, 10, 100, 1000}) {
        if (bench.isShort && calls > 100)
            break;
        const Parties all = parties(bench, {Kind::Peer, Kind::Bare, Kind::Plugin}, CallKind::Plain, calls);
        bench.results.add(statusRow(all, relay, "status", calls, {bench.isShort ? 4 : 60, 50}));
    }
}

// How many lines the plug-in's tracing has for one status, and the host's for asking for it.
static double tracedLines(const Bench &bench)
{
    constexpr int times = 100;
    QTemporaryFile log;
    if (!log.open())
        throw std::runtime_error("cannot make a file for a log");
    Party party(bench.address, Kind::Plugin, Start{{}, "*=false;voicecall.info=true", log.fileName().toStdString()});
    party.bringUp(CallKind::Plain, 1);
    log.seek(log.size());
    for (int i = 0; i < times; ++i)
        status(party, 0);
    return double(log.readAll().count('\n')) / times;
}

void measureLog(const Bench &bench)
{
    bench.results.add({"status, traced lines", 1, "lines", {{"plug-in", {tracedLines(bench)}}}});
    static const struct
    {
        const char *name;
        const char *rules;
    } modes[] = {{"status, log silent", "*=false"}, {"status, log traced", "voicecall.info=true"}};
    RelayedSocket relay;
    for (const auto &mode : modes) {
        Start start;
        start.logging = mode.rules;
        const Parties all = parties(bench, {Kind::Bare, Kind::Plugin}, CallKind::Plain, 1, start);
        bench.results.add(statusRow(all, relay, mode.name, 1, {bench.isShort ? 4 : 40, 50}));
    }
}

// What the host does until the last of so many calls has heard of it, and how long it keeps the host's main thread.
static std::pair<double, double> command(Party &party, Command command, int calls)
{
    party.receiver.request(command);
    const Event sent = party.receiver.next(EventKind::Done);
    const int64_t received = party.application.waitForCommands(calls);
    return {double(received - sent.at), double(sent.cost)};
}

void measureCommands(const Bench &bench)
{
    static const struct
    {
        const char *name;
        const char *costName;
        Command command;
        bool isForPeer;
    } rows[] = {{"Accept", "Accept, main thread", Command::Answer, true},
        {"SetHold", "SetHold, main thread", Command::Hold, false},
        {"SendDTMF", "SendDTMF, main thread", Command::SendTones, false}};

    RelayedSocket relay;
    const Parties all = parties(bench, {Kind::Peer, Kind::Bare, Kind::Plugin}, CallKind::Full, 1);
    for (const auto &row : rows) {
        std::vector<std::vector<double>> costs(all.size());
        std::vector<Contender> contenders = {{"relay", [&] { return relay.oneWay(); }}};
        for (size_t i = 0; i < all.size(); ++i) {
            if (all[i]->receiver.kind() == Kind::Peer && !row.isForPeer)
                continue;
            contenders.push_back({all[i]->who(), [&, i] {
                                      const auto [latency, cost] = command(*all[i], row.command, 1);
                                      costs[i].push_back(cost);
                                      return latency;
                                  }});
        }
        bench.results.add(measure(row.name, 0, "ns", contenders, {bench.isShort ? 4 : 60, 50}));
        Row cost = {row.costName, 0, "ns", {}};
        for (size_t i = 0; i < all.size(); ++i) {
            if (all[i]->receiver.kind() != Kind::Peer)
                cost.samples.push_back({all[i]->who(), costs[i]});
        }
        bench.results.add(cost);
    }
}

// The call until its answer, from an application that the receiver has not seen before.
static double registration(const Bench &bench, Loop &loop, Receiver &receiver)
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
    return nanoseconds;
}

void measureRegistration(const Bench &bench)
{
    RelayedSocket relay;
    Loop loop;
    Receiver peer(loop, Kind::Peer);
    Receiver bare(loop, Kind::Bare);
    Receiver plugin(loop, Kind::Plugin);
    bench.results.add(measure("RegisterCallManager", 0, "ns",
        {{"relay", [&] { return relay.roundTrip(); }}, {"libdbus", [&] { return registration(bench, loop, peer); }},
            {"bare", [&] { return registration(bench, loop, bare); }},
            {"plug-in", [&] { return registration(bench, loop, plugin); }}},
        {bench.isShort ? 4 : 60, 10}));
}

// InterfacesAdded until the host hears of the call; then it is withdrawn again.
static double announcement(Party &party, CallKind kind, uint32_t call)
{
    const int64_t begin = party.application.announce(kind, call);
    const int64_t end = party.receiver.next(EventKind::CallAdded).at;
    if (kind == CallKind::Full)
        party.expectAudioState(1);
    party.application.withdraw(call);
    party.receiver.next(EventKind::CallGone);
    return double(end - begin);
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
        const Parties all = parties(bench, {Kind::Peer, Kind::Bare, Kind::Sending, Kind::Plugin}, row.kind, 0);
        std::vector<Contender> contenders = {{"relay", [&] { return relay.oneWay(); }}};
        for (const auto &party : all) {
            contenders.push_back({party->who(), [&party = *party, kind = row.kind, call = 0]() mutable {
                                      return announcement(party, kind, uint32_t(call++));
                                  }});
        }
        bench.results.add(measure(row.name, 0, "ns", contenders, {bench.isShort ? 4 : 40, 25}));
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
        const Parties all = parties(bench, {Kind::Bare, Kind::Plugin}, CallKind::Full, calls);
        for (const auto &row : rows) {
            std::vector<Contender> contenders;
            std::vector<Samples> costs;
            for (const auto &party : all)
                costs.push_back({party->who(), {}});
            for (size_t i = 0; i < all.size(); ++i) {
                contenders.push_back({all[i]->who(), [&, i, calls] {
                                          const auto [latency, cost] = command(*all[i], row.command, calls);
                                          costs[i].values.push_back(cost);
                                          return latency;
                                      }});
            }
            const int times = bench.isShort ? 4 : 2000 / (calls + 10);
            bench.results.add(measure(row.name, calls, "ns", contenders, {times, 10}));
            bench.results.add({row.name + ", main thread", calls, "ns", costs});
        }
    }
}
