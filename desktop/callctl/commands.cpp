// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "commands.h"

#include "audioproxy.h"
#include "callproxy.h"
#include "commandline.h"
#include "failure.h"
#include "hostmonitor.h"
#include "json.h"
#include "managerproxy.h"
#include "output.h"
#include "views.h"
#include "watch.h"

#include <QtCore/QEventLoop>
#include <memory>

static QDBusConnection sessionBus()
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        throw Failure(ExitCode::NoHost, QStringLiteral("no session bus: %1").arg(bus.lastError().message()));
    return bus;
}

static HostState hostState()
{
    HostMonitor monitor(sessionBus());
    QEventLoop loop;
    QString failure;
    const auto fail = [&](const QString &reason) {
        failure = reason;
        loop.quit();
    };
    QObject::connect(&monitor, &HostMonitor::ready, &loop, &QEventLoop::quit);
    QObject::connect(&monitor, &HostMonitor::failed, &loop, fail);
    monitor.start();
    loop.exec();
    if (!failure.isEmpty())
        throw Failure(ExitCode::NoHost, failure);
    return monitor.state();
}

static void print(const QStringList &lines) { Output::print(lines.join(QLatin1Char('\n')).toUtf8() + '\n'); }

// The bus library's thread wakes the caller before it is done with an answer that is an error, and loses memory
// when the process ends just then. An answer after that one shows that it is done.
static void waitForTheBusLibrary()
{
    const QDBusMessage ping = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
        QStringLiteral("/"), QStringLiteral("org.freedesktop.DBus.Peer"), QStringLiteral("Ping"));
    QDBusConnection::sessionBus().call(ping, QDBus::Block, 1000);
}

static void waitFor(QDBusPendingReply<> reply)
{
    static const QHash<QDBusError::ErrorType, ExitCode> codes = {
        {QDBusError::UnknownObject, ExitCode::NoSuchCall},
        {QDBusError::NoReply, ExitCode::NoHost},
        {QDBusError::TimedOut, ExitCode::NoHost},
        {QDBusError::Disconnected, ExitCode::NoHost},
    };
    reply.waitForFinished();
    if (!reply.isError())
        return;
    waitForTheBusLibrary();
    if (reply.error().type() == QDBusError::ServiceUnknown)
        throw Failure(ExitCode::NoHost, HostMonitor::notRunning());
    throw Failure(codes.value(reply.error().type(), ExitCode::NotDone), reply.error().message());
}

// --- Calls

// The path of the call that is meant.
static QString theCall(const QStringList &arguments, int further)
{
    const HostState state = hostState();
    if (state.calls.isEmpty())
        throw Failure(ExitCode::NoSuchCall, QStringLiteral("there is no call"));
    QStringList known;
    for (const CallInfo &call : state.calls)
        known.append(Views::brief(call));
    const QString list = known.join(QLatin1String(", "));
    if (arguments.size() > further) {
        for (auto call = state.calls.cbegin(); call != state.calls.cend(); ++call) {
            if (call->id() == arguments.constFirst())
                return call.key().path;
        }
        throw Failure(ExitCode::NoSuchCall,
            QStringLiteral("no call has the id '%1'; there are: %2").arg(arguments.constFirst(), list));
    }
    if (state.calls.size() > 1) {
        throw Failure(
            ExitCode::NoSuchCall, QStringLiteral("there are several calls, name one by its id: %1").arg(list));
    }
    return state.calls.firstKey().path;
}

static bool onOff(const QString &word)
{
    if (word != QLatin1String("on") && word != QLatin1String("off"))
        throw Failure(ExitCode::WrongCommandLine, QStringLiteral("'on' or 'off' is needed, not '%1'").arg(word));
    return word == QLatin1String("on");
}

// `further` arguments of the command come behind the id.
static std::unique_ptr<CallProxy> callProxy(const CommandLine &line, int further)
{
    return std::make_unique<CallProxy>(HostMonitor::serviceName(), theCall(line.arguments, further), sessionBus());
}

static void answer(const CommandLine &line) { waitFor(callProxy(line, 0)->Answer()); }

static void hangup(const CommandLine &line) { waitFor(callProxy(line, 0)->Hangup()); }

static void hold(const CommandLine &line)
{
    const bool on = onOff(line.arguments.constLast());
    waitFor(callProxy(line, 1)->Hold(on));
}

static void dtmf(const CommandLine &line) { waitFor(callProxy(line, 1)->SendDtmf(line.arguments.constLast())); }

static void dial(const CommandLine &line)
{
    ManagerProxy manager(HostMonitor::serviceName(), HostMonitor::rootPath(), sessionBus());
    waitFor(manager.Dial(line.arguments.at(0), line.arguments.at(1)));
}

// --- Audio

static std::unique_ptr<AudioProxy> audioProxy()
{
    return std::make_unique<AudioProxy>(HostMonitor::serviceName(), HostMonitor::rootPath(), sessionBus());
}

static void mute(const CommandLine &line)
{
    const bool muted = onOff(line.arguments.constFirst());
    waitFor(audioProxy()->SetMicrophoneMuted(muted));
}

static void input(const CommandLine &line) { waitFor(audioProxy()->SelectInputDevice(line.arguments.constFirst())); }

static void output(const CommandLine &line) { waitFor(audioProxy()->SelectOutputDevice(line.arguments.constFirst())); }

// --- Lists

static void calls(const CommandLine &line)
{
    const QList<CallInfo> calls = hostState().calls.values();
    print(line.json ? QStringList(Json::calls(calls)) : Views::calls(calls));
}

static void providers(const CommandLine &line)
{
    const ProviderList providers = hostState().providers;
    print(line.json ? QStringList(Json::providers(providers)) : Views::providers(providers));
}

static void devices(const CommandLine &line)
{
    const HostState state = hostState();
    print(line.json ? QStringList(Json::devices(state)) : Views::devices(state));
}

static void watch(const CommandLine &) { Watch(sessionBus()).run(); }

struct Command
{
    const char *name;
    const char *arguments;
    int least;
    int most;
    bool json;
    void (*run)(const CommandLine &line);
};

static const Command commands[] = {
    {"calls", "", 0, 0, true, calls},
    {"providers", "", 0, 0, true, providers},
    {"devices", "", 0, 0, true, devices},
    {"answer", " [ID]", 0, 1, false, answer},
    {"hangup", " [ID]", 0, 1, false, hangup},
    {"hold", " [ID] on|off", 1, 2, false, hold},
    {"dtmf", " [ID] TONES", 1, 2, false, dtmf},
    {"dial", " PROVIDER NUMBER", 2, 2, false, dial},
    {"mute", " on|off", 1, 1, false, mute},
    {"input", " ID", 1, 1, false, input},
    {"output", " ID", 1, 1, false, output},
    {"watch", "", 0, 0, false, watch},
};

static const Command &commandFor(const QString &name)
{
    QStringList names;
    for (const Command &command : commands) {
        if (name == QLatin1String(command.name))
            return command;
        names.append(QLatin1String(command.name));
    }
    const QString complaint
        = name.isEmpty() ? QStringLiteral("a command is needed") : QStringLiteral("there is no command '%1'").arg(name);
    throw Failure(ExitCode::WrongCommandLine,
        QStringLiteral("%1; there are: %2").arg(complaint, names.join(QLatin1String(", "))));
}

void Commands::run(const CommandLine &line)
{
    const Command &command = commandFor(line.command);
    if (line.arguments.size() < command.least || line.arguments.size() > command.most) {
        throw Failure(ExitCode::WrongCommandLine,
            QStringLiteral("this is not how it is used; right is: callctl %1%2")
                .arg(QLatin1String(command.name), QLatin1String(command.arguments)));
    }
    if (line.json && !command.json)
        throw Failure(ExitCode::WrongCommandLine, QStringLiteral("--json goes with calls, providers and devices only"));
    command.run(line);
}
