// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "busmain.h"

#include "privatebus.h"
#include "programs.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <gmock/gmock.h>
#include <stdexcept>

int runTestsOnBus(const QString &configuration, int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const PrivateBus bus(configuration);
    bus.useAsSessionBus();
    return RUN_ALL_TESTS();
}

QString advisedLimits()
{
    QFile file(Programs::limitsPage());
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("cannot read " + file.fileName().toStdString());
    QString limits;
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine());
        if (line.trimmed().startsWith(QLatin1String("<limit ")))
            limits += line;
    }
    if (limits.isEmpty())
        throw std::runtime_error(file.fileName().toStdString() + " advises no limits");
    return limits;
}
