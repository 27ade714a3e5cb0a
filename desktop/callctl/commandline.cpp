// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "commandline.h"

#include "failure.h"

#include <QtCore/QHash>

CommandLine CommandLine::read(const QStringList &arguments)
{
    static const QHash<QString, bool CommandLine::*> options = {
        {QStringLiteral("--json"), &CommandLine::json},
        {QStringLiteral("--help"), &CommandLine::help},
        {QStringLiteral("-h"), &CommandLine::help},
        {QStringLiteral("--version"), &CommandLine::version},
    };
    CommandLine line;
    QStringList words;
    bool optionsEnded = false;
    for (const QString &argument : arguments) {
        if (optionsEnded || !argument.startsWith(QLatin1Char('-'))) {
            words.append(argument);
        } else if (argument == QLatin1String("--")) {
            optionsEnded = true;
        } else if (options.contains(argument)) {
            line.*options.value(argument) = true;
        } else {
            throw Failure(ExitCode::WrongCommandLine,
                QStringLiteral("there is no option '%1'; there are --json, --help and --version").arg(argument));
        }
    }
    line.command = words.value(0);
    line.arguments = words.mid(1);
    return line;
}

QString CommandLine::helpText()
{
    return QStringLiteral(R"(Usage: callctl COMMAND [ARGUMENT]...
Shows and drives the calls of the desktop host, voicecalld.

  calls, providers, devices   list them; with --json for programs
  answer [ID]                 answer a call
  hangup [ID]                 end a call, or reject it while it rings
  hold [ID] on|off            hold a call, or take it back
  dtmf [ID] TONES             send tones: 0-9 * # A-D
  dial PROVIDER NUMBER        start a call
  mute on|off                 mute the microphone, or open it
  input ID, output ID         select an audio device
  watch                       show calls and audio as they change, until Ctrl-C:
                              a table on a terminal, otherwise a line per change
  --json, --help, --version

A call's ID may be left out when there is only one call.

Exit codes: 0 done, 1 the host refused, or the output cannot be written, 2 wrong
command line, 3 no session bus, or voicecalld is not running or does not answer,
4 no such call, or none named where there are several.
)");
}
