// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "plugin/callproviderfactory.h"

#include "calls/callprovider.h"
#include "logrecorder.h"
#include "printers.h"
#include "recordinghost.h"
#include "scriptedapplication.h"
#include "waitfor.h"

#include <QtCore/QPointer>
#include <QtDBus/QDBusConnection>
#include <applicationruntime.h>
#include <gmock/gmock.h>
#include <memory>
#include <unistd.h>
#include <utility>

static QStringList runtimeQueries;

// Takes the place of the platform's own, which the linker then leaves out.
ApplicationRuntime::ApplicationRuntime(const QString &procfs) : m_procfs(procfs) { }

ApplicationRuntime &ApplicationRuntime::instance()
{
    static ApplicationRuntime runtime;
    return runtime;
}

QString ApplicationRuntime::getAppIdByPid(int pid) const
{
    runtimeQueries.append(QString::number(pid));
    return QStringLiteral("org.example.Phone");
}

namespace {

const QString servicePath = QStringLiteral("/zelkovar/call/service");
const QString managerInterface = QStringLiteral("zelkovar.Call.ServiceManager1");
const QString calls = QStringLiteral("{'zelkovar.Call.Call1': {'Status': <uint32 3>}}");

class Factory : public testing::Test
{
protected:
    Factory() { runtimeQueries.clear(); }

    /** As a host brings a plug-in up. */
    void bringUp()
    {
        ASSERT_TRUE(factory->initialize());
        ASSERT_TRUE(factory->configure(&host));
        ASSERT_TRUE(factory->start());
    }

    void callManagerAdded(const DBusCallManager &callManager, pid_t pid)
    {
        ASSERT_TRUE(QMetaObject::invokeMethod(
            factory.get(), "onCallManagerAdded", Q_ARG(DBusCallManager, callManager), Q_ARG(pid_t, pid)));
    }

    void callManagerRemoved(const DBusCallManager &callManager)
    {
        ASSERT_TRUE(
            QMetaObject::invokeMethod(factory.get(), "onCallManagerRemoved", Q_ARG(DBusCallManager, callManager)));
    }

    DBusCallManager callManager(const char *path = "/m") const
    {
        return {application.name(), QDBusObjectPath(QString::fromLatin1(path))};
    }

    QString providerId(const char *path = "/m") const
    {
        return QStringLiteral("ringlet/%1@%2").arg(application.name(), QString::fromLatin1(path));
    }

    /** The request for objects has arrived, and its answer has been handled. */
    bool settle() { return application.settle() && application.settle(); }

    RecordingHost host;
    ScriptedApplication application;
    std::unique_ptr<CallProviderFactory> factory = std::make_unique<CallProviderFactory>(nullptr);
};

} // namespace

// --- Life cycle

TEST_F(Factory, PluginIdIsTheSameBeforeAndAfterInitialization)
{
    EXPECT_EQ(factory->pluginId(), QLatin1String("voicecall-ringlet-plugin"));
    ASSERT_TRUE(factory->initialize());
    EXPECT_EQ(factory->pluginId(), QLatin1String("voicecall-ringlet-plugin"));
}

TEST_F(Factory, TheServiceIsOnTheBusFromInitializationToDestruction)
{
    const auto list = [this] {
        return application.call(
            ScriptedApplication::thisProcess(), servicePath, managerInterface, QStringLiteral("ListCallManagers"));
    };
    const QString unknown = QStringLiteral("org.freedesktop.DBus.Error.UnknownObject");
    EXPECT_EQ(list(), unknown);
    ASSERT_TRUE(factory->initialize());
    EXPECT_EQ(list(), QLatin1String("([],)"));
    factory->finalize();
    EXPECT_EQ(list(), QLatin1String("([],)")) << "finalizing changes nothing";
    factory.reset();
    EXPECT_EQ(list(), unknown);
}

TEST_F(Factory, OnlyTheAdaptorsAreExported)
{
    ASSERT_TRUE(factory->initialize());
    const QString text = application.call(
        ScriptedApplication::thisProcess(), servicePath, "org.freedesktop.DBus.Introspectable", "Introspect");
    EXPECT_EQ(text.count("<interface "), 5) << text.toStdString();
    EXPECT_FALSE(text.contains("local.")) << text.toStdString();
}

TEST_F(Factory, RequestsNoBusName)
{
    ScriptedApplication monitor;
    monitor.becomeMonitor();
    bringUp();
    ASSERT_TRUE(application.registerCallManager("/m"));
    const QString reply = ScriptedApplication::thisProcess() + " > " + application.name() + ": reply ()";
    ASSERT_TRUE(waitFor([&] { return monitor.traffic().contains(reply); }));
    EXPECT_EQ(monitor.traffic().filter("RequestName"), QStringList());
}

TEST_F(Factory, InitializationFailsWithoutAWordWhenThePathIsTaken)
{
    QObject squatter;
    ASSERT_TRUE(QDBusConnection::sessionBus().registerObject(servicePath, &squatter));
    const LogRecorder log;
    EXPECT_FALSE(factory->initialize());
    EXPECT_EQ(log.startingWith("warning"), QStringList());
}

TEST_F(Factory, IsConfiguredOnceAndKeepsTheFirstHost)
{
    ASSERT_TRUE(factory->initialize());
    EXPECT_TRUE(factory->configure(&host));
    RecordingHost second;
    const LogRecorder log;
    EXPECT_FALSE(factory->configure(&second));
    EXPECT_FALSE(factory->configure(nullptr));
    EXPECT_FALSE(factory->configure(&host));
    const QString warning
        = QStringLiteral("warning voicecall: virtual bool CallProviderFactory::configure(VoiceCallManagerInterface*) "
                         "CallProviderFactory is already configured!");
    EXPECT_EQ(log.startingWith("warning"), QStringList({warning, warning, warning}));

    ASSERT_TRUE(application.registerCallManager("/m"));
    EXPECT_EQ(host.events, QStringList("provider added " + providerId()));
    EXPECT_EQ(second.events, QStringList());
}

TEST_F(Factory, ConfiguredWithNoHostItStaysUnconfigured)
{
    ASSERT_TRUE(factory->initialize());
    const LogRecorder log;
    EXPECT_TRUE(factory->configure(nullptr));
    EXPECT_TRUE(factory->configure(nullptr));
    EXPECT_TRUE(factory->configure(&host));
    EXPECT_EQ(log.startingWith("warning"), QStringList());
    ASSERT_TRUE(application.registerCallManager("/m"));
    EXPECT_EQ(host.events, QStringList("provider added " + providerId()));
}

TEST_F(Factory, BelongsToTheParentThatItIsGiven)
{
    QObject parent;
    const auto *child = new CallProviderFactory(&parent);
    EXPECT_EQ(child->parent(), &parent);
}

TEST_F(Factory, StartSuspendAndResumeSucceedAndChangeNothing)
{
    ASSERT_TRUE(factory->initialize());
    ASSERT_TRUE(factory->configure(&host));
    ASSERT_TRUE(application.registerCallManager("/m")) << "before start() already";
    EXPECT_TRUE(factory->start());
    EXPECT_TRUE(factory->suspend());
    application.announce("/m", "/m/c1", calls);
    ASSERT_TRUE(settle());
    EXPECT_EQ(host.calls.size(), 1) << "while suspended too";
    EXPECT_TRUE(factory->resume());
    factory->finalize();
    ASSERT_TRUE(application.registerCallManager("/n"));
    EXPECT_EQ(host.providers.size(), 2);
}

TEST_F(Factory, DestroyedItDropsItsProvidersWithoutTellingTheHost)
{
    bringUp();
    ASSERT_TRUE(application.registerCallManager("/m"));
    application.announce("/m", "/m/c1", calls);
    ASSERT_TRUE(settle());
    const QPointer<AbstractVoiceCallProvider> provider = host.providers.value(0);
    ASSERT_TRUE(provider);
    const QStringList before = host.events;
    factory.reset();
    EXPECT_FALSE(provider);
    EXPECT_EQ(host.events, before);
}

TEST_F(Factory, DestroyedItIsOffTheBusBeforeItsProvidersGo)
{
    bringUp();
    ASSERT_TRUE(application.registerCallManager("/m"));
    QObject *registeredThen = factory.get();
    QObject::connect(host.providers.value(0), &QObject::destroyed,
        [&] { registeredThen = QDBusConnection::sessionBus().objectRegisteredAt(servicePath); });
    factory.reset();
    EXPECT_EQ(registeredThen, nullptr);
}

// --- Registrations

TEST_F(Factory, ARegistrationBecomesAProviderOfTheApplicationBeforeItIsAnswered)
{
    bringUp();
    ScriptedApplication monitor;
    monitor.becomeMonitor();
    ASSERT_TRUE(application.registerCallManager("/m"));
    EXPECT_EQ(host.events, QStringList("provider added " + providerId())) << "the provider alone, and once";

    auto *provider = qobject_cast<CallProvider *>(host.providers.value(0));
    ASSERT_NE(provider, nullptr);
    EXPECT_EQ(provider->appId(), QLatin1String("org.example.Phone"));
    EXPECT_EQ(provider->manager(), &host);
    EXPECT_EQ(provider->parent(), factory.get());
    EXPECT_EQ(runtimeQueries, QStringList(QString::number(getpid())));

    const QString host = ScriptedApplication::thisProcess() + " > " + application.name();
    const QString request = host + ": /m org.freedesktop.DBus.ObjectManager.GetManagedObjects()";
    ASSERT_TRUE(waitFor([&] { return monitor.traffic().contains(host + ": reply ()"); }));
    const QStringList traffic = monitor.traffic();
    ASSERT_TRUE(traffic.contains(request));
    EXPECT_LT(traffic.indexOf(request), traffic.indexOf(host + ": reply ()"));
}

TEST_F(Factory, TheSameCallManagerTwiceIsOneProvider)
{
    bringUp();
    const LogRecorder log;
    ASSERT_TRUE(application.registerCallManager("/m"));
    ASSERT_TRUE(application.registerCallManager("/m"));
    EXPECT_EQ(host.events, QStringList("provider added " + providerId()));
    EXPECT_EQ(log.startingWith("warning"), QStringList());
}

TEST_F(Factory, TwoPathsOfOneApplicationAreTwoProviders)
{
    bringUp();
    ASSERT_TRUE(application.registerCallManager("/m"));
    ASSERT_TRUE(application.registerCallManager("/n"));
    EXPECT_EQ(host.events, QStringList({"provider added " + providerId("/m"), "provider added " + providerId("/n")}));
}

TEST_F(Factory, ACallManagerWhoseProviderIsStillThereIsRefusedWithAWarningAndWithoutAskingForItsApplication)
{
    bringUp();
    callManagerAdded(callManager(), 7);
    EXPECT_EQ(runtimeQueries, QStringList("7"));
    const LogRecorder log;
    callManagerAdded(callManager(), 8);
    EXPECT_EQ(log.startingWith("warning"),
        QStringList(QStringLiteral("warning voicecall: void CallProviderFactory::onCallManagerAdded(const "
                                   "DBusCallManager&, pid_t) CallProviderFactory: Already registered %1@/m")
                        .arg(application.name())));
    EXPECT_EQ(host.events, QStringList("provider added " + providerId()));
    EXPECT_EQ(runtimeQueries, QStringList("7"));
}

TEST_F(Factory, BeforeItIsConfiguredARegistrationIsRefusedWithAWarningButItsApplicationIsAskedFor)
{
    ASSERT_TRUE(factory->initialize());
    const LogRecorder log;
    ASSERT_TRUE(application.registerCallManager("/m"));
    EXPECT_EQ(log.startingWith("warning"),
        QStringList("warning voicecall: void CallProviderFactory::onCallManagerAdded(const DBusCallManager&, pid_t) "
                    "CallProviderFactory is not yet configured"));
    EXPECT_EQ(runtimeQueries, QStringList(QString::number(getpid())));
    EXPECT_EQ(application.call(ScriptedApplication::thisProcess(), servicePath, managerInterface, "ListCallManagers"),
        QStringLiteral("([('%1', '/m')],)").arg(application.name()))
        << "it stays registered";
}

TEST_F(Factory, ARegistrationFromBeforeItWasConfiguredIsNotTakenUpLater)
{
    ASSERT_TRUE(factory->initialize());
    ASSERT_TRUE(application.registerCallManager("/m"));
    ASSERT_TRUE(factory->configure(&host));
    ASSERT_TRUE(factory->start());
    ASSERT_TRUE(application.registerCallManager("/m"));
    application.announce("/m", "/m/c1", calls);
    ASSERT_TRUE(settle());
    EXPECT_EQ(host.events, QStringList());
    EXPECT_EQ(application.calls(), QStringList()) << "its objects are not asked for";
}

TEST_F(Factory, RemovalOfACallManagerWithoutAProviderIsSilent)
{
    ASSERT_TRUE(factory->initialize());
    ASSERT_TRUE(application.registerCallManager("/m"));
    ASSERT_TRUE(factory->configure(&host));
    const LogRecorder log;
    application.leave();
    ScriptedApplication other;
    ASSERT_TRUE(waitFor([&] {
        return other.call(ScriptedApplication::thisProcess(), servicePath, managerInterface, "ListCallManagers")
            == QLatin1String("([],)");
    }));
    EXPECT_EQ(log.startingWith("warning"), QStringList());
    EXPECT_EQ(host.events, QStringList());
}

// --- Departures

TEST_F(Factory, DepartureRemovesEveryCallThenTheProvider)
{
    bringUp();
    ASSERT_TRUE(application.registerCallManager("/m"));
    application.announce("/m", "/m/c1", calls);
    application.announce("/m", "/m/c2", calls);
    ASSERT_TRUE(settle());
    const QString provider = providerId();
    host.events.clear();
    application.leave();
    ASSERT_TRUE(waitFor([&] { return host.providers.isEmpty(); }));
    EXPECT_EQ(host.events,
        QStringList(
            {"call removed h1", "calls changed", "call removed h2", "calls changed", "provider removed " + provider}));
}

TEST_F(Factory, DepartureOfTheApplicationOfTwoProvidersTakesBothAndNoOthers)
{
    bringUp();
    ScriptedApplication other;
    ASSERT_TRUE(other.registerCallManager("/m"));
    ASSERT_TRUE(application.registerCallManager("/m"));
    ASSERT_TRUE(application.registerCallManager("/n"));
    application.leave();
    ASSERT_TRUE(waitFor([&] { return host.providers.size() == 1; }));
    EXPECT_EQ(host.providers.value(0)->providerId(), QStringLiteral("ringlet/%1@/m").arg(other.name()));
}

TEST_F(Factory, ProviderOutlivesItsRemovalUntilTheEventLoopPasses)
{
    bringUp();
    callManagerAdded(callManager(), 7);
    const QPointer<AbstractVoiceCallProvider> provider = host.providers.value(0);
    callManagerRemoved(callManager());
    EXPECT_EQ(host.events.last(), "provider removed " + providerId());
    ASSERT_TRUE(provider) << "gone at once";
    EXPECT_TRUE(waitFor([&] { return !provider; }));
}

namespace {

/** Lets a test act while the host is told that a provider comes or goes. */
class AnsweringHost : public RecordingHost
{
public:
    void addProvider(AbstractVoiceCallProvider *provider) override
    {
        RecordingHost::addProvider(provider);
        if (const auto act = std::exchange(whenAdded, nullptr))
            act();
    }

    void removeProvider(AbstractVoiceCallProvider *provider) override
    {
        RecordingHost::removeProvider(provider);
        whenRemoved();
    }

    std::function<void()> whenAdded; // once
    std::function<void()> whenRemoved;
};

} // namespace

TEST_F(Factory, ProviderIsInTheTableWhenTheHostGetsIt)
{
    AnsweringHost answering;
    answering.whenAdded = [&] { callManagerAdded(callManager(), 8); };
    ASSERT_TRUE(factory->initialize());
    ASSERT_TRUE(factory->configure(&answering));
    const LogRecorder log;
    callManagerAdded(callManager(), 7);
    EXPECT_EQ(answering.events, QStringList("provider added " + providerId()));
    EXPECT_EQ(log.startingWith("warning voicecall: ").filter("Already registered").size(), 1);
    factory.reset(); // before its host
}

TEST_F(Factory, ProviderIsOutOfTheTableWhenTheHostHearsOfItsRemoval)
{
    AnsweringHost answering;
    // A second removal finds nothing then, and the same call manager can be added anew.
    answering.whenRemoved = [&] {
        callManagerRemoved(callManager());
        callManagerAdded(callManager(), 8);
    };
    ASSERT_TRUE(factory->initialize());
    ASSERT_TRUE(factory->configure(&answering));
    callManagerAdded(callManager(), 7);
    const LogRecorder log;
    callManagerRemoved(callManager());
    EXPECT_EQ(answering.events,
        QStringList(
            {"provider added " + providerId(), "provider removed " + providerId(), "provider added " + providerId()}));
    EXPECT_EQ(log.startingWith("warning"), QStringList());
    factory.reset(); // before its host
}

TEST_F(Factory, ProviderIsScheduledForDeletionOnlyOnceTheHostHasLetItGo)
{
    AnsweringHost answering;
    QPointer<AbstractVoiceCallProvider> provider;
    bool wasThere = false;
    answering.whenRemoved = [&] {
        // Deletes it now if that is due.
        QCoreApplication::sendPostedEvents(provider, QEvent::DeferredDelete);
        wasThere = !provider.isNull();
    };
    ASSERT_TRUE(factory->initialize());
    ASSERT_TRUE(factory->configure(&answering));
    callManagerAdded(callManager(), 7);
    provider = answering.providers.value(0);
    callManagerRemoved(callManager());
    EXPECT_TRUE(wasThere);
    factory.reset(); // before its host
}

TEST_F(Factory, ProviderIsStillInTheTableWhileItsCallsAreRemoved)
{
    bringUp();
    ASSERT_TRUE(application.registerCallManager("/m"));
    application.announce("/m", "/m/c1", calls);
    ASSERT_TRUE(settle());
    const LogRecorder log;
    QObject::connect(host.providers.value(0), &AbstractVoiceCallProvider::voiceCallRemoved,
        [&] { callManagerAdded(callManager(), 8); });
    callManagerRemoved(callManager());
    EXPECT_EQ(log.startingWith("warning voicecall: ").filter("Already registered").size(), 1);
}

TEST_F(Factory, AnApplicationThatComesBackGetsAProviderOfItsNewName)
{
    bringUp();
    ASSERT_TRUE(application.registerCallManager("/m"));
    application.leave();
    ASSERT_TRUE(waitFor([&] { return host.providers.isEmpty(); }));
    ScriptedApplication again;
    ASSERT_TRUE(again.registerCallManager("/m"));
    EXPECT_EQ(host.events.last(), QStringLiteral("provider added ringlet/%1@/m").arg(again.name()));
}

// --- What is sent on

namespace {

class Relay : public Factory
{
protected:
    Relay()
    {
        listener.subscribe(QStringLiteral("type='signal',interface='%1'").arg(managerInterface));
        bringUp();
    }

    QStringList heard()
    {
        settle();
        listener.settle();
        return listener.signalsHeard().filter(managerInterface);
    }

    QString added(const QString &arguments) const
    {
        return QStringLiteral("%1 %2.InterfacesAdded('%3', %4)")
            .arg(servicePath, managerInterface, application.name(), arguments);
    }

    QString removed(const QString &arguments) const
    {
        return QStringLiteral("%1 %2.InterfacesRemoved('%3', %4)")
            .arg(servicePath, managerInterface, application.name(), arguments);
    }

    ScriptedApplication listener;
};

} // namespace

TEST_F(Relay, ReportsOfCallsAreSentOnOnceWithTheApplicationsName)
{
    ASSERT_TRUE(application.registerCallManager("/m"));
    application.announce("/m", "/m/c1", "{'zelkovar.Call.Call1': {'Status': <uint32 3>}, 'test.Own': {'P': <'x'>}}");
    application.announce("/m", "/m/c1", "{'zelkovar.Call.DTMF1': {}}");
    application.withdraw("/m", "/m/c1", {"zelkovar.Call.DTMF1", "test.Unknown"});
    application.withdraw("/m", "/m/c1", {"zelkovar.Call.Call1"});
    EXPECT_EQ(heard(),
        QStringList(
            {added("objectpath '/m/c1', {'test.Own': {'P': <'x'>}, 'zelkovar.Call.Call1': {'Status': <uint32 3>}}"),
                added("objectpath '/m/c1', {'zelkovar.Call.DTMF1': @a{sv} {}}"),
                removed("objectpath '/m/c1', ['zelkovar.Call.DTMF1', 'test.Unknown']"),
                removed("objectpath '/m/c1', ['zelkovar.Call.Call1']")}));
}

TEST_F(Relay, ReportsOfOtherObjectsAreNotSentOn)
{
    ASSERT_TRUE(application.registerCallManager("/m"));
    application.announce("/m", "/m/c1", "{'zelkovar.Call.DTMF1': {}}");
    application.withdraw("/m", "/m/c1", {"zelkovar.Call.Call1"});
    EXPECT_EQ(heard(), QStringList());
}

TEST_F(Relay, DepartureIsSentOnAsTheRemovalOfEveryCall)
{
    application.setObjects("{objectpath '/m/c1': {'zelkovar.Call.Call1': {}, 'test.Own': {}}}");
    ASSERT_TRUE(application.registerCallManager("/m"));
    ASSERT_TRUE(settle());
    ASSERT_EQ(heard().size(), 1);
    application.leave();
    ASSERT_TRUE(waitFor([&] { return host.providers.isEmpty(); }));
    ASSERT_TRUE(listener.settle());
    EXPECT_EQ(listener.signalsHeard().filter(managerInterface).last(),
        removed("objectpath '/m/c1', ['test.Own', 'zelkovar.Call.Call1']"));
}

TEST_F(Relay, ComplexValuesAreSentOnUntouched)
{
    ASSERT_TRUE(application.registerCallManager("/m"));
    const QString properties = QStringLiteral(
        "{'Array': <[1, 2, 3]>, 'Bytes': <b'abc'>, 'Dict': <{uint32 1: 'one', 2: 'two'}>, "
        "'Double': <0.5>, 'EmptyDict': <@a{sa{sv}} {}>, 'EmptyStructs': <@a(sa{sv}) []>, "
        "'Nested': <<<<[{'deep': <(1, [<'x'>], {byte 0x01: <@as []>})>}]>>>>, 'Path': <objectpath '/a'>, "
        "'Signature': <signature 'a{sv}'>, 'Strings': <['a', '']>, 'Struct': <('x', (true, [int64 5]))>}");
    application.announce("/m", "/m/c1", QStringLiteral("{'zelkovar.Call.Call1': %1}").arg(properties));
    EXPECT_EQ(
        heard(), QStringList(added(QStringLiteral("objectpath '/m/c1', {'zelkovar.Call.Call1': %1}").arg(properties))));
}

TEST_F(Relay, AFileDescriptorByItselfIsSentOn)
{
    ASSERT_TRUE(application.registerCallManager("/m"));
    application.announce("/m", "/m/c1", "{'zelkovar.Call.Call1': {'File': <handle 0>, 'Status': <uint32 3>}}", {0});
    EXPECT_EQ(heard(),
        QStringList(added("objectpath '/m/c1', {'zelkovar.Call.Call1': {'File': <handle 0>, 'Status': <uint32 3>}}")));
}

TEST_F(Relay, APropertyWithAFileDescriptorInsideAContainerIsLeftOutAndTheOthersAreSentOn)
{
    ASSERT_TRUE(application.registerCallManager("/m"));
    application.announce("/m", "/m/c1",
        "{'zelkovar.Call.Call1': {'Array': <[handle 0]>, 'Dict': <{'a': handle 0}>, 'Key': <{handle 0: 'a'}>, "
        "'Struct': <(1, handle 0)>, 'Nested': <<[<(1, {'x': <handle 0>})>]>>, 'Pairs': <[('a', 1)]>}, "
        "'test.Own': {'Files': <[handle 0]>}}",
        {0});
    EXPECT_EQ(heard(),
        QStringList(
            added("objectpath '/m/c1', {'test.Own': @a{sv} {}, 'zelkovar.Call.Call1': {'Pairs': <[('a', 1)]>}}")));
}
