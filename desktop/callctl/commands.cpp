// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "commands.h"

#include "audioproxy.h"
#include "callchoice.h"
#include "callproxy.h"
#include "commandline.h"
#include "condition.h"
#include "failure.h"
#include "hostaccess.h"
#include "hostmonitor.h"
#include "json.h"
#include "managerproxy.h"
#include "output.h"
#include "views.h"
#include "watch.h"

#include <algorithm>
#include <memory>

static void print(const QStringList &lines) { Output::print(lines.join(QLatin1Char('\n')).toUtf8() + '\n'); }

// --- Lists

void Commands::calls(const CommandLine &line)
{
    const QList<CallInfo> calls = HostAccess::state().calls.values();
    print(line.has("--json") ? QStringList(Json::calls(calls)) : Views::calls(calls));
}

void Commands::providers(const CommandLine &line)
{
    const ProviderList providers = HostAccess::state().providers;
    print(line.has("--json") ? QStringList(Json::providers(providers)) : Views::providers(providers));
}

void Commands::devices(const CommandLine &line)
{
    const HostState state = HostAccess::state();
    print(line.has("--json") ? QStringList(Json::devices(state)) : Views::devices(state));
}

// --- Calls

static std::unique_ptr<CallProxy> proxyOf(const CallPath &path)
{
    return std::make_unique<CallProxy>(HostMonitor::serviceName(), path.path, HostAccess::bus());
}

// The call that is named, where there is a name before `further` arguments, else the only one that makes sense.
static CallPath chosen(const HostState &state, const CommandLine &line, Deed deed, int further)
{
    return line.arguments.size() > further ? CallChoice::named(state, line.arguments.constFirst())
                                           : CallChoice::only(state, deed);
}

static std::unique_ptr<CallProxy> checkedCall(const CommandLine &line, Deed deed, int further)
{
    const HostState state = HostAccess::state();
    const CallPath path = chosen(state, line, deed, further);
    const QString objection = CallChoice::objection(state.calls.value(path), deed);
    if (objection.isEmpty() || line.has("--force"))
        return proxyOf(path);
    const bool canBeForced = deed == Deed::Hold || deed == Deed::TakeBack;
    throw Failure(
        ExitCode::NotDone, canBeForced ? objection + QStringLiteral("; --force asks for it nevertheless") : objection);
}

static bool onOff(const QString &word)
{
    if (word != QLatin1String("on") && word != QLatin1String("off"))
        throw Failure(ExitCode::WrongCommandLine, QStringLiteral("'on' or 'off' is needed, not '%1'").arg(word));
    return word == QLatin1String("on");
}

void Commands::answer(const CommandLine &line) { HostAccess::waitFor(checkedCall(line, Deed::Answer, 0)->Answer()); }

static void hangUpAll()
{
    const HostState state = HostAccess::state();
    if (state.calls.isEmpty())
        throw Failure(ExitCode::NoSuchCall, QStringLiteral("there is no call"));
    for (auto call = state.calls.cbegin(); call != state.calls.cend(); ++call) {
        if (CallChoice::objection(*call, Deed::HangUp).isEmpty())
            HostAccess::waitFor(proxyOf(call.key())->Hangup());
    }
}

void Commands::hangup(const CommandLine &line)
{
    if (!line.has("--all"))
        return HostAccess::waitFor(checkedCall(line, Deed::HangUp, 0)->Hangup());
    if (!line.arguments.isEmpty())
        throw Failure(ExitCode::WrongCommandLine, QStringLiteral("either a call or --all, not both"));
    hangUpAll();
}

void Commands::hold(const CommandLine &line)
{
    const bool on = onOff(line.arguments.constLast());
    HostAccess::waitFor(checkedCall(line, on ? Deed::Hold : Deed::TakeBack, 1)->Hold(on));
}

// The host answers before the application has done it.
static const int patienceForHoldSeconds = 5;

static void waitUntilHeld(const CallInfo &call)
{
    try {
        Condition(QStringLiteral("held"), call.id()).wait(patienceForHoldSeconds);
    } catch (const Failure &failure) {
        throw Failure(failure.code(),
            QStringLiteral("%1 was not held, so the other call is not taken back: %2")
                .arg(Views::brief(call), failure.reason()));
    }
}

void Commands::swap(const CommandLine &line)
{
    const HostState state = HostAccess::state();
    const CallPath held = chosen(state, line, Deed::TakeBack, 0);
    CallChoice::check(state.calls.value(held), Deed::TakeBack);
    const CallPath active = CallChoice::only(state, Deed::Hold);
    CallChoice::check(state.calls.value(active), Deed::Hold);
    HostAccess::waitFor(proxyOf(active)->Hold(true));
    waitUntilHeld(state.calls.value(active));
    HostAccess::waitFor(proxyOf(held)->Hold(false));
}

static void checkTones(const QString &tones)
{
    const auto isTone = [](QChar unit) { return QStringLiteral("0123456789*#ABCDabcd").contains(unit); };
    const auto wrong = std::find_if_not(tones.cbegin(), tones.cend(), isTone);
    if (wrong != tones.cend() || tones.isEmpty()) {
        throw Failure(ExitCode::WrongCommandLine,
            QStringLiteral("'%1' is not made of tones, which are 0-9 * # and A-D").arg(tones));
    }
}

void Commands::dtmf(const CommandLine &line)
{
    checkTones(line.arguments.constLast());
    HostAccess::waitFor(checkedCall(line, Deed::SendTones, 1)->SendDtmf(line.arguments.constLast()));
}

void Commands::dial(const CommandLine &line)
{
    ManagerProxy manager(HostMonitor::serviceName(), HostMonitor::rootPath(), HostAccess::bus());
    const QString refusal
        = QStringLiteral("provider '%1' refuses to dial '%2'").arg(line.arguments.at(0), line.arguments.at(1));
    HostAccess::waitFor(manager.Dial(line.arguments.at(0), line.arguments.at(1)), refusal);
}

// --- Audio

static std::unique_ptr<AudioProxy> audioProxy()
{
    return std::make_unique<AudioProxy>(HostMonitor::serviceName(), HostMonitor::rootPath(), HostAccess::bus());
}

void Commands::mute(const CommandLine &line)
{
    const QString word = line.arguments.constFirst();
    const bool isToggle = word == QLatin1String("toggle");
    if (!isToggle && word != QLatin1String("on") && word != QLatin1String("off")) {
        throw Failure(
            ExitCode::WrongCommandLine, QStringLiteral("'on', 'off' or 'toggle' is needed, not '%1'").arg(word));
    }
    const bool muted = isToggle ? !HostAccess::state().microphoneMuted : word == QLatin1String("on");
    HostAccess::waitFor(audioProxy()->SetMicrophoneMuted(muted));
}

void Commands::input(const CommandLine &line)
{
    HostAccess::waitFor(audioProxy()->SelectInputDevice(line.arguments.constFirst()));
}

void Commands::output(const CommandLine &line)
{
    HostAccess::waitFor(audioProxy()->SelectOutputDevice(line.arguments.constFirst()));
}

// --- Over time

void Commands::wait(const CommandLine &line)
{
    const QString id = Condition(line.arguments.at(0), line.arguments.value(1)).wait(line.timeout);
    if (!id.isEmpty())
        print({id});
}

void Commands::watch(const CommandLine &) { Watch(HostAccess::bus()).run(); }
