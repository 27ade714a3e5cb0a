// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// The plug-in in a host, to be measured: benchhost NAME PLUGIN claims the name and is ready for the driver;
// benchhost --load PLUGIN prints how long loading took, in nanoseconds.

#include "pluginhost.h"

#include <QtCore/QCoreApplication>
#include <QtDBus/QDBusConnection>
#include <abstractvoicecallmanagerplugin.h>
#include <cstdio>

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 3) {
        std::fprintf(stderr, "Usage: benchhost NAME|--load PLUGIN\n");
        return 2;
    }
    const int64_t begin = now();
    AbstractVoiceCallManagerPlugin *plugin = PluginHost::load(arguments.at(2));
    const int64_t end = now();
    if (!plugin)
        return 1;
    if (arguments.at(1) == QLatin1String("--load")) {
        std::printf("%lld\n", static_cast<long long>(end - begin));
        return 0;
    }
    PluginHost host;
    plugin->configure(host.callList());
    plugin->start();
    if (!QDBusConnection::sessionBus().registerService(arguments.at(1)))
        return 1;
    const int status = host.run();
    delete plugin;
    return status;
}
