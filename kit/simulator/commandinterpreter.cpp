// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "commandinterpreter.h"

#include "callfacts.h"
#include "hostrequest.h"
#include "managerpaths.h"
#include "rawcommands.h"
#include "words.h"

#include <QtCore/QRegularExpression>
#include <csignal>

using Outcome = SimulatedCall::Outcome;

static constexpr int mostCalls = 10000;

static QString readOnOff(const QString &word, bool *on)
{
    return readChoice(word, QStringLiteral("on"), QStringLiteral("off"), on);
}

static QString compare(const QString &what, const QString &is, const QString &expected)
{
    if (is == expected)
        return {};
    return QStringLiteral("%1 is %2, not %3").arg(what, quoted(is), quoted(expected));
}

// --- Names of calls, in which * stands for anything

static bool matches(const QString &name, const QString &pattern)
{
    return QRegularExpression(QRegularExpression::wildcardToRegularExpression(pattern)).match(name).hasMatch();
}

static QStringList matching(const QStringList &names, const QString &pattern)
{
    if (!pattern.contains(QLatin1Char('*')))
        return names.contains(pattern) ? QStringList(pattern) : QStringList();
    QStringList found;
    for (const QString &name : names) {
        if (matches(name, pattern))
            found.append(name);
    }
    return found;
}

static QString noCall(const QString &label, const Application &application)
{
    const QStringList names = application.calls().keys();
    return QStringLiteral("there is no call \"%1\"; calls: %2")
        .arg(label, names.isEmpty() ? QStringLiteral("none") : names.join(QStringLiteral(", ")));
}

// --- Outcomes

struct Deed
{
    const char *what;
    /** The statuses in which it can be done. */
    const char *statuses;
    /** The option of a call without which it cannot. */
    const char *option;
};

static const Deed answering = {"be answered", "incoming or dialing", ""};
static const Deed holding = {"change hold", "active or held", "hold"};
static const Deed muting = {"ask for mute", "dialing or active", "audio"};
static const Deed routing = {"ask for a route", "dialing or active", "audio"};

static QString outcomeText(Outcome outcome, const SimulatedCall &call, const Deed &deed)
{
    const QString cannot = QStringLiteral("%1 cannot %2").arg(call.label(), QLatin1String(deed.what));
    switch (outcome) {
    case Outcome::Sent:
        break;
    case Outcome::Unchanged:
        EventLog::print(call.label() + QStringLiteral(" unchanged"));
        break;
    case Outcome::WrongStatus:
        return QStringLiteral("%1: it is %2, and has to be %3")
            .arg(cannot, Ringlet::statusName(call.call().status()), QLatin1String(deed.statuses));
    case Outcome::Unsupported:
        return QStringLiteral("%1: it was made with %2=no").arg(cannot, QLatin1String(deed.option));
    case Outcome::TooEarly:
        return cannot + QStringLiteral(" yet: the host has sent it no UpdateAudioRouteState");
    }
    return {};
}

// --- What can be wrong with words before anything is done

static QString newCallFault(const QStringList &words)
{
    NewCall call;
    return readNewCall(words, &call);
}

static QString readCount(const QString &word, int *count)
{
    *count = word.toInt();
    return *count >= 1 && *count <= mostCalls
        ? QString()
        : QStringLiteral("\"%1\" is no number from 1 to %2").arg(word).arg(mostCalls);
}

static QString readDirection(const QString &word, bool *incoming)
{
    return readChoice(word, QStringLiteral("incoming"), QStringLiteral("outgoing"), incoming);
}

static QString manyFault(const QStringList &words)
{
    int count = 0;
    bool incoming = false;
    QString error = readCount(words.at(0), &count);
    if (error.isEmpty())
        error = readDirection(words.at(1), &incoming);
    return error.isEmpty() ? newCallFault(words.mid(2)) : error;
}

static QString readManagers(const QStringList &words, QStringList *paths)
{
    const QString key = QStringLiteral("manager=");
    for (const QString &word : words) {
        if (!word.startsWith(key))
            return QStringLiteral("\"%1\" is no option of an application; there is manager=").arg(word);
        paths->append(word.mid(key.size()));
    }
    return managersFault(*paths);
}

static QString applicationFault(const QStringList &words)
{
    QStringList managers;
    const QString error = nameFault(QStringLiteral("an application"), words.at(0));
    return error.isEmpty() ? readManagers(words.mid(1), &managers) : error;
}

// The first application, which has no name, cannot leave.
static QString leaveFault(const QStringList &words) { return nameFault(QStringLiteral("an application"), words.at(0)); }

static QString rawFault(const QStringList &words)
{
    const QString error = nameFault(QStringLiteral("an application"), words.at(0));
    return error.isEmpty() && words.size() > 1 ? RawCommands::fault(words.mid(1)) : error;
}

// --- The commands

static QString usageOf(const QString &name, const QString &arguments)
{
    return arguments.isEmpty() ? name : name + QLatin1Char(' ') + arguments;
}

struct CommandInterpreter::Command
{
    QString name;
    QString usage;
    QString help;
    int minimum;
    int maximum;
    QString (CommandInterpreter::*execute)(const QStringList &words);
    /** What else is wrong with the words, before anything is done. */
    QString (*fault)(const QStringList &words) = nullptr;
};

const QList<CommandInterpreter::Command> &CommandInterpreter::commands()
{
    static const QList<Command> commands = {
        {QStringLiteral("incoming"), QStringLiteral("CALL ADDRESS [OPTION...]"),
            QStringLiteral("a call comes in; options: name=TEXT tones=no hold=no audio=no manager=PATH"), 2, 7,
            &CommandInterpreter::addIncoming, newCallFault},
        {QStringLiteral("outgoing"), QStringLiteral("CALL ADDRESS [OPTION...]"),
            QStringLiteral("a call goes out, dialing; the same options"), 2, 7, &CommandInterpreter::addOutgoing,
            newCallFault},
        {QStringLiteral("many"), QStringLiteral("COUNT incoming|outgoing CALL ADDRESS [OPTION...]"),
            QStringLiteral("so many calls, CALL1, CALL2, ...; % in ADDRESS becomes the number"), 4, 9,
            &CommandInterpreter::addMany, manyFault},
        {QStringLiteral("answer"), QStringLiteral("CALL"),
            QStringLiteral("answered: an incoming call here, a dialing one by the far end"), 1, 1,
            &CommandInterpreter::answer},
        {QStringLiteral("hangup"), QStringLiteral("CALL"),
            QStringLiteral("the far end hangs up: final status, then the call goes"), 1, 1,
            &CommandInterpreter::hangUp},
        {QStringLiteral("hold"), QStringLiteral("CALL on|off"), QStringLiteral("the far end holds or resumes"), 2, 2,
            &CommandInterpreter::hold},
        {QStringLiteral("mute"), QStringLiteral("CALL on|off"), QStringLiteral("ask the host for RequestMute"), 2, 2,
            &CommandInterpreter::mute},
        {QStringLiteral("route"), QStringLiteral("CALL INPUT OUTPUT"),
            QStringLiteral("ask the host for RequestAudioRoute, by device ids"), 3, 3, &CommandInterpreter::route},
        {QStringLiteral("status"), QStringLiteral("CALL NUMBER"),
            QStringLiteral("any status 0 to 7; a disconnected call stays until hangup"), 2, 2,
            &CommandInterpreter::status},
        {QStringLiteral("calls"), QString(), QStringLiteral("list the calls"), 0, 0, &CommandInterpreter::listCalls},
        {QStringLiteral("check"), QStringLiteral("CALL FACT VALUE | host STATE | calls COUNT"),
            QStringLiteral("facts: status shown tones muted input output devices; an ended call has status gone; host: "
                           "registered present absent"),
            2, 3, &CommandInterpreter::check},
        {QStringLiteral("application"), QStringLiteral("NAME [manager=PATH]..."),
            QStringLiteral("a further application; its calls are NAME/CALL, its host and calls NAME/host, NAME/calls"),
            1, 9, &CommandInterpreter::addApplication, applicationFault},
        {QStringLiteral("leave"), QStringLiteral("NAME"),
            QStringLiteral("the application's connection closes without a word"), 1, 1, &CommandInterpreter::leave,
            leaveFault},
        {QStringLiteral("raw"), QStringLiteral("NAME"),
            QStringLiteral("an application that does what it is told and nothing else, right or wrong:"), 1, 100,
            &CommandInterpreter::raw, rawFault},
        {QStringLiteral("ask"), QStringLiteral("WORD..."),
            QStringLiteral("print what is to be done at the host: answer, hangup, hold, dtmf, mute, input, output, "
                           "restart"),
            1, 3, &CommandInterpreter::ask, hostRequestFault},
        {QStringLiteral("die"), QString(), QStringLiteral("end the whole program as SIGKILL does"), 0, 0,
            &CommandInterpreter::die},
        {QStringLiteral("help"), QString(), QStringLiteral("this list"), 0, 0, &CommandInterpreter::showHelp},
        {QStringLiteral("quit"), QString(), QStringLiteral("end all calls and leave"), 0, 0, &CommandInterpreter::quit},
    };
    return commands;
}

const CommandInterpreter::Command *CommandInterpreter::findCommand(const QString &name)
{
    for (const Command &command : commands()) {
        if (command.name == name)
            return &command;
    }
    return nullptr;
}

CommandInterpreter::CommandInterpreter(Simulation &simulation, EventLog &events)
    : m_simulation(simulation),
      m_events(events)
{
}

QString CommandInterpreter::fault(const QStringList &words)
{
    const Command *command = findCommand(words.constFirst());
    if (!command)
        return QStringLiteral("unknown command \"%1\"; \"help\" lists them").arg(words.constFirst());
    const int count = words.size() - 1;
    if (count < command->minimum || count > command->maximum)
        return QStringLiteral("usage: ") + usageOf(command->name, command->usage);
    return command->fault ? command->fault(words.mid(1)) : QString();
}

QString CommandInterpreter::execute(const QStringList &words)
{
    const QString written = fault(words);
    if (!written.isEmpty())
        return written;
    return (this->*findCommand(words.constFirst())->execute)(words.mid(1));
}

QString CommandInterpreter::help()
{
    QStringList lines;
    for (const Command &command : commands()) {
        lines.append(QStringLiteral("  %1\n        %2").arg(usageOf(command.name, command.usage), command.help));
        if (command.name == QLatin1String("raw"))
            lines.append(RawCommands::help());
    }
    return lines.join(QLatin1Char('\n'));
}

QString CommandInterpreter::withApplication(
    const QString &name, const std::function<QString(Application &)> &action) const
{
    if (Application *application = m_simulation.application(name))
        return action(*application);
    if (m_simulation.rawApplication(name))
        return QStringLiteral("\"%1\" is a raw application; it has no calls but what raw %1 sends").arg(name);
    return QStringLiteral("there is no application \"%1\"; applications: %2").arg(name, m_simulation.names());
}

QString CommandInterpreter::withCalls(const QString &label, const std::function<QString(SimulatedCall &)> &action) const
{
    return withApplication(applicationOf(label), [&](Application &application) {
        const QStringList names = matching(application.calls().keys(), callOf(label));
        QString error = names.isEmpty() ? noCall(label, application) : QString();
        for (int i = 0; i < names.size() && error.isEmpty(); ++i)
            error = action(*application.calls().value(names.at(i)));
        return error;
    });
}

// --- Calls

QString CommandInterpreter::addIncoming(const QStringList &words) { return addCall(words, true); }

QString CommandInterpreter::addOutgoing(const QStringList &words) { return addCall(words, false); }

QString CommandInterpreter::addCall(const QStringList &words, bool incoming)
{
    NewCall call = newCall(incoming);
    const QString error = readNewCall(words, &call);
    if (!error.isEmpty())
        return error;
    return withApplication(call.application, [&](Application &application) {
        if (application.calls().contains(call.description.name))
            return QStringLiteral("there is a call \"%1\" already").arg(words.at(0));
        if (!application.addCall(call.description, call.manager))
            return QStringLiteral("there is no call manager \"%1\"; there is %2")
                .arg(call.manager, application.managerPaths().join(QStringLiteral(", ")));
        return QString();
    });
}

QString CommandInterpreter::addMany(const QStringList &words)
{
    int count = 0;
    bool incoming = false;
    readCount(words.at(0), &count);
    QString error = readDirection(words.at(1), &incoming);
    for (int i = 1; i <= count && error.isEmpty(); ++i) {
        const QString number = QString::number(i);
        QString address = words.at(3);
        error = addCall(
            QStringList{words.at(2) + number, address.replace(QLatin1Char('%'), number)} + words.mid(4), incoming);
    }
    return error;
}

QString CommandInterpreter::answer(const QStringList &words)
{
    return withCalls(words.at(0), [](SimulatedCall &call) { return outcomeText(call.answer(), call, answering); });
}

QString CommandInterpreter::hangUp(const QStringList &words)
{
    return withCalls(words.at(0), [](SimulatedCall &call) {
        call.end();
        return QString();
    });
}

QString CommandInterpreter::hold(const QStringList &words)
{
    return withCalls(words.at(0), [&](SimulatedCall &call) {
        bool on = false;
        const QString error = readOnOff(words.at(1), &on);
        return error.isEmpty() ? outcomeText(call.setHold(on), call, holding) : error;
    });
}

QString CommandInterpreter::mute(const QStringList &words)
{
    return withCalls(words.at(0), [&](SimulatedCall &call) {
        bool on = false;
        const QString error = readOnOff(words.at(1), &on);
        return error.isEmpty() ? outcomeText(call.requestMute(on), call, muting) : error;
    });
}

QString CommandInterpreter::route(const QStringList &words)
{
    return withCalls(words.at(0),
        [&](SimulatedCall &call) { return outcomeText(call.requestRoute(words.at(1), words.at(2)), call, routing); });
}

QString CommandInterpreter::status(const QStringList &words)
{
    return withCalls(words.at(0), [&](SimulatedCall &call) {
        bool isNumber = false;
        const uint status = words.at(1).toUInt(&isNumber);
        if (!isNumber || status > 7)
            return QStringLiteral("\"%1\" is no status; it is a number from 0 to 7").arg(words.at(1));
        return outcomeText(call.setStatus(Ringlet::CallStatus(status)), call, {});
    });
}

// --- What there is

QString CommandInterpreter::listCalls(const QStringList &)
{
    const QList<SimulatedCall *> calls = m_simulation.calls();
    for (const SimulatedCall *call : calls)
        EventLog::print(
            QStringLiteral("call %1 status %2 shown %3 %4 %5")
                .arg(call->label(), statusText(call->call().status()), yesNo(call->call().isShown()),
                    quoted(call->call().description().address), quoted(call->call().description().remoteName)));
    EventLog::print(QStringLiteral("calls %1").arg(calls.size()));
    return {};
}

QString CommandInterpreter::check(const QStringList &words)
{
    return withApplication(applicationOf(words.at(0)), [&](Application &application) {
        const QString subject = callOf(words.at(0));
        if (subject == QLatin1String("host") && words.size() == 2)
            return compare(words.at(0), application.hostState(), words.at(1));
        if (subject == QLatin1String("calls") && words.size() == 2)
            return compare(QStringLiteral("number of calls"), QString::number(application.calls().size()), words.at(1));
        if (words.size() == 3)
            return checkCalls(application, words);
        return QStringLiteral("usage: check ") + findCommand(QStringLiteral("check"))->usage;
    });
}

QString CommandInterpreter::checkCalls(const Application &application, const QStringList &words) const
{
    const QStringList known = application.calls().keys() + application.endedCalls().values();
    const QStringList names = matching(known, callOf(words.at(0)));
    QString error = names.isEmpty() ? noCall(words.at(0), application) : QString();
    for (int i = 0; i < names.size() && error.isEmpty(); ++i) {
        const SimulatedCall *call = application.calls().value(names.at(i));
        QString value = QStringLiteral("gone");
        if (call)
            error = readFact(*call, words.at(1), &value);
        if (error.isEmpty())
            error
                = compare(QStringLiteral("%1 %2").arg(application.label(names.at(i)), words.at(1)), value, words.at(2));
    }
    return error;
}

// --- Applications

QString CommandInterpreter::addApplication(const QStringList &words)
{
    QStringList managers;
    const QString error = readManagers(words.mid(1), &managers);
    return error.isEmpty() ? m_simulation.addApplication(words.at(0), managers) : error;
}

QString CommandInterpreter::leave(const QStringList &words) { return m_simulation.leave(words.at(0)); }

QString CommandInterpreter::raw(const QStringList &words)
{
    if (words.size() == 1)
        return m_simulation.addRawApplication(words.at(0));
    RawApplication *application = m_simulation.rawApplication(words.at(0));
    if (!application)
        return QStringLiteral("there is no raw application \"%1\"; \"raw %1\" makes one").arg(words.at(0));
    RawCommands::execute(words.mid(1), *application);
    return {};
}

// --- The rest

QString CommandInterpreter::ask(const QStringList &words)
{
    m_events.add(QStringLiteral("please ") + words.join(QLatin1Char(' ')));
    return {};
}

QString CommandInterpreter::die(const QStringList &)
{
    std::raise(SIGKILL);
    return {};
}

QString CommandInterpreter::showHelp(const QStringList &)
{
    EventLog::print(help());
    return {};
}

QString CommandInterpreter::quit(const QStringList &)
{
    emit quitRequested();
    return {};
}
