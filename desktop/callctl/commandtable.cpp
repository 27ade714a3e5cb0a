// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "commandtable.h"

#include "commandline.h"
#include "commands.h"
#include "completion.h"
#include "failure.h"

#include <algorithm>

static const Command table[] = {
    {"calls", "[--json]", "list the calls", 0, 0, Commands::calls},
    {"providers", "[--json]", "list who carries calls", 0, 0, Commands::providers},
    {"devices", "[--json]", "list the audio devices", 0, 0, Commands::devices},
    {"answer", "[CALL]", "answer the call that rings", 0, 1, Commands::answer},
    {"hangup", "[CALL] [--all]", "end a call, or reject one that rings", 0, 1, Commands::hangup},
    {"hold", "[CALL] on|off [--force]", "hold a call, or take it back", 1, 2, Commands::hold},
    {"swap", "[CALL]", "hold the active call, resume the held one", 0, 1, Commands::swap},
    {"dtmf", "[CALL] TONES", "send tones: 0-9 * # A-D", 1, 2, Commands::dtmf},
    {"dial", "PROVIDER NUMBER", "start a call", 2, 2, Commands::dial},
    {"mute", "on|off|toggle", "mute the microphone, or open it", 1, 1, Commands::mute},
    {"input", "INPUT", "select an audio device", 1, 1, Commands::input},
    {"output", "OUTPUT", "select an audio device", 1, 1, Commands::output},
    {"wait", "CONDITION [CALL] [--timeout S]", "wait for ringing, active, gone, ...", 1, 2, Commands::wait},
    {"watch", "", "show calls and audio as they change", 0, 0, Commands::watch},
    // For shells, whose users need not know of it.
    {"complete", "LINE", nullptr, 1, 1, Completion::print},
};

QStringList CommandTable::names()
{
    QStringList names;
    for (const Command &command : table) {
        if (command.help)
            names.append(QLatin1String(command.name));
    }
    return names;
}

const Command &CommandTable::find(const QString &name)
{
    const auto *const found = std::find_if(std::begin(table), std::end(table),
        [&](const Command &command) { return name == QLatin1String(command.name); });
    if (found != std::end(table))
        return *found;
    const QString complaint
        = name.isEmpty() ? QStringLiteral("a command is needed") : QStringLiteral("there is no command '%1'").arg(name);
    throw Failure(ExitCode::WrongCommandLine,
        QStringLiteral("%1; there are: %2").arg(complaint, names().join(QLatin1String(", "))));
}

static QString rightUse(const Command &command)
{
    return QStringLiteral("callctl %1 %2").arg(QLatin1String(command.name), QLatin1String(command.usage)).trimmed();
}

void CommandTable::check(const Command &command, const CommandLine &line)
{
    for (const QString &option : line.options) {
        if (!QString::fromLatin1(command.usage).contains(option)) {
            throw Failure(ExitCode::WrongCommandLine,
                QStringLiteral("%1 does not go with '%2'; right is: %3")
                    .arg(option, QLatin1String(command.name), rightUse(command)));
        }
    }
    if (line.arguments.size() < command.least || line.arguments.size() > command.most) {
        throw Failure(ExitCode::WrongCommandLine,
            QStringLiteral("this is not how it is used; right is: %1").arg(rightUse(command)));
    }
}

QString CommandTable::helpText()
{
    QString text = QStringLiteral("Usage: callctl COMMAND [ARGUMENT]... | --help | --version\n"
                                  "Shows and drives the calls of the desktop host, voicecalld.\n\n");
    for (const Command &command : table) {
        if (command.help) {
            const QString use = QStringLiteral("%1 %2").arg(QLatin1String(command.name), QLatin1String(command.usage));
            text += QStringLiteral("  %1  %2\n").arg(use, -35).arg(QLatin1String(command.help));
        }
    }
    return text + QStringLiteral(R"(
CALL is an id, or a part of a name or address that no other call has. It may be
left out where only one call makes sense.
Exit codes: 0 done, 1 refused, without effect, or not written, 2 wrong command
line, 3 no session bus, or no voicecalld that answers, 4 no such call, or
several.
)");
}
