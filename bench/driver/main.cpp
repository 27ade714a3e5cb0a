// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// Measures the plug-in and what it stands on, on a bus of its own.

#include "awake.h"
#include "measurements.h"
#include "privatebus.h"
#include "processor.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <algorithm>
#include <cstdio>

namespace {

struct Measurement
{
    const char *name;
    void (*run)(const Bench &bench);
};

constexpr Measurement measurements[] = {{"status", measureStatus}, {"commands", measureCommands},
    {"registration", measureRegistration}, {"announcement", measureAnnouncement}, {"audio", measureAudio},
    {"scale", measureScale}, {"departure", measureDeparture}, {"flood", measureFlood}, {"idle", measureIdle},
    {"loading", measureLoading}, {"log", measureLog}, {"counts", countInstructions}};

QString names()
{
    QStringList all;
    for (const Measurement &measurement : measurements)
        all.append(QString::fromLatin1(measurement.name));
    return all.join(QStringLiteral(", "));
}

bool isMeasurement(const QString &name)
{
    return std::any_of(std::begin(measurements), std::end(measurements),
        [&](const Measurement &measurement) { return name == QLatin1String(measurement.name); });
}

void run(const QStringList &wanted, Bench &bench)
{
    for (const Measurement &measurement : measurements) {
        if (wanted.isEmpty() || wanted.contains(QLatin1String(measurement.name)))
            measurement.run(bench);
    }
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption output(
        QStringLiteral("output"), QStringLiteral("Write the results there, as JSON."), QStringLiteral("FILE"));
    const QCommandLineOption isShort(
        QStringLiteral("short"), QStringLiteral("Less of everything, to see that it works."));
    const QCommandLineOption profiles(
        QStringLiteral("profiles"), QStringLiteral("Keep callgrind's files in this directory."), QStringLiteral("DIR"));
    parser.addOptions({output, isShort, profiles});
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("MEASUREMENT"), QStringLiteral("Only these of: %1.").arg(names()),
        QStringLiteral("[MEASUREMENT...]"));
    parser.process(application);
    for (const QString &name : parser.positionalArguments()) {
        if (!isMeasurement(name)) {
            std::fprintf(stderr, "bench: there is no measurement '%s'; there are %s\n", qUtf8Printable(name),
                qUtf8Printable(names()));
            return 2;
        }
    }
    try {
        const Awake awake;
        runOn(Side::Applications);
        const PrivateBus bus;
        bus.useAsSessionBus();
        Results results;
        Bench bench
            = {bus.address().toStdString(), results, parser.isSet(isShort), parser.value(profiles).toStdString()};
        run(parser.positionalArguments(), bench);
        if (parser.isSet(output))
            results.write(parser.value(output).toStdString());
    } catch (const std::exception &error) {
        std::fprintf(stderr, "bench: %s\n", error.what());
        return 1;
    }
}
