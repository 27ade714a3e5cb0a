// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "options.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <cstdio>
#include <cstdlib>

[[noreturn]] static void refuse(const QString &reason)
{
    std::fprintf(stderr, "voicecalld: %s; 'voicecalld --help' shows what there is\n", qUtf8Printable(reason));
    std::exit(2);
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
    if (!parser.parse(QCoreApplication::arguments()))
        refuse(parser.errorText().section(QLatin1Char('.'), 0, -2));
    if (parser.isSet(help))
        parser.showHelp();
    if (parser.isSet(version))
        parser.showVersion();
    if (!parser.positionalArguments().isEmpty())
        refuse(QStringLiteral("'%1' is not an option").arg(parser.positionalArguments().constFirst()));

    return {parser.values(plugin), parser.values(directory), parser.value(audio), parser.isSet(trace)};
}
