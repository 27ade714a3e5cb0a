// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "commandinterpreter.h"

#include "callstatus.h"
#include "words.h"

#include <QtCore/QRegularExpression>

static QString yesNo(bool yes) { return yes ? QStringLiteral("yes") : QStringLiteral("no"); }

// The truth of `word`, which is `yes` or `no`; what is wrong, empty if nothing.
static QString readChoice(const QString &word, const QString &yes, const QString &no, bool *truth)
{
    *truth = word == yes;
    return word == yes || word == no ? QString() : QStringLiteral("\"%1\" is neither %2 nor %3").arg(word, yes, no);
}

static QString readOnOff(const QString &word, bool *on)
{
    return readChoice(word, QStringLiteral("on"), QStringLiteral("off"), on);
}

// --- The options of a new call

using SetOption = QString (*)(CallDescription *description, const QString &value);

template <bool CallDescription::*member>
static QString setFlag(CallDescription *description, const QString &value)
{
    return readChoice(value, QStringLiteral("yes"), QStringLiteral("no"), &(description->*member));
}

template <QString CallDescription::*member>
static QString setText(CallDescription *description, const QString &value)
{
    description->*member = value;
    return {};
}

static const struct
{
    const char *key;
    SetOption set;
} callOptions[] = {
    {"name", setText<&CallDescription::remoteName>},
    {"tones", setFlag<&CallDescription::tones>},
    {"hold", setFlag<&CallDescription::holdable>},
    {"audio", setFlag<&CallDescription::audio>},
    {"manager", setText<&CallDescription::manager>},
};

static QString readCallOption(const QString &word, CallDescription *description)
{
    for (const auto &option : callOptions) {
        const QString start = QLatin1String(option.key) + QLatin1Char('=');
        if (!word.startsWith(start))
            continue;
        const QString error = option.set(description, word.mid(start.size()));
        return error.isEmpty() ? error : QStringLiteral("%1: %2").arg(QLatin1String(option.key), error);
    }
    return QStringLiteral("\"%1\" is no option of a call; there are name=, tones=, hold=, audio= and manager=")
        .arg(word);
}

// The name becomes an element of an object path; and `check` has two subjects that are no calls.
static QString nameFault(const QString &name)
{
    static const QRegularExpression element(QStringLiteral("^[A-Za-z0-9_]+$"));
    if (name == QLatin1String("host") || name == QLatin1String("calls"))
        return QStringLiteral("a call cannot be named \"%1\"").arg(name);
    if (!element.match(name).hasMatch())
        return QStringLiteral("a call cannot be named \"%1\": letters, digits and _ only").arg(name);
    return {};
}

// --- What `check` can look at

using ReadCall = QString (*)(const Call &call);

static const struct
{
    const char *name;
    ReadCall read;
} callFacts[] = {
    {"status", [](const Call &call) { return CallStatus::name(call.status()); }},
    {"shown", [](const Call &call) { return yesNo(call.isShown()); }},
    {"tones", [](const Call &call) { return call.tones(); }},
    {"muted",
        [](const Call &call) {
            return call.audioRoute() ? yesNo(call.audioRoute()->muted) : QStringLiteral("unknown");
        }},
    {"input",
        [](const Call &call) { return call.audioRoute() ? call.audioRoute()->input : QStringLiteral("unknown"); }},
    {"output",
        [](const Call &call) { return call.audioRoute() ? call.audioRoute()->output : QStringLiteral("unknown"); }},
    {"devices", [](const Call &call) { return QString::number(call.audioDevices().size()); }},
};

static QString readFact(const Call &call, const QString &fact, QString *value)
{
    QStringList names;
    for (const auto &known : callFacts) {
        names.append(QLatin1String(known.name));
        if (fact == names.constLast()) {
            *value = known.read(call);
            return {};
        }
    }
    return QStringLiteral("a call has no \"%1\"; it has %2").arg(fact, names.join(QStringLiteral(", ")));
}

static QString compare(const QString &what, const QString &is, const QString &expected)
{
    if (is == expected)
        return {};
    return QStringLiteral("%1 is %2, not %3").arg(what, quoted(is), quoted(expected));
}

// --- Outcomes

static QString outcomeText(Call::Outcome outcome, const Call &call, const QString &what)
{
    switch (outcome) {
    case Call::Outcome::Unchanged:
        EventLog::print(QStringLiteral("%1 unchanged").arg(call.name()));
        return {};
    case Call::Outcome::Impossible:
        return QStringLiteral("%1 cannot %2: it is %3, and was made with %4")
            .arg(call.name(), what, CallStatus::name(call.status()),
                QStringLiteral("hold=%1 audio=%2")
                    .arg(yesNo(call.description().holdable), yesNo(call.description().audio)));
    case Call::Outcome::TooEarly:
        return QStringLiteral("%1 cannot %2 yet: the host has sent it no UpdateAudioRouteState").arg(call.name(), what);
    case Call::Outcome::Done:
        break;
    }
    return {};
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
};

const QList<CommandInterpreter::Command> &CommandInterpreter::commands()
{
    static const QList<Command> commands = {
        {QStringLiteral("incoming"), QStringLiteral("CALL ADDRESS [OPTION...]"),
            QStringLiteral("a call comes in; options: name=TEXT tones=no hold=no audio=no manager=PATH"), 2, 7,
            &CommandInterpreter::addIncoming},
        {QStringLiteral("outgoing"), QStringLiteral("CALL ADDRESS [OPTION...]"),
            QStringLiteral("a call goes out, dialing; the same options"), 2, 7, &CommandInterpreter::addOutgoing},
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

CommandInterpreter::CommandInterpreter(Application &application, QObject *parent)
    : QObject(parent),
      m_application(application)
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
    return {};
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
    for (const Command &command : commands())
        lines.append(QStringLiteral("  %1\n        %2").arg(usageOf(command.name, command.usage), command.help));
    return lines.join(QLatin1Char('\n'));
}

QString CommandInterpreter::withCall(const QString &name, const std::function<QString(Call &)> &action) const
{
    if (Call *call = m_application.findCall(name))
        return action(*call);
    QStringList names;
    for (const Call *call : m_application.calls())
        names.append(call->name());
    return QStringLiteral("there is no call \"%1\"; calls: %2")
        .arg(name, names.isEmpty() ? QStringLiteral("none") : names.join(QStringLiteral(", ")));
}

QString CommandInterpreter::addIncoming(const QStringList &words) { return addCall(words, true); }

QString CommandInterpreter::addOutgoing(const QStringList &words) { return addCall(words, false); }

QString CommandInterpreter::addCall(const QStringList &words, bool incoming)
{
    CallDescription description;
    description.name = words.at(0);
    description.address = words.at(1);
    description.incoming = incoming;
    QString error = nameFault(description.name);
    for (int i = 2; i < words.size() && error.isEmpty(); ++i)
        error = readCallOption(words.at(i), &description);
    if (!error.isEmpty())
        return error;
    if (m_application.findCall(description.name))
        return QStringLiteral("there is a call \"%1\" already").arg(description.name);
    if (!m_application.addCall(description))
        return QStringLiteral("there is no call manager \"%1\"; there is %2")
            .arg(description.manager, m_application.managerPaths().join(QStringLiteral(", ")));
    return {};
}

QString CommandInterpreter::answer(const QStringList &words)
{
    return withCall(
        words.at(0), [](Call &call) { return outcomeText(call.answer(), call, QStringLiteral("be answered")); });
}

QString CommandInterpreter::hangUp(const QStringList &words)
{
    return withCall(words.at(0), [](Call &call) {
        call.end();
        return QString();
    });
}

QString CommandInterpreter::hold(const QStringList &words)
{
    return withCall(words.at(0), [&](Call &call) {
        bool on = false;
        const QString error = readOnOff(words.at(1), &on);
        return error.isEmpty() ? outcomeText(call.setHold(on), call, QStringLiteral("change hold")) : error;
    });
}

QString CommandInterpreter::mute(const QStringList &words)
{
    return withCall(words.at(0), [&](Call &call) {
        bool on = false;
        const QString error = readOnOff(words.at(1), &on);
        return error.isEmpty() ? outcomeText(call.askForMute(on), call, QStringLiteral("ask for mute")) : error;
    });
}

QString CommandInterpreter::route(const QStringList &words)
{
    return withCall(words.at(0), [&](Call &call) {
        return outcomeText(call.askForRoute(words.at(1), words.at(2)), call, QStringLiteral("ask for a route"));
    });
}

QString CommandInterpreter::status(const QStringList &words)
{
    return withCall(words.at(0), [&](Call &call) {
        bool isNumber = false;
        const uint status = words.at(1).toUInt(&isNumber);
        if (!isNumber || status >= CallStatus::Count)
            return QStringLiteral("\"%1\" is no status; it is a number from 0 to 7").arg(words.at(1));
        return outcomeText(call.setStatus(status), call, QString());
    });
}

QString CommandInterpreter::listCalls(const QStringList &)
{
    for (const Call *call : m_application.calls())
        EventLog::print(QStringLiteral("call %1 status %2 shown %3 %4 %5")
                            .arg(call->name(), CallStatus::text(call->status()), yesNo(call->isShown()),
                                quoted(call->description().address), quoted(call->description().remoteName)));
    EventLog::print(QStringLiteral("calls %1").arg(m_application.calls().size()));
    return {};
}

static QString checkHost(const HostLink &host, const QString &state)
{
    QString is = QStringLiteral("absent");
    if (host.isPresent())
        is = host.isRegistered() ? QStringLiteral("registered") : QStringLiteral("present");
    return compare(QStringLiteral("host"), is, state);
}

QString CommandInterpreter::check(const QStringList &words)
{
    const QString subject = words.at(0);
    if (subject == QLatin1String("host") && words.size() == 2)
        return checkHost(m_application.host(), words.at(1));
    if (subject == QLatin1String("calls") && words.size() == 2)
        return compare(QStringLiteral("number of calls"), QString::number(m_application.calls().size()), words.at(1));
    if (words.size() != 3)
        return QStringLiteral("usage: check ") + findCommand(QStringLiteral("check"))->usage;

    const QString what = subject + QLatin1Char(' ') + words.at(1);
    if (!m_application.findCall(subject) && m_application.hasEnded(subject))
        return compare(what, QStringLiteral("gone"), words.at(2));
    return withCall(subject, [&](Call &call) {
        QString value;
        const QString error = readFact(call, words.at(1), &value);
        return error.isEmpty() ? compare(what, value, words.at(2)) : error;
    });
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
