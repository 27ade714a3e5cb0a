// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "options.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr int shortRegistrations = 300;
constexpr int shortCalls = 2000;

[[noreturn]] void refuse(const QString &reason)
{
    std::fprintf(stderr, "soak: %s; see --help\n", qUtf8Printable(reason));
    std::exit(2);
}

int number(const QCommandLineParser &parser, const QString &option, int least, int otherwise)
{
    if (!parser.isSet(option))
        return otherwise;
    bool isNumber = false;
    const int value = parser.value(option).toInt(&isNumber);
    if (!isNumber || value < least)
        refuse(QStringLiteral("--%1 is '%2'; it has to be a number, at least %3")
                   .arg(option, parser.value(option))
                   .arg(least));
    return value;
}

} // namespace

Options Options::read()
{
    const auto option = [](const char *name, const char *description, const char *value = nullptr) {
        return QCommandLineOption(QLatin1String(name), QLatin1String(description), QLatin1String(value));
    };
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Applications register with one host, have calls and leave, until the numbers are reached. At the end the\n"
        "host has to hold what it held at the beginning: exactly the same of all that is counted, and of memory no\n"
        "more than a little for each call.\n\n"
        "Exit codes: 0 it does, 1 it does not, or something did not work, 2 wrong command line."));
    const QCommandLineOption help = parser.addHelpOption();
    parser.addOptions({
        option("registrations", "How many applications register and leave; 100000 by default.", "NUMBER"),
        option("calls", "How many calls they have between them; 200000 by default.", "NUMBER"),
        option("short", "300 registrations and 2000 calls, unless said otherwise."),
        option("seed", "What the applications do is drawn from this number; 1 by default.", "NUMBER"),
        option("patience", "How long what is left may take to go away; 20 seconds by default.", "SECONDS"),
        option("plugin", "Load this plug-in instead of the one that was built.", "FILE"),
        option("log", "The host's log goes to this file; otherwise it is dropped.", "FILE"),
        option("report", "What was found goes to this file as a table in Markdown, too.", "FILE"),
        option("leak",
            "Loses one of these in the host now and then, to see that it is noticed: descriptor, memory, object,\n"
            "pending-call, rule, thread; or call-memory, 11 bytes for each call.",
            "KIND"),
    });
    if (!parser.parse(QCoreApplication::arguments()))
        refuse(parser.errorText().section(QLatin1Char('.'), 0, -2));
    if (parser.isSet(help))
        parser.showHelp();
    if (!parser.positionalArguments().isEmpty())
        refuse(QStringLiteral("'%1' is not an option").arg(parser.positionalArguments().constFirst()));

    Options options;
    if (parser.isSet(QStringLiteral("short"))) {
        options.registrations = shortRegistrations;
        options.calls = shortCalls;
    }
    options.registrations = number(parser, QStringLiteral("registrations"), 4, options.registrations);
    options.calls = number(parser, QStringLiteral("calls"), 4, options.calls);
    options.seed = unsigned(number(parser, QStringLiteral("seed"), 0, int(options.seed)));
    options.patience = number(parser, QStringLiteral("patience"), 0, options.patience);
    if (parser.isSet(QStringLiteral("plugin")))
        options.plugin = parser.value(QStringLiteral("plugin"));
    options.log = parser.value(QStringLiteral("log"));
    options.report = parser.value(QStringLiteral("report"));
    options.leak = parser.value(QStringLiteral("leak"));
    return options;
}
