// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "application.h"
#include "commandinterpreter.h"
#include "options.h"
#include "scriptrunner.h"
#include "standardinput.h"
#include "stopsignals.h"
#include "words.h"

#include <QtCore/QCoreApplication>
#include <QtDBus/QDBusError>
#include <cstdio>

namespace {

enum ExitCode { Success = 0, ScriptFailed = 1, WrongUsage = 2, NoBus = 3 };

void complain(const QString &message) { std::fprintf(stderr, "ringlet-sim: %s\n", qPrintable(message)); }

int complain(const QString &message, ExitCode code)
{
    complain(message);
    return code;
}

void obey(CommandInterpreter &interpreter, const QString &line)
{
    QStringList words;
    if (!splitWords(line, &words))
        return complain(QStringLiteral("a quote is not closed"));
    if (words.isEmpty())
        return;
    const QString error = interpreter.execute(words);
    if (!error.isEmpty())
        complain(error);
}

// Everything that drives the application; returns when it is to end.
int run(const Options &options, const Script &script, const QDBusConnection &connection, EventLog &events)
{
    Application application(options.host, options.managers, connection, events);
    CommandInterpreter interpreter(application);
    ScriptRunner runner(script, interpreter, events);
    StandardInput input;
    StopSignals stopSignals;
    int exitCode = Success;

    const auto leave = [&] { application.leave(); };
    QObject::connect(&application, &Application::left, [&] { QCoreApplication::exit(exitCode); });
    QObject::connect(&application, &Application::busLost,
        [] { QCoreApplication::exit(complain(QStringLiteral("the session bus has gone"), NoBus)); });
    QObject::connect(&interpreter, &CommandInterpreter::quitRequested, leave);
    QObject::connect(&stopSignals, &StopSignals::received, leave);
    QObject::connect(&input, &StandardInput::endedByUser, leave);
    QObject::connect(&input, &StandardInput::lineRead, [&](const QString &line) { obey(interpreter, line); });
    QObject::connect(&runner, &ScriptRunner::failed, [&](const QString &message) {
        exitCode = complain(message, ScriptFailed);
        application.leave();
    });
    QObject::connect(&runner, &ScriptRunner::succeeded, [&] {
        if (options.stay)
            input.start();
        else
            application.leave();
    });

    events.add(QStringLiteral("connected ") + connection.baseService());
    for (const CallDescription &call : options.calls)
        application.addCall(call);
    application.start();
    if (options.script.isEmpty())
        input.start();
    else
        QMetaObject::invokeMethod(&runner, &ScriptRunner::start, Qt::QueuedConnection);
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication qtApplication(argc, argv);
    Options options;
    const QString fault = options.read(QCoreApplication::arguments());
    if (!fault.isEmpty())
        return complain(fault + QStringLiteral(" (--help shows what there is)"), WrongUsage);
    if (!options.answer.isEmpty()) {
        EventLog::print(options.answer);
        return Success;
    }
    Script script;
    const QString scriptFault = options.script.isEmpty() ? QString() : script.load(options.script);
    if (!scriptFault.isEmpty())
        return complain(scriptFault, WrongUsage);

    registerWireTypes();
    const QDBusConnection connection
        = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("application"));
    if (!connection.isConnected())
        return complain(QStringLiteral("no session bus: ") + connection.lastError().message(), NoBus);
    EventLog events;
    return run(options, script, connection, events);
}
