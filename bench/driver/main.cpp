// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// Measures the plug-in and what it stands on, each measurement on a bus of its own.

#include "awake.h"
#include "measurements.h"
#include "privatebus.h"
#include "processor.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QDateTime>
#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <optional>

namespace {

struct Measurement
{
    const char *name;
    void (*run)(const Bench &bench);
    bool isTimed = true;
};

constexpr Measurement measurements[] = {{"status", measureStatus}, {"commands", measureCommands},
    {"registration", measureRegistration}, {"announcement", measureAnnouncement}, {"audio", measureAudio},
    {"scale", measureScale}, {"departure", measureDeparture}, {"flood", measureFlood}, {"idle", measureIdle},
    {"loading", measureLoading}, {"log", measureLog}, {"counts", countInstructions, false}};

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

// Those of these names, in the usual order; without a name, all that are timed.
std::vector<Measurement> chosen(const QStringList &names)
{
    std::vector<Measurement> all;
    for (const Measurement &measurement : measurements) {
        if (names.isEmpty() ? measurement.isTimed : names.contains(QLatin1String(measurement.name)))
            all.push_back(measurement);
    }
    return all;
}

double loadAverage()
{
    double load = 0;
    return getloadavg(&load, 1) == 1 ? load : 0;
}

QString processor()
{
    QFile file(QStringLiteral("/proc/cpuinfo"));
    file.open(QIODevice::ReadOnly);
    for (const QByteArray &line : file.readAll().split('\n')) {
        if (line.startsWith("model name"))
            return QString::fromUtf8(line.mid(line.indexOf(':') + 1).trimmed());
    }
    return QSysInfo::currentCpuArchitecture();
}

// Where and when, for whoever reads the results.
QJsonObject circumstances(bool isShort)
{
    return {{QStringLiteral("began"), QDateTime::currentDateTimeUtc().toString(Qt::ISODate)},
        {QStringLiteral("load"), loadAverage()}, {QStringLiteral("processor"), processor()},
        {QStringLiteral("processors"), int(processorCount())}, {QStringLiteral("qt"), QLatin1String(qVersion())},
        {QStringLiteral("short"), isShort}};
}

// A file for each, in the directory if there is one: what was done stays done when the rest is stopped.
void run(const Measurement &measurement, const QString &directory, bool isShort, const std::string &profiles)
{
    QJsonObject about = circumstances(isShort);
    QElapsedTimer clock;
    clock.start();
    std::optional<Awake> awake;
    if (measurement.isTimed)
        awake.emplace();
    const PrivateBus bus;
    bus.useAsSessionBus();
    Results results;
    measurement.run({bus.address().toStdString(), results, isShort, profiles});
    about.insert(QStringLiteral("seconds"), int(clock.elapsed() / 1000));
    if (!directory.isEmpty())
        results.write((directory + QLatin1Char('/') + QLatin1String(measurement.name)).toStdString() + ".json", about);
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption output(
        QStringLiteral("output"), QStringLiteral("Write the results there, as JSON."), QStringLiteral("DIR"));
    const QCommandLineOption isShort(
        QStringLiteral("short"), QStringLiteral("Less of everything, to see that it works."));
    const QCommandLineOption profiles(
        QStringLiteral("profiles"), QStringLiteral("Keep callgrind's files in this directory."), QStringLiteral("DIR"));
    parser.addOptions({output, isShort, profiles});
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("MEASUREMENT"),
        QStringLiteral("Only these of: %1; all but counts without any.").arg(names()),
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
        const std::vector<Measurement> wanted = chosen(parser.positionalArguments());
        if (std::none_of(wanted.begin(), wanted.end(), [](const Measurement &one) { return one.isTimed; }))
            runAnywhere();
        runOn(Side::Applications);
        for (const Measurement &measurement : wanted)
            run(measurement, parser.value(output), parser.isSet(isShort), parser.value(profiles).toStdString());
    } catch (const std::exception &error) {
        std::fprintf(stderr, "bench: %s\n", error.what());
        return 1;
    }
}
