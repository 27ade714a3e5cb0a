// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// One incoming call: ringlet-example-qt [ADDRESS [NAME [BUS-NAME-OF-THE-HOST]]]. Ctrl-C is the far end hanging up.

#include <RingletClient/callmanager.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QSocketNotifier>
#include <QtCore/QTextStream>
#include <csignal>
#include <sys/signalfd.h>

using namespace Ringlet;

// Every wish of the host is granted at once. An application would ask its protocol stack first.
static void obey(Call *call)
{
    QObject::connect(call, &Call::answerRequested, call, [call] { call->setStatus(CallStatus::Active); });
    QObject::connect(call, &Call::rejectRequested, call, &Call::end);
    QObject::connect(call, &Call::holdRequested, call,
        [call](bool hold) { call->setStatus(hold ? CallStatus::Held : CallStatus::Active); });
}

static void printCommand(const QString &method, const QVariantList &arguments)
{
    QTextStream out(stdout);
    out << method;
    for (const QVariant &argument : arguments) {
        out << ' ' << argument.toString();
        for (const AudioDevice &device : argument.value<AudioDeviceList>())
            out << device.id << ' ';
    }
    out << '\n';
}

// Ctrl-C as something that an event loop can wait for. Before the first thread starts, so that none takes it.
static int interruptFile()
{
    sigset_t interrupt;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    sigprocmask(SIG_BLOCK, &interrupt, nullptr);
    return signalfd(-1, &interrupt, SFD_CLOEXEC);
}

int main(int argc, char *argv[])
{
    const int interruptible = interruptFile();
    const QCoreApplication application(argc, argv);
    const QSocketNotifier interrupt(interruptible, QSocketNotifier::Read);
    const QStringList arguments = QCoreApplication::arguments();

    CallManager calls(
        "/ringlet/example", arguments.value(3, "org.tarnwickle.voicecall"), QDBusConnection::sessionBus());
    CallDescription description;
    description.address = arguments.value(1, "sip:caller@example.org");
    description.remoteName = arguments.value(2, "Caller");
    Call *call = calls.addCall(description);
    obey(call);
    QObject::connect(call, &Call::commandReceived, printCommand);

    QObject::connect(&interrupt, &QSocketNotifier::activated, &calls, &CallManager::endCalls);
    QObject::connect(&calls, &CallManager::flushed, &application, &QCoreApplication::quit);
    const auto giveUp = [&calls](CallManager::State state) {
        if (state == CallManager::State::Failed) {
            qCritical("%s", qUtf8Printable(calls.errorString()));
            QCoreApplication::exit(1);
        }
    };
    QObject::connect(&calls, &CallManager::stateChanged, &application, giveUp);
    return calls.state() == CallManager::State::Failed ? 1 : QCoreApplication::exec();
}
