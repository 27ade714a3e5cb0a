// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "commandinterpreter.h"
#include "options.h"
#include "programs/log.h"
#include "programs/unixsignals.h"
#include "scriptrunner.h"
#include "standardinput.h"
#include "words.h"

#include <QtCore/QCoreApplication>
#include <csignal>

namespace {

enum ExitCode { Success = 0, Failed = 1, WrongUsage = 2, NoBus = 3 };

int complain(const QString &message, ExitCode code)
{
    Log::complain(message);
    return code;
}

void obey(CommandInterpreter &interpreter, const QString &line)
{
    QStringList words;
    if (!splitWords(line, &words))
        return Log::complain(QStringLiteral("a quote is not closed"));
    if (words.isEmpty())
        return;
    const QString error = interpreter.execute(words);
    if (!error.isEmpty())
        Log::complain(error);
}

// Everything that drives the applications; returns when they are to end.
int run(const Options &options, const Script &script, Simulation &simulation, EventLog &events)
{
    CommandInterpreter interpreter(simulation, events);
    ScriptRunner runner(script, interpreter, events);
    StandardInput input;
    const UnixSignals stopSignals({SIGINT, SIGTERM}, UnixSignals::Second::EndsTheProcess);
    if (!stopSignals.errorString().isEmpty())
        return complain(stopSignals.errorString(), Failed);
    int exitCode = Success;

    const auto end = [&] { simulation.end(); };
    QObject::connect(&simulation, &Simulation::ended, [&] { QCoreApplication::exit(exitCode); });
    QObject::connect(&simulation, &Simulation::busLost,
        [] { QCoreApplication::exit(complain(QStringLiteral("the session bus has gone"), NoBus)); });
    QObject::connect(&interpreter, &CommandInterpreter::quitRequested, end);
    QObject::connect(&stopSignals, &UnixSignals::received, end);
    QObject::connect(&input, &StandardInput::endedByUser, end);
    QObject::connect(&input, &StandardInput::lineRead, [&](const QString &line) { obey(interpreter, line); });
    QObject::connect(&runner, &ScriptRunner::failed, [&](const QString &message) {
        exitCode = complain(message, Failed);
        simulation.end();
    });
    QObject::connect(&runner, &ScriptRunner::succeeded, [&] {
        if (options.stay)
            input.start();
        else
            simulation.end();
    });

    for (const NewCall &call : options.calls)
        simulation.application({})->addCall(call.description, call.manager);
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
    Log::begin(QStringLiteral("ringlet-sim"));
    Options options;
    const QString fault = options.read(QCoreApplication::arguments());
    if (!fault.isEmpty())
        return complain(fault + QStringLiteral(" (--help shows what there is)"), WrongUsage);
    if (!options.answer.isEmpty()) {
        EventLog::print(options.answer);
        return Success;
    }
    Script script;
    const QString scriptFault = options.script.isEmpty() ? QString() : script.load(options.script, options.scriptName);
    if (!scriptFault.isEmpty())
        return complain(scriptFault, WrongUsage);

    EventLog events;
    const auto commanders
        = options.obeysAnyone ? Ringlet::CallManager::Commanders::Anyone : Ringlet::CallManager::Commanders::Host;
    Simulation simulation(options.host, commanders, events);
    const QString busFault = simulation.addApplication({}, options.managers);
    if (!busFault.isEmpty())
        return complain(busFault, NoBus);
    return run(options, script, simulation, events);
}
