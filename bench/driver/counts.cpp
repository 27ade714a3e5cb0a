// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// Instructions instead of time: the same on a machine that has other work.

#include "measurements.h"
#include "party.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <memory>
#include <stdexcept>

namespace {

// A receiver under callgrind, applications that come to it and go, and what it has counted.
class Counted
{
public:
    /** callgrind's files begin with `profile`. */
    Counted(const Bench &bench, Kind kind, const std::string &logging, const QString &profile)
        : receiver(m_loop, kind,
            Start{{"valgrind", "--tool=callgrind", "--instr-atstart=no", "--dump-line=no", "-q",
                      "--callgrind-out-file=" + profile.toStdString()},
                logging, "/dev/null"}),
          m_address(bench.address),
          m_profile(profile),
          m_bystander(m_loop, m_address, receiver)
    {
    }

    std::unique_ptr<Application> newApplication() { return std::make_unique<Application>(m_loop, m_address, receiver); }

    /** An application with so many calls up. */
    std::unique_ptr<Application> bringUp(CallKind kind, int calls)
    {
        auto application = newApplication();
        ::bringUp(receiver, *application, kind, calls);
        return application;
    }

    /** Waits until what an application has left behind is gone. */
    void bringDown(std::unique_ptr<Application> application, int calls, int managers)
    {
        application.reset();
        if (calls > 0)
            receiver.nth(EventKind::CallGone, calls);
        receiver.nth(EventKind::ManagerGone, managers);
        m_bystander.settle();
    }

    /** Instructions of all threads while `times` times the function runs, for one of them. */
    template <typename Function>
    double count(int times, Function function)
    {
        receiver.request(Command::CountFrom);
        receiver.next(EventKind::Done);
        for (int i = 0; i < times; ++i)
            function();
        receiver.request(Command::CountUpTo);
        receiver.next(EventKind::Done);
        return nextTotal() / times;
    }

private:
    // It writes a file each time.
    double nextTotal()
    {
        QFile file(m_profile + QLatin1Char('.') + QString::number(++m_files));
        if (!file.open(QIODevice::ReadOnly))
            throw std::runtime_error("callgrind has not written " + file.fileName().toStdString());
        while (!file.atEnd()) {
            const QByteArray line = file.readLine();
            if (line.startsWith("totals: "))
                return line.mid(line.indexOf(' ')).trimmed().toDouble();
        }
        throw std::runtime_error("there is no total in " + file.fileName().toStdString());
    }

    Loop m_loop;

public:
    Receiver receiver;

private:
    std::string m_address;
    QString m_profile;
    int m_files = 0;
    Application m_bystander; // who can ask when nobody else is there, and neither comes nor goes
};

double countStatus(Counted &counted, int calls)
{
    auto application = counted.bringUp(CallKind::Plain, calls);
    const double count = counted.count(10, [&, i = 0U]() mutable {
        application->changeStatus(i++ * 37 % uint32_t(calls), 3);
        counted.receiver.next(EventKind::Status);
    });
    counted.bringDown(std::move(application), calls, 1);
    return count;
}

double countCommand(Counted &counted, Command command, int calls)
{
    auto application = counted.bringUp(CallKind::Full, calls);
    const double count = counted.count(10, [&] {
        counted.receiver.request(command);
        counted.receiver.next(EventKind::Done);
        application->waitForCommands(command == Command::ChangeRoute || command == Command::ChangeDevices ? calls : 1);
        // The answer has been dealt with when a later message has been.
        application->settle();
    });
    counted.bringDown(std::move(application), calls, 1);
    return count;
}

double countAccept(Counted &counted, int) { return countCommand(counted, Command::Answer, 1); }
double countHold(Counted &counted, int) { return countCommand(counted, Command::Hold, 1); }
double countTones(Counted &counted, int) { return countCommand(counted, Command::SendTones, 1); }
double countRoute(Counted &counted, int calls) { return countCommand(counted, Command::ChangeRoute, calls); }
double countDevices(Counted &counted, int calls) { return countCommand(counted, Command::ChangeDevices, calls); }

double countRegistration(Counted &counted, int)
{
    auto application = counted.newApplication();
    application->settle();
    const double count = counted.count(1, [&] {
        application->registerManager();
        application->waitForSnapshots(1);
        application->settle();
    });
    counted.bringDown(std::move(application), 0, 1);
    return count;
}

double countAnnouncement(Counted &counted, int)
{
    constexpr int calls = 5;
    auto application = counted.bringUp(CallKind::Full, 0);
    const double count = counted.count(calls, [&, call = 0U]() mutable {
        application->announce(CallKind::Full, call++);
        counted.receiver.next(EventKind::CallAdded);
        expectAudioState(counted.receiver, *application, 1);
        application->settle();
    });
    counted.bringDown(std::move(application), calls, 1);
    return count;
}

double countWithdrawal(Counted &counted, int calls)
{
    auto application = counted.bringUp(CallKind::Plain, calls);
    const double count = counted.count(calls, [&, call = 0U]() mutable {
        application->withdraw(call++);
        counted.receiver.next(EventKind::CallGone);
        application->settle();
    });
    counted.bringDown(std::move(application), 0, 1);
    return count;
}

double countSnapshot(Counted &counted, int calls)
{
    auto application = counted.newApplication();
    application->setSnapshot(CallKind::Plain, calls);
    application->holdSnapshot();
    application->registerManager();
    const double count = counted.count(1, [&] {
        application->sendSnapshot();
        counted.receiver.nth(EventKind::CallAdded, calls);
        application->settle();
    });
    counted.bringDown(std::move(application), calls, 1);
    return count;
}

double countTeardown(Counted &counted, int calls)
{
    auto application = counted.bringUp(CallKind::Plain, calls);
    return counted.count(1, [&] { counted.bringDown(std::move(application), calls, 1); });
}

double countDeparture(Counted &counted, int registrations)
{
    auto application = counted.newApplication();
    for (int i = 0; i < registrations; ++i)
        application->registerManager();
    application->waitForSnapshots(registrations);
    application->settle();
    return counted.count(1, [&] { counted.bringDown(std::move(application), 0, registrations); });
}

// A line of a trace that nobody wants.
double countTrace(Counted &counted, int)
{
    constexpr int lines = 10000;
    const double count = counted.count(1, [&] {
        counted.receiver.request(Command::Trace, lines);
        counted.receiver.next(EventKind::Done);
    });
    return count / lines;
}

struct Path
{
    const char *name;
    int size;
    /** Brings up what is needed, counts, and brings it down again. */
    double (*count)(Counted &counted, int size);
};

constexpr Path paths[] = {{"status", 1, countStatus}, {"status", 30, countStatus}, {"Accept", 0, countAccept},
    {"SetHold", 0, countHold}, {"SendDTMF", 0, countTones}, {"RegisterCallManager", 0, countRegistration},
    {"InterfacesAdded", 0, countAnnouncement}, {"InterfacesRemoved", 10, countWithdrawal},
    {"snapshot", 20, countSnapshot}, {"teardown", 20, countTeardown}, {"departure", 10, countDeparture},
    {"audio route", 10, countRoute}, {"audio devices", 10, countDevices}, {"trace that is off", 0, countTrace}};

// Who is counted. What lies between two of them is what the difference costs.
struct Subject
{
    const char *name;
    Kind kind;
    const char *logging;
};

constexpr Subject floorAndPlugin[] = {{"bare, sending", Kind::Sending, ""}, {"plug-in", Kind::Plugin, ""}};
constexpr Subject between[] = {
    {"bare", Kind::Bare, ""}, {"bare, relaying", Kind::Relaying, ""}, {"plug-in, log silent", Kind::Plugin, "*=false"}};

// Processes differ more from each other than the rounds of one: scripts/bench has several.
constexpr int rounds = 5;

// All paths in one process. It begins with what a process does once, which is thrown away.
void countIn(Counted &counted, const Subject &subject, std::vector<Row> &rows)
{
    for (int round = -1; round < rounds; ++round) {
        for (size_t i = 0; i < rows.size(); ++i) {
            const double count = paths[i].count(counted, paths[i].size);
            if (round >= 0)
                rows[i].add(subject.name, round, count);
        }
    }
}

// callgrind's files of one process.
QString profileName(const Subject &subject)
{
    return QString::fromLatin1(subject.name).remove(QLatin1Char(',')).replace(QLatin1Char(' '), QLatin1Char('-'));
}

} // namespace

void countInstructions(const Bench &bench)
{
    const QTemporaryDir dropped;
    const QDir directory(bench.profiles.empty() ? dropped.path() : QString::fromStdString(bench.profiles));
    std::vector<Subject> subjects(std::begin(floorAndPlugin), std::end(floorAndPlugin));
    if (!bench.isShort)
        subjects.insert(subjects.end(), std::begin(between), std::end(between));
    std::vector<Row> rows;
    for (const Path &path : paths)
        rows.push_back({std::string("instructions, ") + path.name, path.size, "instructions", {}});
    for (const Subject &subject : subjects) {
        Counted counted(bench, subject.kind, subject.logging, directory.absoluteFilePath(profileName(subject)));
        countIn(counted, subject, rows);
    }
    for (const Row &row : rows)
        bench.results.add(row);
}
