// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "options.h"

#include "commandinterpreter.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QHash>
#include <QtCore/QRegularExpression>

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
    QCommandLineOption script{QStringLiteral("script"),
        QStringLiteral("Run a script instead of reading commands, then end."), QStringLiteral("FILE")};
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
    parser.addOptions({host, manager, incoming, outgoing, name, without, script, stay, help, version});
}

QString CommandLine::helpText() const
{
    return parser.helpText() + QStringLiteral("\nCommands, typed or in a script:\n") + CommandInterpreter::help()
        + QStringLiteral("\n\nIn a script also: wait WORD...  timeout SECONDS  pause SECONDS"
                         "\nExit code: 0 done, 1 script failed, 2 wrong usage, 3 no bus.");
}

bool isBusName(const QString &name)
{
    static const QRegularExpression form(QStringLiteral(
        "^(:[A-Za-z0-9_-]+(\\.[A-Za-z0-9_-]+)+|[A-Za-z_-][A-Za-z0-9_-]*(\\.[A-Za-z_-][A-Za-z0-9_-]*)+)$"));
    return name.size() <= 255 && form.match(name).hasMatch();
}

bool isManagerPath(const QString &path)
{
    static const QRegularExpression form(QStringLiteral("^(/[A-Za-z0-9_]+)+$"));
    return form.match(path).hasMatch();
}

QString managersFault(const QStringList &paths)
{
    for (const QString &path : paths) {
        if (!isManagerPath(path))
            return QStringLiteral("--manager: \"%1\" is no path for a call manager; one is like /my/calls").arg(path);
        if (paths.count(path) > 1)
            return QStringLiteral("--manager: %1 is given twice").arg(path);
        for (const QString &other : paths) {
            if (other.startsWith(path + QLatin1Char('/')))
                return QStringLiteral("--manager: %1 lies among the calls of %2").arg(other, path);
        }
    }
    return {};
}

// Options that make calls, in the order in which they stand on the command line.
QList<CallDescription> readCalls(const CommandLine &line, const CallDescription &common)
{
    QList<CallDescription> calls;
    QStringList incoming = line.parser.values(line.incoming);
    QStringList outgoing = line.parser.values(line.outgoing);
    for (const QString &option : line.parser.optionNames()) {
        const bool isIncoming = option == QLatin1String("incoming");
        if (!isIncoming && option != QLatin1String("outgoing"))
            continue;
        CallDescription call = common;
        call.incoming = isIncoming;
        call.name = QStringLiteral("call%1").arg(calls.size() + 1);
        call.address = (isIncoming ? incoming : outgoing).takeFirst();
        calls.append(call);
    }
    return calls;
}

} // namespace

QString Options::read(const QStringList &arguments)
{
    static const QHash<QString, bool CallDescription::*> features = {{QStringLiteral("tones"), &CallDescription::tones},
        {QStringLiteral("hold"), &CallDescription::holdable}, {QStringLiteral("audio"), &CallDescription::audio}};

    CommandLine line;
    if (!line.parser.parse(arguments))
        return line.parser.errorText();
    if (line.parser.isSet(line.help))
        answer = line.helpText();
    if (line.parser.isSet(line.version))
        answer = QStringLiteral("ringlet-sim " RINGLET_VERSION);
    if (!line.parser.positionalArguments().isEmpty())
        return QStringLiteral("\"%1\" is no option").arg(line.parser.positionalArguments().constFirst());

    host = line.parser.value(line.host);
    if (!isBusName(host))
        return QStringLiteral("--host: \"%1\" is no bus name; one is like org.example.Host").arg(host);
    managers = line.parser.values(line.manager);
    if (managers.isEmpty())
        managers = QStringList{QStringLiteral("/ringlet/sim")};
    script = line.parser.value(line.script);
    stay = line.parser.isSet(line.stay);
    if (stay && script.isEmpty())
        return QStringLiteral("--stay goes with --script only");

    CallDescription common;
    common.remoteName = line.parser.value(line.name);
    for (const QString &feature : line.parser.values(line.without)) {
        if (!features.contains(feature))
            return QStringLiteral("--without: \"%1\" is no feature; there are tones, hold and audio").arg(feature);
        common.*features.value(feature) = false;
    }
    calls = readCalls(line, common);
    return managersFault(managers);
}
