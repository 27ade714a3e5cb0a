// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "options.h"

#include "commandinterpreter.h"
#include "managerpaths.h"
#include "scenarios.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QHash>
#include <QtCore/QRegularExpression>

using Ringlet::CallDescription;

namespace {

struct CommandLine
{
    QCommandLineOption host{QStringLiteral("host"), QStringLiteral("Bus name of the host [org.tarnwickle.voicecall]."),
        QStringLiteral("NAME"), QStringLiteral("org.tarnwickle.voicecall")};
    QCommandLineOption manager{QStringLiteral("manager"),
        QStringLiteral("Register a call manager at this path; may be repeated [/ringlet/sim]."),
        QStringLiteral("PATH")};
    QCommandLineOption incoming{QStringLiteral("incoming"),
        QStringLiteral("Start with an incoming call; may be repeated. Calls are named call1, call2, ..."),
        QStringLiteral("ADDRESS")};
    QCommandLineOption outgoing{QStringLiteral("outgoing"),
        QStringLiteral("Start with an outgoing call; may be repeated."), QStringLiteral("ADDRESS")};
    QCommandLineOption name{
        QStringLiteral("name"), QStringLiteral("Name of the far end of these calls."), QStringLiteral("TEXT")};
    QCommandLineOption without{QStringLiteral("without"),
        QStringLiteral("These calls lack a feature: tones, hold or audio; may be repeated."),
        QStringLiteral("FEATURE")};
    QCommandLineOption anyone{
        QStringLiteral("anyone"), QStringLiteral("Obey everybody, not the host alone: for playing the host by hand.")};
    QCommandLineOption script{QStringLiteral("script"),
        QStringLiteral("Run a script instead of reading commands, then end."), QStringLiteral("FILE")};
    QCommandLineOption scenario{QStringLiteral("scenario"),
        QStringLiteral("Run one of the scripts that are built in, then end."), QStringLiteral("NAME")};
    QCommandLineOption listScenarios{QStringLiteral("list-scenarios"), QStringLiteral("List these scripts.")};
    QCommandLineOption stay{QStringLiteral("stay"), QStringLiteral("Do not end after the script; read commands then.")};
    QCommandLineOption help{{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this.")};
    QCommandLineOption version{QStringLiteral("version"), QStringLiteral("Show the version.")};

    CommandLine();
    QString helpText() const;

    QCommandLineParser parser;
};

CommandLine::CommandLine()
{
    parser.setApplicationDescription(
        QStringLiteral("An application that carries calls, for trying a voice-call host.\n"
                       "It registers with the host, obeys it, and prints a line for everything that happens."));
    parser.addOptions({host, manager, incoming, outgoing, name, without, anyone, script, scenario, listScenarios, stay,
        help, version});
}

QString CommandLine::helpText() const
{
    return parser.helpText() + QStringLiteral("\nCommands, typed or in a script:\n") + CommandInterpreter::help()
        + QStringLiteral("\n\nIn a script also: wait WORD...  until FACT...  timeout SECONDS  pause SECONDS"
                         "\nExit code: 0 done, 1 script failed, 2 wrong usage, 3 no bus.");
}

bool isBusName(const QString &name)
{
    static const QRegularExpression form(QStringLiteral(
        "^(:[A-Za-z0-9_-]+(\\.[A-Za-z0-9_-]+)+|[A-Za-z_-][A-Za-z0-9_-]*(\\.[A-Za-z_-][A-Za-z0-9_-]*)+)$"));
    return name.size() <= 255 && form.match(name).hasMatch();
}

// The features of the calls that the command line makes.
QString readFeatures(const QStringList &missing, CallDescription *description)
{
    static const QHash<QString, bool CallDescription::*> features
        = {{QStringLiteral("tones"), &CallDescription::tones}, {QStringLiteral("hold"), &CallDescription::holdable},
            {QStringLiteral("audio"), &CallDescription::audioControl}};
    for (const QString &feature : missing) {
        if (!features.contains(feature))
            return QStringLiteral("--without: \"%1\" is no feature; there are tones, hold and audio").arg(feature);
        description->*features.value(feature) = false;
    }
    return {};
}

// Options that make calls, in the order in which they stand on the command line.
QString readCalls(const CommandLine &line, QList<NewCall> *calls)
{
    CallDescription common;
    common.remoteName = line.parser.value(line.name);
    const QString error = readFeatures(line.parser.values(line.without), &common);
    QStringList incoming = line.parser.values(line.incoming);
    QStringList outgoing = line.parser.values(line.outgoing);
    for (const QString &option : line.parser.optionNames()) {
        const bool isIncoming = option == QLatin1String("incoming");
        if (!isIncoming && option != QLatin1String("outgoing"))
            continue;
        NewCall call = newCall(isIncoming, common);
        call.description.name = QStringLiteral("call%1").arg(calls->size() + 1);
        call.description.address = (isIncoming ? incoming : outgoing).takeFirst();
        calls->append(call);
    }
    return error;
}

QString readScript(const CommandLine &line, Options *options)
{
    const QString name = line.parser.value(line.scenario);
    options->script = options->scriptName = line.parser.value(line.script);
    options->stay = line.parser.isSet(line.stay);
    if (line.parser.isSet(line.scenario) && line.parser.isSet(line.script))
        return QStringLiteral("--script and --scenario do not go together");
    if (options->stay && !line.parser.isSet(line.scenario) && !line.parser.isSet(line.script))
        return QStringLiteral("--stay goes with --script or --scenario only");
    if (!line.parser.isSet(line.scenario))
        return {};
    options->script = Scenarios::file(name);
    options->scriptName = name;
    return Scenarios::names().contains(name)
        ? QString()
        : QStringLiteral("--scenario: there is no \"%1\"; --list-scenarios shows what there is").arg(name);
}

QString readManagers(const CommandLine &line, QStringList *paths)
{
    *paths = line.parser.values(line.manager);
    if (paths->isEmpty())
        paths->append(QStringLiteral("/ringlet/sim"));
    const QString fault = managersFault(*paths);
    return fault.isEmpty() ? fault : QStringLiteral("--manager: ") + fault;
}

QString answerTo(const CommandLine &line)
{
    if (line.parser.isSet(line.version))
        return QStringLiteral("ringlet-sim " RINGLET_VERSION);
    if (line.parser.isSet(line.listScenarios))
        return Scenarios::list();
    return line.parser.isSet(line.help) ? line.helpText() : QString();
}

} // namespace

QString Options::read(const QStringList &arguments)
{
    CommandLine line;
    if (!line.parser.parse(arguments))
        return line.parser.errorText();
    if (!line.parser.positionalArguments().isEmpty())
        return QStringLiteral("\"%1\" is no option").arg(line.parser.positionalArguments().constFirst());
    answer = answerTo(line);
    host = line.parser.value(line.host);
    obeysAnyone = line.parser.isSet(line.anyone);
    if (!isBusName(host))
        return QStringLiteral("--host: \"%1\" is no bus name; one is like org.example.Host").arg(host);
    QString fault = readManagers(line, &managers);
    if (fault.isEmpty())
        fault = readScript(line, this);
    if (fault.isEmpty())
        fault = readCalls(line, &calls);
    return fault;
}
