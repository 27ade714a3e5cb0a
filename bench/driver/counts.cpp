// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// Instructions instead of time: the same on a machine that has other work.

#include "measurements.h"
#include "party.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <stdexcept>

namespace {

// A receiver under callgrind, and what it has counted.
class Counted
{
public:
    /** callgrind's files begin with `profile`. */
    Counted(const Bench &bench, Kind kind, const QString &profile)
        : party(bench.address, kind,
            Start{{"valgrind", "--tool=callgrind", "--instr-atstart=no", "-q",
                      "--callgrind-out-file=" + profile.toStdString()},
                {}, "/dev/null"}),
          m_profile(profile)
    {
    }

    /** Instructions of all threads while `times` times the function runs, for one of them. */
    template <typename Function>
    double count(int times, Function function)
    {
        party.receiver.request(Command::CountFrom);
        party.receiver.next(EventKind::Done);
        for (int i = 0; i < times; ++i)
            function();
        party.receiver.request(Command::CountUpTo);
        party.receiver.next(EventKind::Done);
        return total() / times;
    }

    Party party;

private:
    // Of the first of its files; it counts once.
    double total() const
    {
        QFile file(m_profile + QStringLiteral(".1"));
        if (!file.open(QIODevice::ReadOnly))
            throw std::runtime_error("callgrind has not written " + file.fileName().toStdString());
        while (!file.atEnd()) {
            const QByteArray line = file.readLine();
            if (line.startsWith("totals: "))
                return line.mid(line.indexOf(' ')).trimmed().toDouble();
        }
        throw std::runtime_error("there is no total in " + file.fileName().toStdString());
    }

    QString m_profile;
};

struct Path
{
    const char *name;
    int size;
    /** Brings up what is needed, and counts. */
    double (*count)(Counted &counted, int size);
};

double countStatus(Counted &counted, int calls)
{
    Party &party = counted.party;
    party.bringUp(CallKind::Plain, calls);
    uint32_t i = 0;
    return counted.count(200, [&] {
        party.application.changeStatus(i++ * 37 % uint32_t(calls), 3);
        party.receiver.next(EventKind::Status);
    });
}

double countCommand(Counted &counted, Command command)
{
    Party &party = counted.party;
    party.bringUp(CallKind::Full, 1);
    return counted.count(200, [&] {
        party.receiver.request(command);
        party.receiver.next(EventKind::Done);
        party.application.waitForCommands(1);
        // The answer has been dealt with when a later message has been.
        party.application.settle();
    });
}

double countAccept(Counted &counted, int) { return countCommand(counted, Command::Answer); }
double countHold(Counted &counted, int) { return countCommand(counted, Command::Hold); }
double countTones(Counted &counted, int) { return countCommand(counted, Command::SendTones); }

double countRegistration(Counted &counted, int)
{
    Party &party = counted.party;
    party.bringUp(CallKind::Plain, 0);
    return counted.count(50, [&, i = 1]() mutable {
        party.application.registerManager();
        party.application.waitForSnapshots(++i);
        party.application.settle();
    });
}

double countAnnouncement(Counted &counted, int)
{
    Party &party = counted.party;
    party.bringUp(CallKind::Full, 0);
    return counted.count(50, [&, call = 0]() mutable {
        party.application.announce(CallKind::Full, uint32_t(call++));
        party.receiver.next(EventKind::CallAdded);
        party.expectAudioState(1);
        party.application.settle();
    });
}

double countSnapshot(Counted &counted, int calls)
{
    Party &party = counted.party;
    party.application.setSnapshot(CallKind::Plain, calls);
    party.application.holdSnapshot();
    party.application.registerManager();
    return counted.count(1, [&] {
        party.application.sendSnapshot();
        party.receiver.nth(EventKind::CallAdded, calls);
        party.application.settle();
    });
}

double countWithdrawal(Counted &counted, int calls)
{
    Party &party = counted.party;
    party.bringUp(CallKind::Plain, calls);
    return counted.count(calls, [&, call = 0]() mutable {
        party.application.withdraw(uint32_t(call++));
        party.receiver.next(EventKind::CallGone);
        party.application.settle();
    });
}

double countRoute(Counted &counted, int calls)
{
    Party &party = counted.party;
    party.bringUp(CallKind::Full, calls);
    return counted.count(50, [&] {
        party.receiver.request(Command::ChangeRoute);
        party.receiver.next(EventKind::Done);
        party.application.waitForCommands(calls);
        party.application.settle();
    });
}

constexpr Path paths[] = {{"status", 1, countStatus}, {"status", 100, countStatus}, {"Accept", 0, countAccept},
    {"SetHold", 0, countHold}, {"SendDTMF", 0, countTones}, {"RegisterCallManager", 0, countRegistration},
    {"InterfacesAdded", 0, countAnnouncement}, {"snapshot", 100, countSnapshot},
    {"InterfacesRemoved", 50, countWithdrawal}, {"audio route", 10, countRoute}};

double countTrace(const Bench &bench, const QString &profile)
{
    constexpr int lines = 100000;
    Counted counted(bench, Kind::Plugin, profile);
    const double all = counted.count(1, [&] {
        counted.party.receiver.request(Command::Trace, lines);
        counted.party.receiver.next(EventKind::Done);
    });
    return all / lines;
}

// A file name for the path's profile.
QString profileName(const Path &path, Kind kind)
{
    return QStringLiteral("%1-%2-%3")
        .arg(QLatin1String(path.name))
        .arg(path.size)
        .arg(QLatin1String(nameOf(kind)))
        .replace(QLatin1Char(' '), QLatin1Char('-'));
}

} // namespace

void countInstructions(const Bench &bench)
{
    const QTemporaryDir dropped;
    const QDir directory(bench.profiles.empty() ? dropped.path() : QString::fromStdString(bench.profiles));
    for (const Path &path : paths) {
        Row row = {std::string("instructions, ") + path.name, path.size, "instructions", {}};
        for (const Kind kind : {Kind::Bare, Kind::Sending, Kind::Plugin}) {
            Counted counted(bench, kind, directory.absoluteFilePath(profileName(path, kind)));
            row.samples.push_back({nameOf(kind), {path.count(counted, path.size)}});
        }
        bench.results.add(row);
    }
    const double trace = countTrace(bench, directory.absoluteFilePath(QStringLiteral("trace")));
    bench.results.add({"instructions, trace that is off", 0, "instructions", {{"plug-in", {trace}}}});
}
