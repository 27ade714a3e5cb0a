// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "commandline.h"

#include "failure.h"

static double secondsOf(const QString &text)
{
    bool isNumber = false;
    const double seconds = text.toDouble(&isNumber);
    // Beyond a million a timer no longer counts, and nobody waits.
    if (!isNumber || !(seconds >= 0 && seconds <= 1e6)) {
        throw Failure(ExitCode::WrongCommandLine,
            QStringLiteral("--timeout takes a number of seconds from 0 to 1000000, not '%1'").arg(text));
    }
    return seconds;
}

// An option that takes no value; whether there is such a one.
static bool takeFlag(const QString &option, CommandLine *line)
{
    static const QStringList ofCommands
        = {QStringLiteral("--json"), QStringLiteral("--force"), QStringLiteral("--all")};
    if (option == QLatin1String("--help") || option == QLatin1String("-h"))
        line->help = true;
    else if (option == QLatin1String("--version"))
        line->version = true;
    else if (ofCommands.contains(option))
        line->options.append(option);
    else
        return false;
    return true;
}

CommandLine CommandLine::read(const QStringList &arguments)
{
    CommandLine line;
    QStringList words;
    QStringList rest = arguments;
    while (!rest.isEmpty()) {
        const QString word = rest.takeFirst();
        if (!word.startsWith(QLatin1Char('-'))) {
            words.append(word);
        } else if (word == QLatin1String("--")) {
            words += rest;
            break;
        } else if (word == QLatin1String("--timeout")) {
            line.options.append(word);
            line.timeout = secondsOf(rest.isEmpty() ? QString() : rest.takeFirst());
        } else if (!takeFlag(word, &line)) {
            throw Failure(ExitCode::WrongCommandLine,
                QStringLiteral("there is no option '%1'; there are --json, --force, --all, --timeout, --help and"
                               " --version")
                    .arg(word));
        }
    }
    line.command = words.value(0);
    line.arguments = words.mid(1);
    return line;
}
