// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// One incoming call that the host can answer, reject, hold, send tones to and route the audio of.

#include <RingletClient/callmanager.h>

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QHash>
#include <QtCore/QSocketNotifier>
#include <array>
#include <csignal>
#include <cstdio>
#include <sys/signalfd.h>
#include <unistd.h>
#include <utility>

using Ringlet::AudioRoute;
using Ringlet::Call;
using Ringlet::CallManager;
using Ringlet::CallStatus;

namespace {

void report(const QString &line)
{
    std::puts(qUtf8Printable(line));
    std::fflush(stdout);
}

QString statusText(CallStatus status)
{
    return QStringLiteral("%1 %2").arg(quint32(status)).arg(Ringlet::statusName(status));
}

// Text that came over the bus stays on its line, whatever is in it.
QString quoted(QString text)
{
    static const std::pair<const char *, const char *> escapes[]
        = {{"\\", "\\\\"}, {"\"", "\\\""}, {"\n", "\\n"}, {"\r", "\\r"}, {"\t", "\\t"}};
    for (const auto &escape : escapes)
        text.replace(QLatin1String(escape.first), QLatin1String(escape.second));
    return QLatin1Char('"') + text + QLatin1Char('"');
}

QString routeText(const AudioRoute &route)
{
    return QStringLiteral("muted=%1 input=%2 output=%3")
        .arg(route.microphoneMuted ? "yes" : "no", quoted(route.input), quoted(route.output));
}

QString stateText(const Ringlet::AudioDeviceList &devices)
{
    QString text = QStringLiteral("devices=%1").arg(devices.size());
    for (const Ringlet::AudioDevice &device : devices)
        text += QLatin1Char(' ') + quoted(device.id);
    return text;
}

// Every wish of the host is granted at once. An application would ask its protocol stack first.
void obey(Call *call)
{
    QObject::connect(call, &Call::answerRequested, call, [call] { call->setStatus(CallStatus::Active); });
    QObject::connect(call, &Call::rejectRequested, call, &Call::end);
    QObject::connect(call, &Call::holdRequested, call,
        [call](bool hold) { call->setStatus(hold ? CallStatus::Held : CallStatus::Active); });
}

AudioRoute route(const QVariantList &arguments)
{
    return {arguments.at(0).toBool(), arguments.at(1).toString(), arguments.at(2).toString()};
}

using Describe = QString (*)(const QVariantList &arguments);

const QHash<QString, Describe> commands = {
    {"Accept", [](const QVariantList &) { return QStringLiteral("command accept"); }},
    {"Reject",
        [](const QVariantList &arguments) {
            return QStringLiteral("command reject %1").arg(arguments.at(0).toUInt());
        }},
    {"SetHold",
        [](const QVariantList &arguments) {
            return QStringLiteral("command hold %1").arg(arguments.at(0).toBool() ? "on" : "off");
        }},
    {"SendDTMF",
        [](const QVariantList &arguments) {
            return QStringLiteral("command tones ") + quoted(arguments.at(0).toString());
        }},
    {"UpdateAudioRoute",
        [](const QVariantList &arguments) { return QStringLiteral("audio-route ") + routeText(route(arguments)); }},
    {"UpdateAudioRouteState",
        [](const QVariantList &arguments) {
            return QStringLiteral("audio-state %1 %2")
                .arg(routeText(route(arguments.mid(1))), stateText(arguments.at(0).value<Ringlet::AudioDeviceList>()));
        }},
};

void reportCall(Call *call)
{
    const auto say = [](const QString &event) { report(QStringLiteral("call1 ") + event); };
    QObject::connect(
        call, &Call::announced, call, [=] { say(QStringLiteral("announced ") + statusText(call->status())); });
    QObject::connect(
        call, &Call::shown, call, [=](CallStatus seen) { say(QStringLiteral("shown ") + statusText(seen)); });
    QObject::connect(call, &Call::statusChanged, call,
        [=](CallStatus status) { say(QStringLiteral("status ") + statusText(status)); });
    QObject::connect(call, &Call::statusRepeated, call,
        [=](CallStatus status) { say(QStringLiteral("status %1 again").arg(statusText(status))); });
    QObject::connect(call, &Call::ended, call, [=] { say(QStringLiteral("removed")); });
    QObject::connect(call, &Call::commandReceived, call,
        [=](const QString &method, const QVariantList &arguments) { say(commands.value(method)(arguments)); });
}

void reportHost(CallManager *calls)
{
    QObject::connect(calls, &CallManager::hostAppeared, calls,
        [](const QString &name) { report(QStringLiteral("host appeared ") + name); });
    QObject::connect(calls, &CallManager::hostVanished, calls, [] { report(QStringLiteral("host gone")); });
    QObject::connect(calls, &CallManager::stateChanged, calls, [calls](CallManager::State state) {
        if (state == CallManager::State::Waiting)
            report(QStringLiteral("waiting for host ") + calls->hostName());
        else if (state == CallManager::State::Registered)
            report(QStringLiteral("registered ") + calls->path());
        else if (state == CallManager::State::Refused)
            report(QStringLiteral("refused %1 %2 %3")
                       .arg(calls->path(), calls->errorName(), quoted(calls->errorString())));
    });
}

// Calls `wake` whenever there is something to read.
template <typename Wake>
void watch(int file, QObject *parent, Wake wake)
{
    auto *notifier = new QSocketNotifier(file, QSocketNotifier::Read, parent);
    QObject::connect(notifier, &QSocketNotifier::activated, parent, [=]() mutable { wake(notifier); });
}

void obeyLine(const QByteArray &line, CallManager *calls)
{
    if (line == "hangup") {
        for (Call *call : calls->calls())
            call->end();
    } else if (line == "quit") {
        calls->endCalls();
    } else {
        std::fprintf(
            stderr, "ringlet-example-qt: unknown command \"%s\"; there are hangup and quit\n", line.constData());
    }
}

void obeyStandardInput(CallManager *calls)
{
    watch(STDIN_FILENO, calls, [calls, pending = QByteArray()](QSocketNotifier *notifier) mutable {
        std::array<char, 256> bytes = {};
        const ssize_t size = read(STDIN_FILENO, bytes.data(), bytes.size());
        notifier->setEnabled(size > 0);
        pending.append(bytes.data(), int(qMax(size, ssize_t(0))));
        for (int end = pending.indexOf('\n'); end >= 0; end = pending.indexOf('\n')) {
            obeyLine(pending.left(end), calls);
            pending.remove(0, end + 1);
        }
    });
}

// Blocked before the first thread starts, so that no thread takes them.
int stopSignals()
{
    sigset_t terminating;
    sigemptyset(&terminating);
    sigaddset(&terminating, SIGINT);
    sigaddset(&terminating, SIGTERM);
    sigprocmask(SIG_BLOCK, &terminating, nullptr);
    return signalfd(-1, &terminating, SFD_CLOEXEC);
}

int complain(const QString &text, int exitCode)
{
    std::fprintf(stderr, "ringlet-example-qt: %s\n", qUtf8Printable(text));
    return exitCode;
}

} // namespace

int main(int argc, char *argv[])
{
    const int stop = stopSignals();
    QCoreApplication application(argc, argv);

    const QCommandLineOption host("host", "Bus name of the host.", "NAME", "org.tarnwickle.voicecall");
    const QCommandLineOption name("name", "Name of the caller.", "TEXT");
    const QCommandLineOption address("address", "Address of the caller.", "ADDRESS", "sip:caller@example.org");
    const QCommandLineOption help({"h", "help"}, "Print this and end.");
    QCommandLineParser parser;
    parser.setApplicationDescription("One incoming call for a voice-call host.");
    parser.addOptions({host, name, address, help});
    if (!parser.parse(QCoreApplication::arguments()))
        return complain(parser.errorText(), 2);
    if (!parser.positionalArguments().isEmpty())
        return complain(QStringLiteral("unknown argument \"%1\"").arg(parser.positionalArguments().constFirst()), 2);
    if (parser.isSet(help)) {
        report(parser.helpText());
        return 0;
    }

    const QDBusConnection bus = QDBusConnection::sessionBus();
    CallManager calls(QStringLiteral("/ringlet/example"), parser.value(host), bus);
    if (calls.state() == CallManager::State::Failed)
        return complain(calls.errorString(), bus.isConnected() ? 2 : 3);
    report(QStringLiteral("connected ") + bus.baseService());
    reportHost(&calls);
    QObject::connect(&calls, &CallManager::callAdded, reportCall);
    QObject::connect(&calls, &CallManager::flushed, &application, &QCoreApplication::quit);
    QObject::connect(&calls, &CallManager::stateChanged, &application, [&calls](CallManager::State state) {
        if (state == CallManager::State::Failed)
            QCoreApplication::exit(complain(calls.errorString(), 3));
    });

    Ringlet::CallDescription description;
    description.address = parser.value(address);
    description.remoteName = parser.value(name);
    description.localName = QStringLiteral("Qt example");
    obey(calls.addCall(description));

    obeyStandardInput(&calls);
    watch(stop, &calls, [&calls](QSocketNotifier *notifier) {
        notifier->setEnabled(false);
        calls.endCalls();
    });
    return QCoreApplication::exec();
}
