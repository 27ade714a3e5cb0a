// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// Runs random histories, or one from a file, against the plug-in and the model, on a bus of its own.

#include "histories.h"
#include "historyrun.h"
#include "historytext.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>
#include <QtCore/QLoggingCategory>
#include <QtDBus/QDBusConnection>
#include <fstream>
#include <iostream>
#include <privatebus.h>
#include <sstream>

namespace {

enum Exit { Agreed = 0, Differed = 1, BadUse = 2 };

struct BadOption : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

} // namespace

static std::uint64_t number(const QCommandLineParser &options, const QString &name)
{
    bool valid = false;
    const std::uint64_t number = options.value(name).toULongLong(&valid);
    if (!valid)
        throw BadOption("--" + name.toStdString() + " takes a number, not '" + options.value(name).toStdString() + "'");
    return number;
}

static int replay(BusMonitor &monitor, const std::string &fileName)
{
    std::ifstream file(fileName);
    if (!file)
        throw BadOption("cannot read the history " + fileName);
    const HistoryResult result = runHistory(monitor, parseHistory(file));
    std::cout << (result.difference.empty() ? "Plug-in and model agree.\n" : result.difference);
    return result.difference.empty() ? Agreed : Differed;
}

static std::string asComment(const std::string &lines)
{
    std::istringstream in(lines);
    std::string comment;
    for (std::string line; std::getline(in, line);)
        comment += "# " + line + "\n";
    return comment;
}

static int runRandom(BusMonitor &monitor, std::uint64_t seed, std::uint64_t count, bool trace)
{
    QElapsedTimer clock;
    clock.start();
    int steps = 0;
    const HistoriesResult result = checkHistories(seed, int(count), [&](const History &history) {
        if (trace)
            std::cout << "# next history\n" << text(history) << std::flush;
        const HistoryResult one = runHistory(monitor, history);
        steps += one.steps;
        return one.difference;
    });
    if (result.difference.empty()) {
        std::cout << "seed " << seed << ": " << result.passed << " histories, " << steps << " steps, "
                  << clock.elapsed() << " ms\n";
        return Agreed;
    }
    // All of it together is again a history to be replayed.
    std::cout << "# seed " << seed << ", history " << result.passed + 1 << ", shrunk:\n"
              << text(result.failed) << asComment(result.difference);
    return Differed;
}

static int run(const QCommandLineParser &options)
{
    PrivateBus bus;
    bus.useAsSessionBus();
    // What the plug-in logs is not looked at here.
    QLoggingCategory::setFilterRules(QStringLiteral("*=false"));
    BusMonitor monitor(QDBusConnection::sessionBus().baseService().toStdString());
    if (options.isSet(QStringLiteral("replay")))
        return replay(monitor, options.value(QStringLiteral("replay")).toStdString());
    return runRandom(monitor, number(options, QStringLiteral("seed")), number(options, QStringLiteral("histories")),
        options.isSet(QStringLiteral("trace")));
}

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QCommandLineParser options;
    options.setApplicationDescription(
        QStringLiteral("Runs random histories against the plug-in and the model of it. Exits with 0 when they agree, "
                       "1 when they differ, and 2 when it cannot be tried."));
    options.addHelpOption();
    options.addOptions({
        {QStringLiteral("seed"), QStringLiteral("The histories that this number gives."), QStringLiteral("NUMBER"),
            QStringLiteral("1")},
        {QStringLiteral("histories"), QStringLiteral("How many."), QStringLiteral("NUMBER"), QStringLiteral("100")},
        {QStringLiteral("trace"),
            QStringLiteral("Print each history before it runs; the last one printed is the one "
                           "that crashed.")},
        {QStringLiteral("replay"), QStringLiteral("The history in this file instead."), QStringLiteral("FILE")},
    });
    options.process(application);
    try {
        if (!options.positionalArguments().isEmpty())
            throw BadOption(
                "'" + options.positionalArguments().constFirst().toStdString() + "' is not an option; see --help");
        return run(options);
    } catch (const std::runtime_error &error) {
        std::cerr << "modelrun: " << error.what() << "\n";
        return BadUse;
    }
}
