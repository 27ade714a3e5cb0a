// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "rawcommands.h"

#include "rawapplication.h"
#include "typedvalue.h"

static const QString objectManagerInterface = QStringLiteral("org.freedesktop.DBus.ObjectManager");

// Each reads the words behind its name, says what is wrong with them, and does it if there is an application to
// do it with.
using Command = QString (*)(const QStringList &words, RawApplication *application);

static QString registerPath(const QStringList &words, RawApplication *application)
{
    const QString error = pathFault(words.at(0));
    if (error.isEmpty() && application)
        application->registerManager(words.at(0));
    return error;
}

static QString snapshot(const QStringList &words, RawApplication *application)
{
    Answering answering;
    const QString error = readAnswering(words, &answering);
    if (error.isEmpty() && application)
        application->setSnapshotAnswering(answering);
    return error;
}

static QString commandAnswers(const QStringList &words, RawApplication *application)
{
    Answering answering;
    const QString error = readAnswering(words, &answering);
    if (error.isEmpty() && application)
        application->setCommandAnswering(answering);
    return error;
}

// A path, and interfaces with their properties behind it.
static QString readObject(const QStringList &words, BusInterfaceMap *interfaces)
{
    const QString error = pathFault(words.at(0));
    return error.isEmpty() ? readInterfaces(words.mid(1), interfaces) : error;
}

static QString object(const QStringList &words, RawApplication *application)
{
    BusInterfaceMap interfaces;
    const QString error = readObject(words, &interfaces);
    if (error.isEmpty() && application)
        application->setObject(words.at(0), interfaces);
    return error;
}

// The two signals of an object manager: its path, an object, and something about interfaces.
static QString tellOfObject(const QStringList &words, RawApplication *application, const char *member,
    QVariant (*about)(const BusInterfaceMap &interfaces))
{
    BusInterfaceMap interfaces;
    QString error = pathFault(words.at(0));
    if (error.isEmpty())
        error = readObject(words.mid(1), &interfaces);
    if (error.isEmpty() && application)
        application->sendSignal(words.at(0), objectManagerInterface, QLatin1String(member),
            {QVariant::fromValue(QDBusObjectPath(words.at(1))), about(interfaces)});
    return error;
}

static QString added(const QStringList &words, RawApplication *application)
{
    return tellOfObject(words, application, "InterfacesAdded",
        [](const BusInterfaceMap &interfaces) { return QVariant::fromValue(interfaces); });
}

static QString removed(const QStringList &words, RawApplication *application)
{
    return tellOfObject(words, application, "InterfacesRemoved",
        [](const BusInterfaceMap &interfaces) { return QVariant(QStringList(interfaces.keys())); });
}

static QString signal(const QStringList &words, RawApplication *application)
{
    QVariantList values;
    QString error = pathFault(words.at(0));
    if (error.isEmpty())
        error = interfaceFault(words.at(1));
    if (error.isEmpty())
        error = memberFault(words.at(2));
    if (error.isEmpty())
        error = readValues(words.mid(3), &values);
    if (error.isEmpty() && application)
        application->sendSignal(words.at(0), interfaceName(words.at(1)), words.at(2), values);
    return error;
}

static const struct
{
    const char *name;
    const char *usage;
    const char *help;
    int minimum;
    int maximum;
    Command run;
} commands[] = {
    {"register", "PATH", "RegisterCallManager, whether anything is there or not", 1, 1, registerPath},
    {"snapshot", "HOW", "how GetManagedObjects is answered: now, never, late SECONDS, error NAME, with VALUE...", 1, 33,
        snapshot},
    {"commands", "HOW", "how the host's commands are answered", 1, 33, commandAnswers},
    {"object", "PATH [INTERFACE [PROPERTY=VALUE...]]...", "what GetManagedObjects shows there from now on", 1, 100,
        object},
    {"added", "MANAGER PATH INTERFACE [PROPERTY=VALUE...]...", "InterfacesAdded from MANAGER", 2, 100, added},
    {"removed", "MANAGER PATH INTERFACE...", "InterfacesRemoved from MANAGER", 2, 100, removed},
    {"signal", "PATH INTERFACE MEMBER [VALUE...]", "any signal", 3, 35, signal},
};

static QString run(const QStringList &words, RawApplication *application)
{
    QStringList names;
    for (const auto &command : commands) {
        names.append(QLatin1String(command.name));
        if (words.constFirst() != names.constLast())
            continue;
        const int count = words.size() - 1;
        if (count < command.minimum || count > command.maximum)
            return QStringLiteral("usage: raw NAME %1 %2").arg(names.constLast(), QLatin1String(command.usage));
        return command.run(words.mid(1), application);
    }
    return QStringLiteral("a raw application cannot \"%1\"; there are %2")
        .arg(words.constFirst(), names.join(QStringLiteral(", ")));
}

QString RawCommands::fault(const QStringList &words) { return run(words, nullptr); }

void RawCommands::execute(const QStringList &words, RawApplication &application) { run(words, &application); }

QString RawCommands::help()
{
    QStringList lines;
    for (const auto &command : commands)
        lines.append(QStringLiteral("  raw NAME %1 %2\n        %3")
                         .arg(QLatin1String(command.name), QLatin1String(command.usage), QLatin1String(command.help)));
    return lines.join(QLatin1Char('\n'));
}
