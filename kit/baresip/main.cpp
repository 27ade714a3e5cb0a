// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "baresipcontrol.h"
#include "bridge.h"
#include "options.h"
#include "programs/log.h"
#include "programs/unixsignals.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QMetaEnum>
#include <QtDBus/QDBusError>
#include <csignal>
#include <cstdio>

using Ringlet::CallManager;

namespace {

enum ExitCode { Success = 0, Failed = 1, WrongUsage = 2, NoBus = 3 };

int complain(const QString &message, ExitCode code = Success)
{
    Log::complain(message);
    return code;
}

void say(const QString &line)
{
    std::printf("%s\n", qUtf8Printable(Log::line(line)));
    std::fflush(stdout);
}

void sayState(const CallManager &manager)
{
    const QString name
        = QString::fromLatin1(QMetaEnum::fromType<CallManager::State>().valueToKey(int(manager.state())));
    const QString error = manager.errorString();
    say(QStringLiteral("host: ") + name.toLower() + (error.isEmpty() ? error : QStringLiteral(", ") + error));
}

// Returns when it is to end.
int run(const Options &options)
{
    CallManager manager(QStringLiteral("/ringlet/baresip"));
    BaresipControl control(options.host, options.port);
    Bridge bridge(control, manager, options.inputs, options.outputs);
    const UnixSignals stopSignals({SIGINT, SIGTERM}, UnixSignals::Second::EndsTheProcess);
    if (!stopSignals.errorString().isEmpty())
        return complain(stopSignals.errorString(), Failed);
    const QString baresip = QStringLiteral("baresip at %1:%2").arg(options.host).arg(options.port);

    QObject::connect(&manager, &CallManager::stateChanged, &manager, [&](CallManager::State state) {
        sayState(manager);
        if (state == CallManager::State::Failed)
            QCoreApplication::exit(complain(manager.errorString(), NoBus));
    });
    QObject::connect(&control, &BaresipControl::connected, [&] { say(QStringLiteral("connected to ") + baresip); });
    QObject::connect(&control, &BaresipControl::disconnected,
        [&](const QString &reason) { say(QStringLiteral("lost %1: %2").arg(baresip, reason)); });
    QObject::connect(&control, &BaresipControl::unreachable,
        [&](const QString &reason) { say(QStringLiteral("waiting for %1: %2").arg(baresip, reason)); });
    QObject::connect(&bridge, &Bridge::warning, [](const QString &text) { complain(text); });
    QObject::connect(&stopSignals, &UnixSignals::received, &manager, &CallManager::endCalls);
    QObject::connect(&manager, &CallManager::flushed, [] { QCoreApplication::exit(Success); });
    control.start();
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    Log::begin(QStringLiteral("ringlet-baresip"));
    Options options;
    const QString fault = options.read(QCoreApplication::arguments());
    if (!fault.isEmpty())
        return complain(fault + QStringLiteral(" (--help shows what there is)"), WrongUsage);
    if (!options.answer.isEmpty()) {
        std::puts(qUtf8Printable(options.answer));
        return Success;
    }
    if (!QDBusConnection::sessionBus().isConnected())
        return complain(
            QStringLiteral("no session bus: ") + QDBusConnection::sessionBus().lastError().message(), NoBus);
    return run(options);
}
