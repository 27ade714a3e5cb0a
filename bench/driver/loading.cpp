// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// From nothing to an object on the bus.

#include "measurements.h"
#include "receiver.h"

#include <QtCore/QProcess>
#include <stdexcept>

static double load(Kind kind)
{
    QStringList arguments;
    for (const std::string &argument : commandLine(kind, "--load"))
        arguments.append(QString::fromStdString(argument));
    const QString program = arguments.takeFirst();
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished() || process.exitCode() != 0)
        throw std::runtime_error("cannot load: " + process.readAllStandardError().toStdString());
    return process.readAllStandardOutput().trimmed().toDouble();
}

void measureLoading(const Bench &bench)
{
    bench.measure({{"loading", 0, "ns", {}}},
        [] {
            return std::vector<Contender>{{"bare", [] { return Values{load(Kind::Bare)}; }},
                {"plug-in", [] { return Values{load(Kind::Plugin)}; }}};
        },
        {40});
}
