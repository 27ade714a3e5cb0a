// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "daemon.h"
#include "programs/log.h"
#include "providerinfo.h"
#include "stopsignals.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QLoggingCategory>

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("voicecalld"));
    QCoreApplication::setApplicationVersion(QStringLiteral(RINGLET_VERSION));
    Log::begin(QStringLiteral("voicecalld"));
    const Options options = Options::read();
    // Rules from Qt's environment variables and files go before this one.
    if (options.trace)
        QLoggingCategory::setFilterRules(QStringLiteral("voicecall=true"));
    // From here on, so that an end in the middle of all that comes is a clean one too.
    const StopSignals stopSignals;
    ProviderInfo::registerTypes();
    return Daemon(options).run();
}
