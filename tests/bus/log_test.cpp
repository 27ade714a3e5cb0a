// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "callfixture.h"
#include "calls/callhandler.h"
#include "logrecorder.h"
#include "objectwatch.h"

#include <QtCore/QLoggingCategory>
#include <QtCore/QPointer>
#include <QtCore/QRegularExpression>
#include <QtCore/QSet>
#include <QtCore/QTimerEvent>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <functional>

static const QString tracePrefix = "info voicecall: ";

namespace {

/** A trace line, taken apart. */
struct Trace
{
    /** Without the spaces around it that differ between compilers, and without "virtual". */
    QString signature;
    int line = 0;
    QString object;
};

QString withoutSpaces(QString text) { return text.remove(' '); }

QString plain(const QString &signature)
{
    const QString prefix = "virtual ";
    return withoutSpaces(signature.startsWith(prefix) ? signature.mid(prefix.size()) : signature);
}

QString address(const void *object) { return QString::asprintf("%p", object); }

} // namespace

class LogTest : public CallFixture
{
protected:
    /** The trace lines so far; fails the test when one is malformed. */
    static QList<Trace> traces(const LogRecorder &log)
    {
        static const QRegularExpression format("^(.*\\)(?: const)?):([1-9][0-9]*) (0x[0-9a-f]+)$");
        QList<Trace> found;
        const QStringList lines = log.startingWith(tracePrefix);
        for (const QString &line : lines) {
            const QRegularExpressionMatch match = format.match(line.mid(tracePrefix.size()));
            EXPECT_TRUE(match.hasMatch()) << line.toStdString();
            found.append({plain(match.captured(1)), match.captured(2).toInt(), match.captured(3)});
        }
        return found;
    }

    /** The operation's line comes first, once, with the object's address; `run` returns the object. */
    void expectTraced(const QString &signature, const std::function<const void *()> &run)
    {
        SCOPED_TRACE(signature.toStdString());
        const LogRecorder log;
        const QString object = address(run());
        const QList<Trace> lines = traces(log);
        ASSERT_FALSE(lines.isEmpty());
        EXPECT_EQ(lines.first().signature, withoutSpaces(signature));
        EXPECT_EQ(lines.first().object, object);
        EXPECT_EQ(log.entries().first(), log.startingWith(tracePrefix).first()) << "before anything else is logged";
        int count = 0;
        for (const Trace &line : lines)
            count += line.signature == withoutSpaces(signature);
        EXPECT_EQ(count, 1);
        sourceLines.insert(lines.first().line);
        ++operations;
    }

    /** Different operations of one source file stand on different lines. */
    void expectLinesOfTheirOwn() const { EXPECT_EQ(sourceLines.size(), operations); }

    static void expectUntraced(const char *what, const std::function<void()> &run)
    {
        SCOPED_TRACE(what);
        const LogRecorder log;
        run();
        EXPECT_EQ(log.entries(), QStringList());
    }

    QSet<int> sourceLines;
    int operations = 0;
};

// --- Trace lines

TEST_F(LogTest, EveryOperationOfThePluginObjectIsTraced)
{
    CallProviderFactory *other = nullptr;
    expectTraced("CallProviderFactory::CallProviderFactory(QObject*)", [&] { return other = new CallProviderFactory; });
    using Operation = void (*)(CallProviderFactory *);
    const QList<QPair<QString, Operation>> plainOperations = {
        {"QString CallProviderFactory::pluginId() const", [](CallProviderFactory *plugin) { plugin->pluginId(); }},
        {"bool CallProviderFactory::initialize()", [](CallProviderFactory *plugin) { plugin->initialize(); }},
        {"bool CallProviderFactory::configure(VoiceCallManagerInterface*)",
            [](CallProviderFactory *plugin) { plugin->configure(nullptr); }},
        {"bool CallProviderFactory::start()", [](CallProviderFactory *plugin) { plugin->start(); }},
        {"bool CallProviderFactory::suspend()", [](CallProviderFactory *plugin) { plugin->suspend(); }},
        {"bool CallProviderFactory::resume()", [](CallProviderFactory *plugin) { plugin->resume(); }},
        {"void CallProviderFactory::finalize()", [](CallProviderFactory *plugin) { plugin->finalize(); }},
        {"void CallProviderFactory::onCallManagerAdded(const DBusCallManager&, pid_t)",
            [](CallProviderFactory *plugin) {
                QMetaObject::invokeMethod(
                    plugin, "onCallManagerAdded", Q_ARG(DBusCallManager, DBusCallManager()), Q_ARG(pid_t, 1));
            }},
        {"void CallProviderFactory::onCallManagerRemoved(const DBusCallManager&)",
            [](CallProviderFactory *plugin) {
                QMetaObject::invokeMethod(plugin, "onCallManagerRemoved", Q_ARG(DBusCallManager, DBusCallManager()));
            }},
        {"void CallProviderFactory::onInterfacesAdded(const DBusCallObject&, const QVariantMapMap&)",
            [](CallProviderFactory *plugin) {
                QMetaObject::invokeMethod(plugin, "onInterfacesAdded",
                    Q_ARG(DBusCallObject, DBusCallObject(":1.1", QDBusObjectPath("/x"))),
                    Q_ARG(QVariantMapMap, QVariantMapMap()));
            }},
        {"void CallProviderFactory::onInterfacesRemoved(const DBusCallObject&, const QStringList&)",
            [](CallProviderFactory *plugin) {
                QMetaObject::invokeMethod(plugin, "onInterfacesRemoved",
                    Q_ARG(DBusCallObject, DBusCallObject(":1.1", QDBusObjectPath("/x"))),
                    Q_ARG(QStringList, QStringList()));
            }},
    };
    for (const auto &operation : plainOperations) {
        expectTraced(operation.first, [&] {
            operation.second(other);
            return other;
        });
    }
    expectTraced("CallProviderFactory::~CallProviderFactory()", [&] {
        const void *object = other;
        delete other;
        return object;
    });
    expectLinesOfTheirOwn();
}

TEST_F(LogTest, EveryOperationOfAProviderIsTraced)
{
    CallProvider *other = nullptr;
    expectTraced(
        "CallProvider::CallProvider(const DBusCallManager&, const QString&, VoiceCallManagerInterface*, QObject*)",
        [&] {
            return other = new CallProvider(
                       DBusCallManager(application.name(), QDBusObjectPath("/o")), QString(), &host, nullptr);
        });
    using Operation = void (*)(CallProvider *);
    const QList<QPair<QString, Operation>> plainOperations = {
        {"QString CallProvider::providerId() const", [](CallProvider *provider) { provider->providerId(); }},
        {"QString CallProvider::providerType() const", [](CallProvider *provider) { provider->providerType(); }},
        {"QList<AbstractVoiceCallHandler*> CallProvider::voiceCalls() const",
            [](CallProvider *provider) { provider->voiceCalls(); }},
        {"QString CallProvider::errorString() const", [](CallProvider *provider) { provider->errorString(); }},
        {"bool CallProvider::dial(const QString&)", [](CallProvider *provider) { provider->dial("1"); }},
        {"void CallProvider::onInterfacesRemoved(const QString&, const QDBusObjectPath&, const QStringList&)",
            [](CallProvider *provider) { provider->onInterfacesRemoved(":1.1", QDBusObjectPath("/x"), {}); }},
        {"void CallProvider::remove()", [](CallProvider *provider) { provider->remove(); }},
    };
    for (const auto &operation : plainOperations) {
        expectTraced(operation.first, [&] {
            operation.second(other);
            return other;
        });
    }
    expectTraced("CallProvider::~CallProvider()", [&] {
        const void *object = other;
        delete other;
        return object;
    });
    expectLinesOfTheirOwn();
}

TEST_F(LogTest, TheProvidersFirstStepIsTracedBehindItsConstructor)
{
    const LogRecorder log;
    const CallProvider other(DBusCallManager(application.name(), QDBusObjectPath("/o")), QString(), &host, nullptr);
    const QList<Trace> lines = traces(log);
    ASSERT_EQ(lines.size(), 2);
    EXPECT_EQ(lines.at(1).signature, "voidCallProvider::initialize()");
    EXPECT_EQ(lines.at(1).object, address(&other));
    EXPECT_NE(lines.at(0).line, lines.at(1).line);
}

TEST_F(LogTest, EveryOperationOfAHandlerIsTraced)
{
    CallHandler *handler = nullptr;
    expectTraced(
        "CallHandler::CallHandler(const QString&, const DBusCallObject&, const QVariantMapMap&, CallProvider*)", [&] {
            return handler = new CallHandler("x", DBusCallObject(application.name(), QDBusObjectPath("/o/c1")),
                       {{"zelkovar.Call.Call1", {{"Status", 5U}}}, {tones, {}}, {audioControl, {}}}, provider);
        });
    using Operation = void (*)(CallHandler *);
    const QList<QPair<QString, Operation>> plainOperations = {
        {"AbstractVoiceCallProvider* CallHandler::provider() const", [](CallHandler *call) { call->provider(); }},
        {"QString CallHandler::handlerId() const", [](CallHandler *call) { call->handlerId(); }},
        {"QString CallHandler::lineId() const", [](CallHandler *call) { call->lineId(); }},
        {"QDateTime CallHandler::startedAt() const", [](CallHandler *call) { call->startedAt(); }},
        {"int CallHandler::duration() const", [](CallHandler *call) { call->duration(); }},
        {"bool CallHandler::isIncoming() const", [](CallHandler *call) { call->isIncoming(); }},
        {"bool CallHandler::isMultiparty() const", [](CallHandler *call) { call->isMultiparty(); }},
        {"bool CallHandler::isEmergency() const", [](CallHandler *call) { call->isEmergency(); }},
        {"bool CallHandler::isForwarded() const", [](CallHandler *call) { call->isForwarded(); }},
        {"bool CallHandler::isRemoteHeld() const", [](CallHandler *call) { call->isRemoteHeld(); }},
        {"QString CallHandler::uri() const", [](CallHandler *call) { call->uri(); }},
        {"QString CallHandler::appId() const", [](CallHandler *call) { call->appId(); }},
        {"bool CallHandler::holdable() const", [](CallHandler *call) { call->holdable(); }},
        {"AbstractVoiceCallHandler::VoiceCallStatus CallHandler::status() const",
            [](CallHandler *call) { call->status(); }},
        {"void CallHandler::answer()", [](CallHandler *call) { call->answer(); }},
        {"void CallHandler::hangup()", [](CallHandler *call) { call->hangup(); }},
        {"void CallHandler::hold(bool)", [](CallHandler *call) { call->hold(true); }},
        {"void CallHandler::deflect(const QString&)", [](CallHandler *call) { call->deflect("x"); }},
        {"void CallHandler::sendDtmf(const QString&)", [](CallHandler *call) { call->sendDtmf("1"); }},
        {"void CallHandler::timerEvent(QTimerEvent*)",
            [](CallHandler *call) {
                QTimerEvent event(-5);
                QCoreApplication::sendEvent(call, &event);
            }},
        {"void CallHandler::onStatusChanged(uint)",
            [](CallHandler *call) { QMetaObject::invokeMethod(call, "onStatusChanged", Q_ARG(uint, 5U)); }},
    };
    const QList<QPair<QString, Operation>> audioOperations = {
        {"void CallHandler::onMuteRequested(bool)", [](CallHandler *call) { call->onMuteRequested(true); }},
        {"void CallHandler::onAudioRouteRequested(const QString&, const QString&)",
            [](CallHandler *call) { call->onAudioRouteRequested("a", "b"); }},
        {"void CallHandler::onAudioDevicesChanged()", [](CallHandler *call) { call->onAudioDevicesChanged(); }},
        {"void CallHandler::onAudioRouteChanged()", [](CallHandler *call) { call->onAudioRouteChanged(); }},
    };
    const auto run = [&](const QPair<QString, Operation> &operation) {
        expectTraced(operation.first, [&] {
            operation.second(handler);
            return handler;
        });
    };
    for (const auto &operation : plainOperations)
        run(operation);
    expectTraced("CallHandler::~CallHandler()", [&] {
        const void *object = handler;
        delete handler;
        handler = nullptr;
        return object;
    });
    expectLinesOfTheirOwn();

    handler = new CallHandler("x", DBusCallObject(application.name(), QDBusObjectPath("/o/c1")),
        {{"zelkovar.Call.Call1", {{"Status", 5U}}}, {audioControl, {}}}, provider);
    sourceLines.clear();
    operations = 0;
    for (const auto &operation : audioOperations)
        run(operation);
    expectLinesOfTheirOwn();
}

TEST_F(LogTest, TheseOperationsOfAHandlerLogNothing)
{
    AbstractVoiceCallHandler *call = addCall(active, {tones});
    auto *handler = qobject_cast<CallHandler *>(call);
    ASSERT_TRUE(handler);
    expectUntraced("supportsDtmf", [&] { handler->supportsDtmf(); });
    expectUntraced("supportsMultiparty", [&] { handler->supportsMultiparty(); });
    expectUntraced("parentHandlerId", [&] { handler->parentHandlerId(); });
    expectUntraced("childCalls", [&] { handler->childCalls(); });
    expectUntraced("merge", [&] { handler->merge("h2"); });
    expectUntraced("split", [&] { handler->split(); });
    expectUntraced("addInterfaces", [&] { handler->addInterfaces({{"zelkovar.Call.Call1", {}}, {tones, {}}}); });
}

TEST_F(LogTest, TheseOperationsOfAProviderLogNothing)
{
    ASSERT_TRUE(addCall(active));
    expectUntraced("appId", [&] { provider->appId(); });
    expectUntraced("manager", [&] { provider->manager(); });
    expectUntraced("onInterfacesAdded", [&] {
        provider->onInterfacesAdded(application.name(), QDBusObjectPath("/no/call"), {{tones, {}}});
    });
}

TEST_F(LogTest, AWholeCallTracesOnlyThePluginItsProvidersAndItsHandlers)
{
    const LogRecorder log;
    ScriptedApplication other;
    ASSERT_TRUE(other.registerCallManager("/o"));
    other.announce("/o", "/o/c1", callInterfaces(active, {tones, audioControl}));
    ASSERT_TRUE(other.settle());
    ASSERT_TRUE(host.call());
    host.call()->answer();
    host.call()->sendDtmf("1");
    host.call()->hold(true);
    emit host.devicesChanged();
    emit host.microphoneMutedChanged();
    other.changeStatus("/o/c1", 7);
    other.signal("/o/c1", audioControl, "RequestMute", "true");
    other.withdraw("/o", "/o/c1", {"zelkovar.Call.Call1"});
    ASSERT_TRUE(other.settle());
    other.leave();
    ASSERT_TRUE(waitFor([&] { return host.providers.size() == 1; }));
    settle();

    static const QRegularExpression traced("(CallProviderFactory|CallProvider|CallHandler)::");
    static const QRegularExpression exempt("CallHandler::(supportsDtmf|supportsMultiparty|parentHandlerId|childCalls|"
                                           "merge|split|addInterfaces)\\(|CallProvider::(appId|manager|"
                                           "onInterfacesAdded)\\(");
    const QList<Trace> lines = traces(log);
    EXPECT_GT(lines.size(), 20);
    for (const Trace &line : lines) {
        EXPECT_TRUE(traced.match(line.signature).hasMatch()) << line.signature.toStdString();
        EXPECT_FALSE(exempt.match(line.signature).hasMatch()) << line.signature.toStdString();
    }
    // What is left are the texts below, nothing else.
    EXPECT_EQ(log.entries().size(),
        lines.size() + log.startingWith("info default: RegisterCallManager ").size()
            + log.startingWith("debug default: Adding call handler ").size()
            + log.startingWith("debug default: Removing call handler ").size()
            + log.startingWith("debug default: remote object status ").size());
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

TEST_F(LogTest, ARegistrationAndADepartureAreTracedOnceEach)
{
    const LogRecorder log;
    ScriptedApplication other;
    ASSERT_TRUE(other.registerCallManager("/o"));
    other.leave();
    ASSERT_TRUE(waitFor([&] { return host.providers.size() == 1; }));
    EXPECT_EQ(log.entries().filter("CallProviderFactory::onCallManagerAdded(").size(), 1);
    EXPECT_EQ(log.entries().filter("CallProviderFactory::onCallManagerRemoved(").size(), 1);
}

TEST_F(LogTest, ARefusalIsTracedBeforeItIsWarnedOf)
{
    expectTraced("bool CallProviderFactory::configure(VoiceCallManagerInterface*)", [&] {
        factory.configure(&host);
        return &factory;
    });
    expectTraced("void CallProviderFactory::onCallManagerAdded(const DBusCallManager&, pid_t)", [&] {
        const DBusCallManager known(application.name(), QDBusObjectPath(managerPath));
        QMetaObject::invokeMethod(&factory, "onCallManagerAdded", Q_ARG(DBusCallManager, known), Q_ARG(pid_t, 1));
        return &factory;
    });
}

TEST_F(LogTest, TheRemovalOfAllCallsIsTracedBeforeThatOfEach)
{
    ASSERT_TRUE(addCall(active));
    expectTraced("void CallProvider::remove()", [&] {
        provider->remove();
        return provider;
    });
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

TEST_F(LogTest, SaysTheStatusBeforeItTakesEffect)
{
    AbstractVoiceCallHandler *handler = addCall(incoming);
    ASSERT_TRUE(handler);
    const LogRecorder log;
    QStringList before;
    QObject::connect(handler, &AbstractVoiceCallHandler::statusChanged, &host, [&] { before = log.entries(); });
    changeStatus(5);
    ASSERT_GE(before.size(), 2);
    EXPECT_EQ(before.at(1), "debug default: remote object status 5") << "right behind the trace line";
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
