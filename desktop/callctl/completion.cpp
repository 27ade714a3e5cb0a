// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "completion.h"

#include "commandline.h"
#include "commandtable.h"
#include "condition.h"
#include "failure.h"
#include "hostaccess.h"
#include "hostmonitor.h"
#include "output.h"

#include <QtCore/QRegularExpression>
#include <QtDBus/QDBusConnectionInterface>

// Nothing but a running host is asked: a key press starts none.
static HostState stateIfThereIsAHost()
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected() || !bus.interface()->isServiceRegistered(HostMonitor::serviceName()))
        return {};
    return HostAccess::state(std::chrono::milliseconds(500));
}

static QStringList deviceIds(bool AudioDevice::*direction)
{
    QStringList ids;
    for (const AudioDevice &device : stateIfThereIsAHost().devices) {
        if (device.*direction)
            ids.append(device.id);
    }
    return ids;
}

static QStringList callIds()
{
    QStringList ids;
    for (const CallInfo &call : stateIfThereIsAHost().calls)
        ids.append(call.id());
    return ids;
}

static QStringList providerIds()
{
    QStringList ids;
    for (const Provider &provider : stateIfThereIsAHost().providers)
        ids.append(provider.id);
    return ids;
}

// What a word of a command's usage stands for.
static QStringList meaningOf(const QString &word)
{
    if (word == QLatin1String("CALL"))
        return callIds();
    if (word == QLatin1String("PROVIDER"))
        return providerIds();
    if (word == QLatin1String("INPUT"))
        return deviceIds(&AudioDevice::isInput);
    if (word == QLatin1String("OUTPUT"))
        return deviceIds(&AudioDevice::isOutput);
    if (word == QLatin1String("CONDITION"))
        return Condition::words();
    return word.contains(QLatin1Char('|')) ? word.split(QLatin1Char('|')) : QStringList();
}

static QStringList argumentsOf(const Command &command, int position)
{
    QStringList words;
    int optional = 0;
    const QStringList usage = QString::fromLatin1(command.usage).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (const QString &part : usage) {
        if (part.contains(QLatin1String("--")) || part.endsWith(QLatin1String("S]")))
            continue;
        optional += part.startsWith(QLatin1Char('[')) ? 1 : 0;
        words.append(QString(part).remove(QLatin1Char('[')).remove(QLatin1Char(']')));
    }
    // Where something may be left out, the next may stand in its place.
    QStringList candidates;
    for (int i = position; i <= position + optional && i < words.size(); ++i)
        candidates += meaningOf(words.at(i));
    return candidates;
}

static QStringList optionsOf(const Command &command)
{
    static const QRegularExpression option(QStringLiteral("--[a-z]+"));
    QStringList options;
    auto matches = option.globalMatch(QString::fromLatin1(command.usage));
    while (matches.hasNext())
        options.append(matches.next().captured());
    return options;
}

// The words before, the program's name not among them, and the one that is being typed.
static QStringList candidates(const QStringList &before, const QString &typed)
{
    if (before.isEmpty()) {
        return CommandTable::names() + QStringList({QStringLiteral("--help"), QStringLiteral("--version")});
    }
    const Command &command = CommandTable::find(before.constFirst());
    if (typed.startsWith(QLatin1Char('-')))
        return optionsOf(command);
    const int position = before.mid(1).filter(QRegularExpression(QStringLiteral("^[^-]"))).size();
    return argumentsOf(command, position);
}

void Completion::print(const CommandLine &line)
{
    // Shells take these as they are; others would need quotes, and could do harm without.
    static const QRegularExpression harmless(QStringLiteral("\\A[A-Za-z0-9_./:@+,=-]+\\z"));
    QStringList words = line.arguments.constFirst().split(QRegularExpression(QStringLiteral("\\s+")));
    const QString typed = words.takeLast();
    QByteArray lines;
    try {
        const QStringList all = candidates(words.mid(1), typed);
        for (const QString &candidate : all) {
            if (candidate.startsWith(typed) && harmless.match(candidate).hasMatch())
                lines += candidate.toUtf8() + '\n';
        }
    } catch (const Failure &) {
        // A person who types sees no errors of what is only offered.
        return;
    }
    Output::print(lines);
}
