// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "callfixture.h"
#include "calls/callhandler.h"
#include "goldenfile.h"
#include "logrecorder.h"
#include "objectwatch.h"

#include <QtCore/QAbstractEventDispatcher>
#include <QtCore/QLoggingCategory>
#include <QtCore/QPointer>
#include <QtCore/QRegularExpression>
#include <QtCore/QTimerEvent>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <functional>

static const QString tracePrefix = "info voicecall: ";

/**
 * Everything that is logged, operation by operation, to be compared with a file: trace lines as "SIGNATURE OBJECT",
 * others as LogRecorder has them. Signatures are freed of what differs between compilers, objects and applications
 * have names.
 */
class LogTest : public CallFixture
{
protected:
    /** Does `run`, and writes down under `title` all that was logged meanwhile. */
    void during(const QString &title, const std::function<void()> &run)
    {
        QStringList entries;
        {
            const LogRecorder log;
            run();
            entries = log.entries();
        }
        written += title + '\n';
        for (const QString &entry : qAsConst(entries))
            written += "    " + plain(entry) + '\n';
    }

    /** From now on the object of this address has this name. */
    template <typename Object>
    Object *name(Object *object, const QString &name)
    {
        names.insert(QString::asprintf("%p", static_cast<const void *>(object)), name);
        return object;
    }

    void expectWritten(const char *fileName) const
    {
        EXPECT_EQ(written.toStdString(), goldenText(std::string(GOLDEN "/") + fileName));
    }

private:
    QString plain(QString entry)
    {
        static const QRegularExpression format("^info voicecall: (?:virtual )?(.*):([1-9][0-9]*) (0x[0-9a-f]+)$");
        entry.replace(" *", "*").replace(" &", "&");
        const QRegularExpressionMatch match = format.match(entry);
        if (!match.hasMatch())
            return entry.remove("virtual ")
                .replace(QRegularExpression(":1\\.[0-9]+@"), "NAME@")
                .replace(QRegularExpression("pid [0-9]+"), "pid N");
        const QString signature = match.captured(1);
        expectLineOfItsOwn(signature, match.captured(2).toInt());
        return signature + ' ' + names.value(match.captured(3), "unnamed");
    }

    /** Different operations of one source file stand on different lines. */
    void expectLineOfItsOwn(const QString &signature, int line)
    {
        static const QRegularExpression owner("(\\w+)::(~?\\w+)\\(");
        const QRegularExpressionMatch match = owner.match(signature);
        const bool isAudio = match.captured(2).contains("Audio") || match.captured(2).contains("Mute");
        QString &known = lines[{isAudio ? "audio" : match.captured(1), line}];
        EXPECT_TRUE(known.isEmpty() || known == signature) << signature.toStdString() << " at " << line;
        known = signature;
    }

    QString written;
    QHash<QString, QString> names;
    QMap<QPair<QString, int>, QString> lines;
};

// --- Trace lines

TEST_F(LogTest, OperationsOfThePluginObject)
{
    CallProviderFactory *other = nullptr;
    const DBusCallObject call(":1.1", QDBusObjectPath("/x"));
    during("made", [&] { other = name(new CallProviderFactory, "plugin"); });
    during("pluginId", [&] { other->pluginId(); });
    during("initialize", [&] { other->initialize(); });
    during("call manager added before it is configured",
        [&] { QMetaObject::invokeMethod(other, "onCallManagerAdded", Q_ARG(DBusCallManager, call), Q_ARG(pid_t, 1)); });
    during("configure", [&] { other->configure(&host); });
    during("configure again", [&] { other->configure(&host); });
    during("start", [&] { other->start(); });
    during("suspend", [&] { other->suspend(); });
    during("resume", [&] { other->resume(); });
    during("finalize", [&] { other->finalize(); });
    during("unknown call manager removed",
        [&] { QMetaObject::invokeMethod(other, "onCallManagerRemoved", Q_ARG(DBusCallManager, call)); });
    during("interfaces added", [&] {
        QMetaObject::invokeMethod(
            other, "onInterfacesAdded", Q_ARG(DBusCallObject, call), Q_ARG(QVariantMapMap, QVariantMapMap()));
    });
    during("interfaces removed", [&] {
        QMetaObject::invokeMethod(
            other, "onInterfacesRemoved", Q_ARG(DBusCallObject, call), Q_ARG(QStringList, QStringList()));
    });
    during("destroyed", [&] { delete other; });
    name(&factory, "plugin");
    during("known call manager added", [&] {
        const DBusCallManager known(application.name(), QDBusObjectPath(managerPath));
        QMetaObject::invokeMethod(&factory, "onCallManagerAdded", Q_ARG(DBusCallManager, known), Q_ARG(pid_t, 1));
    });
    expectWritten("plugin.log");
}

TEST_F(LogTest, OperationsOfAProvider)
{
    const QDBusObjectPath path("/o/c1");
    const DBusCallManager callManager(application.name(), QDBusObjectPath("/o"));
    CallProvider *other = nullptr;
    during("made", [&] { other = name(new CallProvider(callManager, QString(), &host, nullptr), "provider"); });
    during("providerId", [&] { other->providerId(); });
    during("providerType", [&] { other->providerType(); });
    during("voiceCalls", [&] { other->voiceCalls(); });
    during("errorString", [&] { other->errorString(); });
    during("appId", [&] { other->appId(); });
    during("manager", [&] { other->manager(); });
    during("dial", [&] { other->dial("1"); });
    during("an object that is no call is added", [&] {
        other->onInterfacesAdded(application.name(), QDBusObjectPath("/o/x"), {{tones, {}}});
    });
    during("an unknown object is removed",
        [&] { other->onInterfacesRemoved(application.name(), QDBusObjectPath("/o/x"), {callInterfaceName}); });
    during("a call is added", [&] {
        other->onInterfacesAdded(application.name(), path, {{callInterfaceName, {}}});
        name(other->findChild<CallHandler *>(), "call");
    });
    during("it is reported again", [&] {
        other->onInterfacesAdded(application.name(), path, {{callInterfaceName, {}}, {tones, {}}});
    });
    during("it loses its tones", [&] { other->onInterfacesRemoved(application.name(), path, {tones}); });
    during("it is removed", [&] { other->onInterfacesRemoved(application.name(), path, {callInterfaceName}); });
    during("remove", [&] { other->remove(); });
    during("destroyed", [&] { delete other; });
    expectWritten("provider.log");
}

TEST_F(LogTest, OperationsOfAHandler)
{
    name(provider, "provider");
    const DBusCallObject object(application.name(), QDBusObjectPath("/o/c1"));
    CallHandler *call = nullptr;
    const auto timerEvent = [&](int id) {
        QTimerEvent event(id);
        QCoreApplication::sendEvent(call, &event);
    };
    const auto status = [&](uint number) { QMetaObject::invokeMethod(call, "onStatusChanged", Q_ARG(uint, number)); };
    during("made with tones and audio control", [&] {
        const QVariantMapMap all{{callInterfaceName, {{"Status", 5U}}}, {tones, {}}, {audioControl, {}}};
        call = name(new CallHandler("x", object, all, provider), "call");
    });
    during("provider", [&] { call->provider(); });
    during("handlerId", [&] { call->handlerId(); });
    during("lineId", [&] { call->lineId(); });
    during("startedAt", [&] { call->startedAt(); });
    during("duration", [&] { call->duration(); });
    during("isIncoming", [&] { call->isIncoming(); });
    during("isMultiparty", [&] { call->isMultiparty(); });
    during("isEmergency", [&] { call->isEmergency(); });
    during("isForwarded", [&] { call->isForwarded(); });
    during("isRemoteHeld", [&] { call->isRemoteHeld(); });
    during("parentHandlerId", [&] { call->parentHandlerId(); });
    during("childCalls", [&] { call->childCalls(); });
    during("uri", [&] { call->uri(); });
    during("appId", [&] { call->appId(); });
    during("supportsDtmf", [&] { call->supportsDtmf(); });
    during("supportsMultiparty", [&] { call->supportsMultiparty(); });
    during("holdable", [&] { call->holdable(); });
    during("status", [&] { call->status(); });
    during("answer", [&] { call->answer(); });
    during("hangup", [&] { call->hangup(); });
    during("hold, although it is not holdable", [&] { call->hold(true); });
    during("release", [&] { call->hold(false); });
    during("deflect", [&] { call->deflect("x"); });
    during("sendDtmf", [&] { call->sendDtmf("1"); });
    during("merge", [&] { call->merge("h2"); });
    during("split", [&] { call->split(); });
    during("a mute is asked for while it is active", [&] { call->onMuteRequested(true); });
    during("a route is asked for while it is active", [&] { call->onAudioRouteRequested("a", "b"); });
    during("the devices change", [&] { emit host.devicesChanged(); });
    during("the selected input changes", [&] { emit host.selectedInputDeviceChanged(); });
    during("tick", [&] {
        const auto timers = QAbstractEventDispatcher::instance()->registeredTimers(call);
        ASSERT_EQ(timers.size(), 1);
        timerEvent(timers.first().timerId);
    });
    during("tick of another timer", [&] { timerEvent(-5); });
    during("incoming", [&] { status(3); });
    during("tick while it is incoming", [&] { timerEvent(-1); });
    during("a mute is asked for while it is incoming", [&] { call->onMuteRequested(true); });
    during("a route is asked for while it is incoming", [&] { call->onAudioRouteRequested("a", "b"); });
    during("of no known status", [&] { status(8); });
    during("reported again", [&] { call->addInterfaces({{callInterfaceName, {}}, {tones, {}}, {audioControl, {}}}); });
    during("destroyed", [&] { delete call; });
    during("made without a status", [&] {
        call = name(new CallHandler("y", object, {{callInterfaceName, {}}}, provider), "call");
    });
    during("it gets tones", [&] { call->addInterfaces({{tones, {}}}); });
    during("it gets audio control", [&] { call->addInterfaces({{audioControl, {}}}); });
    during("destroyed", [&] { delete call; });
    expectWritten("handler.log");
}

TEST_F(LogTest, AWholeCall)
{
    ScriptedApplication other;
    name(&factory, "plugin");
    CallProvider *itsProvider = nullptr;
    during("registered", [&] {
        ASSERT_TRUE(other.registerCallManager("/o"));
        itsProvider = name(qobject_cast<CallProvider *>(host.providers.last()), "provider");
    });
    during("registered again", [&] { ASSERT_TRUE(other.registerCallManager("/o")); });
    during("the call comes", [&] {
        other.announce("/o", "/o/c1", callInterfaces(incoming, {tones, audioControl}));
        ASSERT_TRUE(other.settle());
        ASSERT_TRUE(host.call());
        name(host.call(), "call");
    });
    during("it becomes active", [&] {
        other.changeStatus("/o/c1", 5);
        ASSERT_TRUE(other.settle());
    });
    during("its application asks for a mute", [&] {
        other.signal("/o/c1", audioControl, "RequestMute", "true");
        ASSERT_TRUE(other.settle());
    });
    during("it goes", [&] {
        other.withdraw("/o", "/o/c1", {callInterfaceName});
        ASSERT_TRUE(other.settle());
        ASSERT_TRUE(waitFor([&] { return !itsProvider->findChild<CallHandler *>(); }));
    });
    during("its application leaves", [&] {
        const QPointer<CallProvider> leaving = itsProvider;
        other.leave();
        ASSERT_TRUE(waitFor([&] { return !leaving; }));
    });
    expectWritten("call.log");
}

TEST_F(LogTest, TraceLinesAreOffByDefaultWhileWarningsAreOn)
{
    EXPECT_FALSE(voicecall().isInfoEnabled());
    EXPECT_TRUE(voicecall().isWarningEnabled());
}

// --- The moment at which a line is written

namespace {

/** Runs an action each time that the trace line of an operation is written. One at a time. */
class WhenTraced
{
public:
    WhenTraced(const QString &operation, const std::function<void()> &action) : operation(operation), action(action)
    {
        current = this;
        QLoggingCategory::setFilterRules("voicecall=true");
        qInstallMessageHandler(handle);
    }

    ~WhenTraced()
    {
        qInstallMessageHandler(nullptr);
        QLoggingCategory::setFilterRules({});
        current = nullptr;
    }

private:
    static void handle(QtMsgType, const QMessageLogContext &, const QString &text)
    {
        if (text.contains(current->operation))
            current->action();
    }

    static WhenTraced *current;
    const QString operation;
    const std::function<void()> action;
};

WhenTraced *WhenTraced::current = nullptr;

} // namespace

// Messages of one connection keep their order, so the mark tells where the line stands among them.
TEST_F(LogTest, ACommandIsTracedBeforeItIsSent)
{
    AbstractVoiceCallHandler *handler = addCall(holdableActive, {tones});
    ASSERT_TRUE(handler);
    const QList<QPair<QString, std::function<void()>>> operations = {
        {"CallHandler::answer(", [&] { handler->answer(); }},
        {"CallHandler::hangup(", [&] { handler->hangup(); }},
        {"CallHandler::hold(", [&] { handler->hold(true); }},
        {"CallHandler::sendDtmf(", [&] { handler->sendDtmf("1"); }},
    };
    for (const auto &operation : operations) {
        SCOPED_TRACE(operation.first.toStdString());
        application.forgetWhatArrived();
        const WhenTraced mark(operation.first, [&] {
            QDBusConnection::sessionBus().send(
                QDBusMessage::createMethodCall(application.name(), "/mark", "tests.Mark", "Mark"));
        });
        operation.second();
        const QStringList sent = commands();
        ASSERT_EQ(sent.size(), 2);
        EXPECT_EQ(sent.at(0), "/mark tests.Mark.Mark()");
        EXPECT_TRUE(sent.at(1).startsWith("/m/c1 zelkovar.Call.")) << sent.at(1).toStdString();
    }
}

TEST_F(LogTest, AReportIsTracedBeforeItIsSentOn)
{
    ScriptedApplication listener;
    listener.subscribe("type='signal',path='/zelkovar/call/service'");
    for (const char *operation :
        {"CallProviderFactory::onInterfacesAdded(", "CallProviderFactory::onInterfacesRemoved("}) {
        SCOPED_TRACE(operation);
        const WhenTraced mark(operation, [] {
            QDBusConnection::sessionBus().send(
                QDBusMessage::createSignal("/zelkovar/call/service", "tests.Mark", "Mark"));
        });
        listener.forgetWhatArrived();
        application.announce(managerPath, callPath, callInterfaces(active));
        application.withdraw(managerPath, callPath, {"zelkovar.Call.Call1"});
        settle();
        ASSERT_TRUE(listener.settle());
        const QStringList heard = listener.signalsHeard();
        ASSERT_EQ(heard.size(), 3);
        const int marked = heard.indexOf("/zelkovar/call/service tests.Mark.Mark()");
        EXPECT_EQ(marked, QString(operation).contains("Added") ? 0 : 1);
    }
}

TEST_F(LogTest, TheHostsAudioStateIsAskedForOnceTheOperationIsTraced)
{
    class LoggingHost : public RecordingHost
    {
    public:
        AudioRouteState audioRouteState() const override
        {
            qInfo("state asked");
            return {};
        }
    } loggingHost;
    CallProvider other(DBusCallManager(application.name(), QDBusObjectPath("/o")), QString(), &loggingHost, nullptr);
    CallHandler handler("x", DBusCallObject(application.name(), QDBusObjectPath("/o/c1")),
        {{"zelkovar.Call.Call1", {}}, {audioControl, {}}}, &other);
    for (void (CallHandler::*operation)() : {&CallHandler::onAudioDevicesChanged, &CallHandler::onAudioRouteChanged}) {
        const LogRecorder log;
        (handler.*operation)();
        const QStringList entries = log.entries();
        EXPECT_GE(entries.indexOf("info default: state asked"), 1);
        EXPECT_EQ(entries.indexOf(log.startingWith(tracePrefix).value(0)), 0);
    }
}

TEST_F(LogTest, DialingIsTracedBeforeItIsRefused)
{
    QString before = "not traced";
    const WhenTraced look("CallProvider::dial(", [&] { before = provider->errorString(); });
    provider->dial("1");
    EXPECT_EQ(before, QString());
    EXPECT_NE(provider->errorString(), QString());
}

TEST_F(LogTest, ACallIsStillListedWhileItsIdIsReadAtItsRemoval)
{
    ASSERT_TRUE(addCall(active));
    QList<int> listed;
    const WhenTraced look("CallHandler::handlerId(", [&] { listed.append(provider->voiceCalls().size()); });
    provider->onInterfacesRemoved(application.name(), QDBusObjectPath(callPath), {callInterfaceName});
    EXPECT_EQ(listed, QList<int>({1}));
}

TEST_F(LogTest, AnEndIsTracedWhileEverythingIsStillThere)
{
    ObjectWatch watch;
    QStringList there;
    const auto look = [&](const QString &suffix) { return [&there, &watch, suffix] { there = watch.living(suffix); }; };
    auto *other
        = new CallProvider(DBusCallManager(application.name(), QDBusObjectPath("/o")), QString(), &host, nullptr);
    auto *handler = new CallHandler("x", DBusCallObject(application.name(), QDBusObjectPath("/o/c1")),
        {{"zelkovar.Call.Call1", {}}, {tones, {}}}, provider);
    auto *plugin = new CallProviderFactory;
    {
        const WhenTraced looking("CallHandler::~CallHandler(", look("Proxy"));
        delete handler;
        EXPECT_EQ(there, QStringList({"DBusObjectManagerProxy", "CallProxy", "DTMFProxy"}));
    }
    {
        const WhenTraced looking("CallProvider::~CallProvider(", look("ObjectManager"));
        delete other;
        EXPECT_EQ(there, QStringList({"ObjectManager"}));
    }
    const WhenTraced looking("CallProviderFactory::~CallProviderFactory(", look("CallService"));
    delete plugin;
    EXPECT_EQ(there, QStringList({"CallService"}));
}

// --- Texts

TEST_F(LogTest, SaysInTheDefaultCategoryWhichCallItAddsAndItsStatus)
{
    const LogRecorder log;
    ASSERT_TRUE(addCall(active));
    EXPECT_EQ(log.startingWith("debug "),
        QStringList({QString("debug default: Adding call handler  \"%1@/m/c1\"").arg(application.name()),
            "debug default: remote object status 5"}));
    EXPECT_EQ(log.startingWith("warning "), QStringList());
}

TEST_F(LogTest, SaysInTheDefaultCategoryWhichCallItRemoves)
{
    ASSERT_TRUE(addCall(active));
    const LogRecorder log;
    application.withdraw(managerPath, callPath, {"zelkovar.Call.Call1"});
    settle();
    EXPECT_EQ(log.startingWith("debug "),
        QStringList({QString("debug default: Removing call handler  \"%1@/m/c1\"").arg(application.name())}));
}

TEST_F(LogTest, SaysAllThatAlsoWhileNothingIsTraced)
{
    const LogRecorder log;
    QLoggingCategory::setFilterRules("voicecall=false\ndefault=true");
    ASSERT_TRUE(addCall(active));
    application.withdraw(managerPath, callPath, {"zelkovar.Call.Call1"});
    settle();
    EXPECT_EQ(log.entries(),
        QStringList({QString("debug default: Adding call handler  \"%1@/m/c1\"").arg(application.name()),
            "debug default: remote object status 5",
            QString("debug default: Removing call handler  \"%1@/m/c1\"").arg(application.name())}));
}

TEST_F(LogTest, SaysEachStatusAsItCameAlsoTheSameAndUnknownOnes)
{
    ASSERT_TRUE(addCall(active));
    const LogRecorder log;
    for (const uint status : {5U, 0U, 8U, 0xffffffffU})
        changeStatus(status);
    EXPECT_EQ(log.startingWith("debug "),
        QStringList({"debug default: remote object status 5", "debug default: remote object status 0",
            "debug default: remote object status 8", "debug default: remote object status 4294967295"}));
}

TEST_F(LogTest, SaysTheStatusBeforeTheCallHasIt)
{
    AbstractVoiceCallHandler *call = addCall(incoming);
    ASSERT_TRUE(call);
    QList<int> statuses;
    const WhenTraced look("remote object status", [&] { statuses.append(call->status()); });
    changeStatus(5);
    EXPECT_EQ(statuses, QList<int>({AbstractVoiceCallHandler::StatusIncoming}));
}

TEST_F(LogTest, SaysThatItRemovesACallWhileItIsListed)
{
    ASSERT_TRUE(addCall(active));
    QList<int> listed;
    const WhenTraced look("Removing call handler", [&] { listed.append(provider->voiceCalls().size()); });
    provider->onInterfacesRemoved(application.name(), QDBusObjectPath(callPath), {callInterfaceName});
    EXPECT_EQ(listed, QList<int>({1}));
}

TEST_F(LogTest, SaysThatItAddsACallBeforeItAsksForAnId)
{
    class LoggingHost : public RecordingHost
    {
    public:
        QString newHandlerId() override
        {
            qInfo("id asked");
            return RecordingHost::newHandlerId();
        }
    } loggingHost;
    CallProvider other(DBusCallManager(application.name(), QDBusObjectPath("/o")), QString(), &loggingHost, nullptr);
    const LogRecorder log;
    other.onInterfacesAdded(application.name(), QDBusObjectPath("/o/c1"), {{"zelkovar.Call.Call1", {}}});
    const QStringList entries = log.entries();
    ASSERT_GE(entries.size(), 3);
    EXPECT_TRUE(entries.at(0).startsWith("debug default: Adding call handler ")) << entries.at(0).toStdString();
    EXPECT_EQ(entries.at(1), "info default: id asked");
    EXPECT_TRUE(entries.at(2).startsWith("info voicecall: CallHandler::CallHandler(")) << entries.at(2).toStdString();
}

TEST_F(LogTest, SaysThatItRemovesACallBetweenTheTwoAnnouncements)
{
    ASSERT_TRUE(addCall(active));
    const LogRecorder log;
    QStringList atInterfaces;
    QStringList atCall;
    QObject::connect(
        provider, &CallProvider::interfacesRemoved, &host, [&] { atInterfaces = log.startingWith("debug "); });
    QObject::connect(
        provider, &AbstractVoiceCallProvider::voiceCallRemoved, &host, [&] { atCall = log.startingWith("debug "); });
    application.withdraw(managerPath, callPath, {"zelkovar.Call.Call1"});
    settle();
    EXPECT_EQ(atInterfaces.size(), 0);
    EXPECT_EQ(atCall.size(), 1);
}

TEST_F(LogTest, OddPropertiesAndUnknownObjectsAreNotLogged)
{
    const LogRecorder log;
    application.announce(managerPath, "/m/other", "{'zelkovar.Call.DTMF1': {}}");
    application.withdraw(managerPath, "/m/unknown", {"zelkovar.Call.Call1"});
    ASSERT_TRUE(addCall("'Status': <'x'>, 'Incoming': <[1]>, 'Uri': <5>"));
    EXPECT_EQ(log.entries().size(), log.startingWith(tracePrefix).size() + 2);
    EXPECT_EQ(log.startingWith("debug ").size(), 2);
}
