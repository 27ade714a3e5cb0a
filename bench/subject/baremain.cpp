// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// Qt's bus layer alone, to be measured: barereceiver NAME [--sends|--relays] claims the name and is ready for the
// driver, and perhaps sends what the plug-in does when a call comes or goes, or does it through adaptors; barereceiver
// --load prints how long it takes to connect and to export an object, in nanoseconds.

#include "barereceiver.h"

#include <QtCore/QCoreApplication>
#include <QtDBus/QDBusConnection>
#include <cstdio>

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const QString mode = arguments.value(2);
    const bool relays = mode == QLatin1String("--relays");
    const bool sends = mode == QLatin1String("--sends");
    if (arguments.size() != (relays || sends ? 3 : 2)) {
        std::fprintf(stderr, "Usage: barereceiver NAME [--sends|--relays]|--load\n");
        return 2;
    }
    BareReceiver receiver(relays ? Broadcasts::Relayed : sends ? Broadcasts::Sent : Broadcasts::None);
    const int64_t begin = now();
    const bool isExported = receiver.registry()->exportObject();
    const int64_t end = now();
    if (!isExported)
        return 1;
    if (arguments.at(1) == QLatin1String("--load")) {
        std::printf("%lld\n", static_cast<long long>(end - begin));
        return 0;
    }
    return QDBusConnection::sessionBus().registerService(arguments.at(1)) ? receiver.run() : 1;
}
