// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "busmain.h"

#include "privatebus.h"
#include "programs.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QRegularExpression>
#include <gmock/gmock.h>
#include <stdexcept>

// What the D-Bus protocol allows, which every bus daemon keeps to.
static constexpr int largestOfAll = 128 * 1024 * 1024;
// What voicecalld takes for granted.
static constexpr int largestWithoutOption = 134000000;
static int limitOfBus = largestOfAll;

int largestMessage() { return limitOfBus; }

QStringList optionsOnBus()
{
    if (limitOfBus >= largestWithoutOption)
        return {};
    return {QStringLiteral("--largest-message"), QString::number(limitOfBus)};
}

static int limitIn(const QString &configuration)
{
    const QRegularExpression limit(QStringLiteral("<limit name=\"max_message_size\">(\\d+)</limit>"));
    const QRegularExpressionMatch match = limit.match(configuration);
    return match.hasMatch() ? match.captured(1).toInt() : largestOfAll;
}

int runTestsOnBus(const QString &configuration, int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const PrivateBus bus(configuration);
    limitOfBus = limitIn(configuration);
    bus.useAsSessionBus();
    return RUN_ALL_TESTS();
}

QString advisedLimits()
{
    QFile file(Programs::limitsPage());
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("cannot read " + file.fileName().toStdString());
    const QString page = QString::fromUtf8(file.readAll());
    const QString limits = page.section(QStringLiteral("<busconfig>"), 1).section(QStringLiteral("</busconfig>"), 0, 0);
    if (limits.isEmpty())
        throw std::runtime_error(file.fileName().toStdString() + " advises no limits");
    return limits;
}
