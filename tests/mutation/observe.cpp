// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// Takes the plug-in through everything that it does, and prints all that can be seen of it: what its connection
// sends, match rules included; each line that it logs, with what a message handler sees of its state at that
// moment; and what it tells the host. Two runs with QT_HASH_SEED=0 print the same, but for the numbers of processes
// and addresses.

#include "logrecorder.h"
#include "plugin/callproviderfactory.h"
#include "privatebus.h"
#include "recordinghost.h"
#include "scriptedapplication.h"
#include "service/callservice.h"
#include "testclock.h"
#include "waitfor.h"

#include <QtCore/QTimerEvent>
#include <fcntl.h>
#include <iostream>
#include <unistd.h>

namespace {

const QString first = "/m/c1";
const QString allInterfaces = "{'zelkovar.Call.Call1': {%1}, 'zelkovar.Call.DTMF1': {}, "
                              "'zelkovar.Call.AudioControl1': {}}";
const QString properties = "'Status': <uint32 %1>, 'Incoming': <true>, 'Holdable': <%2>, 'RemoteName': <'Ada'>, "
                           "'Uri': <'sip:ada@example.org'>";

// All that can be asked from inside of a message handler. Asking logs, too, which is not looked at again.
class Onlooker
{
public:
    explicit Onlooker(RecordingHost &host) : m_host(host)
    {
        s_onlooker = this;
        qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &context, const QString &text) {
            s_onlooker->see(type, context.category, text);
        });
    }
    ~Onlooker() { qInstallMessageHandler(nullptr); }

    void print(const QString &line) { std::cout << line.toStdString() << std::endl; }

private:
    void see(QtMsgType type, const char *category, const QString &text)
    {
        // The bus layer's own thread sees nothing that is the main thread's.
        if (m_isLooking || QThread::currentThread() != qApp->thread())
            return;
        m_isLooking = true;
        printNews();
        print(QString("%1 %2: %3").arg(int(type)).arg(category, text));
        print(state().join(' '));
        m_isLooking = false;
    }

    void printNews()
    {
        for (; m_told < m_host.events.size(); ++m_told)
            print("    host: " + m_host.events.at(m_told));
    }

    QStringList state() const
    {
        QStringList state("   ");
        auto *service
            = qobject_cast<CallService *>(QDBusConnection::sessionBus().objectRegisteredAt("/zelkovar/call/service"));
        QStringList managers;
        if (service) {
            for (const DBusCallManager &manager : service->ListCallManagers())
                managers += manager.toString();
        }
        managers.sort();
        state += managers;
        for (const AbstractVoiceCallProvider *provider : m_host.providers) {
            state += provider->errorString();
            for (const AbstractVoiceCallHandler *call : provider->voiceCalls())
                state += describe(call);
        }
        return state;
    }

    static QString describe(const AbstractVoiceCallHandler *call)
    {
        return QString("%1 %2 %3 %4 %5 %6 %7 %8")
            .arg(call->handlerId(), call->lineId(), call->uri())
            .arg(int(call->status()))
            .arg(call->duration())
            .arg(call->isRemoteHeld())
            .arg(call->isIncoming())
            .arg(call->supportsDtmf());
    }

    static Onlooker *s_onlooker;
    RecordingHost &m_host;
    int m_told = 0;
    bool m_isLooking = false;
};

Onlooker *Onlooker::s_onlooker = nullptr;

class Tour
{
public:
    explicit Tour(Onlooker &onlooker, RecordingHost &host)
        : onlooker(onlooker),
          host(host),
          factory(new CallProviderFactory)
    {
    }

    void walk()
    {
        begin();
        values();
        statuses();
        commands();
        audio();
        durations();
        reports();
        snapshots();
        end();
    }

private:
    void step(const QString &name)
    {
        application.settle();
        onlooker.print("== " + name);
    }

    void begin()
    {
        step("begin");
        factory->initialize();
        early.registerCallManager("/early");
        onlooker.print(factory->pluginId());
        factory->configure(nullptr);
        factory->configure(&host);
        factory->configure(&host);
        factory->start();
        factory->suspend();
        factory->resume();
        application.registerCallManager("/m");
        application.registerCallManager("/m");
        application.registerCallManager("/n");
        application.registerCallManager("/org/freedesktop/DBus/Local");
        onlooker.print(application.call(ScriptedApplication::thisProcess(), "/zelkovar/call/service",
            "org.freedesktop.DBus.Introspectable", "Introspect"));
        onlooker.print(application.call(ScriptedApplication::thisProcess(), "/zelkovar/call/service",
            "zelkovar.Call.ServiceManager1", "ListCallManagers"));
    }

    void announce(const QString &path, uint status, bool holdable)
    {
        application.announce("/m", path, allInterfaces.arg(properties.arg(status).arg(holdable ? "true" : "false")));
        application.settle();
    }

    void values()
    {
        step("values");
        const int descriptor = open("/dev/null", O_RDONLY | O_CLOEXEC);
        application.announce("/m", "/m/v",
            "{'zelkovar.Call.Call1': {'Status': <'2'>, 'Incoming': <uint32 1>, "
            "'h': <handle 0>, 'ah': <[handle 0]>, 'vh': <<handle 0>>, 'm': <{'a': <(1, [<handle 0>])>}>, "
            "'g': <signature ''>, 'vg': <<signature ''>>, 'ag': <[signature '']>, 'gg': <signature 'u'>, "
            "'s': <{'a': (1, 'b', [<2>, <{3: <4>}>])}>, 'e': <@a{sv} {}>}, 'test.Other': {'x': <[handle 0]>}}",
            {descriptor});
        application.settle();
        close(descriptor);
        application.withdraw("/m", "/m/v", {"zelkovar.Call.Call1"});
    }

    void statuses()
    {
        step("statuses");
        announce(first, 3, true);
        announce("/m/c2", 5, false);
        for (const uint status : {0U, 1U, 2U, 3U, 4U, 5U, 6U, 7U, 8U, 15U, 16U, 0x80000000U, 5U, 5U}) {
            application.changeStatus(first, status);
            application.settle();
        }
    }

    void commands()
    {
        step("commands");
        for (AbstractVoiceCallHandler *call : host.calls) {
            call->answer();
            for (const uint status : {5U, 7U, 3U}) {
                application.changeStatus(first, status);
                application.changeStatus("/m/c2", status);
                application.settle();
                call->hold(true);
                call->hold(false);
            }
            call->sendDtmf("12#");
            call->deflect("x");
            call->merge("h1");
            call->split();
            call->hangup();
            ask(call);
            application.settle();
        }
        for (AbstractVoiceCallProvider *provider : host.providers) {
            provider->dial("1");
            provider->dial("2");
            onlooker.print(provider->providerId() + provider->providerType() + provider->errorString());
        }
    }

    void ask(const AbstractVoiceCallHandler *call)
    {
        onlooker.print(QString("%1 %2 %3 %4 %5 %6 %7 %8")
                           .arg(call->isMultiparty())
                           .arg(call->isEmergency())
                           .arg(call->isForwarded())
                           .arg(call->holdable())
                           .arg(call->supportsMultiparty())
                           .arg(call->startedAt().isNull())
                           .arg(call->childCalls().size())
                           .arg(call->parentHandlerId())
            + call->appId() + call->provider()->providerId());
    }

    void audio()
    {
        step("audio");
        AudioDevice device;
        device.id = "mic";
        device.isInput = true;
        device.name = "Microphone";
        host.audio.devices = {device};
        host.audio.inputDeviceId = "mic";
        host.audio.outputDeviceId = "ear";
        emit host.devicesChanged();
        host.audio.microphoneMuted = true;
        emit host.microphoneMutedChanged();
        emit host.selectedInputDeviceChanged();
        emit host.selectedOutputDeviceChanged();
        for (const uint status : {0U, 2U, 3U, 5U, 7U}) {
            application.changeStatus(first, status);
            application.signal(first, "zelkovar.Call.AudioControl1", "RequestMute", "true");
            application.signal(first, "zelkovar.Call.AudioControl1", "RequestAudioRoute", "'in', 'out'");
            application.settle();
        }
    }

    void durations()
    {
        step("durations");
        application.changeStatus(first, 5);
        application.settle();
        for (AbstractVoiceCallHandler *call : host.calls) {
            for (const int id : {0, -1}) {
                QTimerEvent event(id);
                QCoreApplication::sendEvent(call, &event);
            }
        }
        // Far enough for a tick whatever the phase that the coarse timer runs in.
        for (const int milliseconds : {5000, 7300, 2800}) {
            clock.advance(milliseconds);
            application.settle();
        }
        application.changeStatus(first, 3);
    }

    void reports()
    {
        step("reports");
        announce(first, 5, false);
        application.announce("/m", "/m/later", "{'zelkovar.Call.DTMF1': {}}");
        application.announce("/m", "/m/later", "{'zelkovar.Call.Call1': {}}");
        application.announce("/m", "/m/later", "{'zelkovar.Call.AudioControl1': {}}");
        application.announce("/m", "/m/later", "{'zelkovar.Call.DTMF1': {}}");
        application.withdraw("/m", "/m/unknown", {"zelkovar.Call.Call1"});
        application.withdraw("/m", "/m/later", {"zelkovar.Call.DTMF1", "test.Other"});
        application.withdraw("/m", "/m/later", {});
        application.withdraw("/m", "/m/c2", {"zelkovar.Call.DTMF1", "zelkovar.Call.Call1"});
        early.announce("/m", "/m/stranger", "{'zelkovar.Call.Call1': {}}");
        early.settle();
    }

    void snapshots()
    {
        step("snapshots");
        const QString call = "{'zelkovar.Call.Call1': {'Status': <uint32 3>}}";
        late.setObjects("{'/l/b': " + call + ", '/l/a': " + call + ", '/l/c': {'test.Other': {}}}");
        late.registerCallManager("/l");
        late.settle();
        late.refuseSnapshot("test.Error", "{objectpath '/k/a': " + call + "}");
        late.registerCallManager("/k");
        late.settle();
        late.setSnapshotBody("[(1, 2)]");
        late.registerCallManager("/j");
        late.settle();
        late.leave();
        waitFor([&] { return host.providers.size() == 3; });
    }

    void end()
    {
        step("end");
        application.leave();
        waitFor([&] { return host.providers.isEmpty(); });
        early.settle();
        factory->finalize();
        onlooker.print("== destroyed");
        factory.reset();
        early.settle();
    }

    TestClock clock;
    Onlooker &onlooker;
    RecordingHost &host;
    ScriptedApplication early;
    ScriptedApplication application;
    ScriptedApplication late;
    QScopedPointer<CallProviderFactory> factory;
};

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication program(argc, argv);
    PrivateBus bus;
    bus.useAsSessionBus();
    QLoggingCategory::setFilterRules("voicecall=true\ndefault=true");
    ScriptedApplication monitor;
    const QString plugin = ScriptedApplication::thisProcess();
    monitor.becomeMonitor();
    {
        RecordingHost host;
        Onlooker onlooker(host);
        Tour(onlooker, host).walk();
    }
    for (const QString &message : monitor.traffic()) {
        if (message.startsWith(plugin + ' '))
            std::cout << message.toStdString() << '\n';
    }
    return 0;
}
