// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "options.h"

#include "programs/log.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QVector>
#include <cstdlib>

[[noreturn]] static void refuse(const QString &reason)
{
    Log::complain(reason + QStringLiteral("; 'voicecalld --help' shows what there is"));
    std::exit(2);
}

namespace {

/** An option whose value is a number from 0 up, and where it goes. */
struct NumberOption
{
    const char *name;
    const char *value;
    const char *help;
    int *target;
};

} // namespace

static QVector<NumberOption> numberOptions(Options *options)
{
    Bounds &bounds = options->bounds;
    return {
        {"longest-text", "NUMBER", "Characters of a name or address that are shown.", &bounds.longestText},
        {"most-calls", "NUMBER", "Calls that are shown in all.", &bounds.calls.inAll},
        {"most-calls-each", "NUMBER", "Calls of one application that are shown.", &bounds.calls.ofEach},
        {"most-providers", "NUMBER", "Providers that are shown in all.", &bounds.providers.inAll},
        {"most-providers-each", "NUMBER", "Providers of one application that are shown.", &bounds.providers.ofEach},
        {"largest-message", "BYTES", "The bus daemon's limit max_message_size: what is larger is not sent.",
            &bounds.largestMessage},
        {"hearing-check", "MILLISECONDS", "Time between two looks whether the bus is still heard.",
            &options->hearingCheckInterval},
    };
}

static void addNumbers(QCommandLineParser *parser, const QVector<NumberOption> &numbers)
{
    for (const NumberOption &number : numbers) {
        const QString help = QStringLiteral("%1 Without this option it is %2, 0 is for no limit.");
        parser->addOption({QLatin1String(number.name), help.arg(QLatin1String(number.help)).arg(*number.target),
            QLatin1String(number.value)});
    }
}

static void readNumbers(const QCommandLineParser &parser, const QVector<NumberOption> &numbers)
{
    for (const NumberOption &number : numbers) {
        const QString name = QLatin1String(number.name);
        if (!parser.isSet(name))
            continue;
        bool isNumber = false;
        *number.target = parser.value(name).toInt(&isNumber);
        if (!isNumber || *number.target < 0)
            refuse(QStringLiteral("--%1 takes a number from 0 up, not '%2'").arg(name, parser.value(name)));
    }
}

static void answerQuestions(
    QCommandLineParser *parser, const QCommandLineOption &help, const QCommandLineOption &version)
{
    if (!parser->parse(QCoreApplication::arguments()))
        refuse(parser->errorText().section(QLatin1Char('.'), 0, -2));
    if (parser->isSet(help))
        parser->showHelp();
    if (parser->isSet(version))
        parser->showVersion();
    if (!parser->positionalArguments().isEmpty())
        refuse(QStringLiteral("'%1' is not an option").arg(parser->positionalArguments().constFirst()));
}

Options Options::read()
{
    const QCommandLineOption plugin(QStringLiteral("plugin"),
        QStringLiteral("Load this plug-in. May be given several times."), QStringLiteral("FILE"));
    const QCommandLineOption directory(QStringLiteral("plugin-dir"),
        QStringLiteral("Load all plug-ins of this directory. Without this and --plugin it is\n%1.")
            .arg(QStringLiteral(VOICECALL_PLUGIN_DIR)),
        QStringLiteral("DIR"));
    const QCommandLineOption audio(QStringLiteral("audio"),
        QStringLiteral("Where audio devices come from: 'fake' (the default) pretends them."), QStringLiteral("BACKEND"),
        QStringLiteral("fake"));
    const QCommandLineOption trace(
        QStringLiteral("trace"), QStringLiteral("Log every operation (category 'voicecall'), not only warnings."));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Loads voice-call plug-ins and shows their calls as org.tarnwickle.voicecall on the session bus.\n\n"
        "Exit codes: 0 ended by SIGINT or SIGTERM, 1 cannot run or the bus was lost, 2 wrong command line."));
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    parser.addOptions({plugin, directory, audio, trace});
    Options options;
    const QVector<NumberOption> numbers = numberOptions(&options);
    addNumbers(&parser, numbers);
    answerQuestions(&parser, help, version);
    readNumbers(parser, numbers);
    options.pluginFiles = parser.values(plugin);
    options.pluginDirectories = parser.values(directory);
    options.audio = parser.value(audio);
    options.trace = parser.isSet(trace);
    options.bounds = options.bounds.fitting();
    return options;
}
