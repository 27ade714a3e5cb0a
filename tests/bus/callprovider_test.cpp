// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "callfixture.h"
#include "calls/callhandler.h"

#include <QtCore/QPointer>

class CallProviderTest : public CallFixture
{
};

TEST_F(CallProviderTest, NamesItselfByBusNameAndPathBehindItsType)
{
    const CallProvider other(DBusCallManager(":1.7", QDBusObjectPath("/app/calls")), QString(), &host, nullptr);
    EXPECT_EQ(other.providerId(), "ringlet/:1.7@/app/calls");
    EXPECT_EQ(provider->providerId(), "ringlet/" + application.name() + "@/m");
}

TEST_F(CallProviderTest, HasTheTypeRinglet) { EXPECT_EQ(provider->providerType(), "ringlet"); }

TEST_F(CallProviderTest, GivesOutWhatItWasMadeWith)
{
    QObject parent;
    auto *other
        = new CallProvider(DBusCallManager(":1.7", QDBusObjectPath("/m")), "org.example.Dialer", &host, &parent);
    EXPECT_EQ(other->appId(), "org.example.Dialer");
    EXPECT_EQ(other->manager(), &host);
    EXPECT_EQ(other->parent(), &parent);
    EXPECT_TRUE(other->voiceCalls().isEmpty());
}

TEST_F(CallProviderTest, HasNoErrorBeforeTheFirstDialling) { EXPECT_EQ(provider->errorString(), ""); }

TEST_F(CallProviderTest, RefusesToDialWhateverTheNumberAndKeepsTheReason)
{
    EXPECT_FALSE(provider->dial("123"));
    EXPECT_EQ(provider->errorString(), "cannot dial with this provider");
    EXPECT_FALSE(provider->dial(QString()));
    EXPECT_EQ(provider->errorString(), "cannot dial with this provider");
    ASSERT_TRUE(addCall());
    EXPECT_EQ(provider->errorString(), "cannot dial with this provider");
}

TEST_F(CallProviderTest, DiallingReachesNeitherHostNorApplication)
{
    provider->dial("123");
    EXPECT_EQ(commands(), QStringList());
    EXPECT_EQ(host.events, QStringList());
}

TEST_F(CallProviderTest, DialsByNameThroughTheHostsInterface)
{
    bool accepted = true;
    ASSERT_TRUE(QMetaObject::invokeMethod(
        host.providers.first(), "dial", Q_RETURN_ARG(bool, accepted), Q_ARG(QString, QString("123"))));
    EXPECT_FALSE(accepted);
}

TEST_F(CallProviderTest, AnnouncesACallOnceInThisOrderInterfacesThenCallThenList)
{
    ASSERT_TRUE(addCall());
    EXPECT_EQ(
        host.events, QStringList({"interfaces added /m/c1 zelkovar.Call.Call1", "call added h1", "calls changed"}));
    EXPECT_EQ(provider->voiceCalls(), QList<AbstractVoiceCallHandler *>({host.calls["h1"]}));
}

TEST_F(CallProviderTest, ListsTheCallBeforeAnybodyHearsOfIt)
{
    int listed = -1;
    QObject::connect(provider, &CallProvider::interfacesAdded, &host, [&] { listed = provider->voiceCalls().size(); });
    ASSERT_TRUE(addCall());
    EXPECT_EQ(listed, 1);
}

TEST_F(CallProviderTest, HandlersAreItsChildrenAndNameItAsTheirProvider)
{
    AbstractVoiceCallHandler *handler = addCall();
    ASSERT_TRUE(handler);
    EXPECT_EQ(handler->parent(), provider);
    EXPECT_EQ(handler->provider(), provider);
}

TEST_F(CallProviderTest, PassesTheWholeReportToANewCall)
{
    AbstractVoiceCallHandler *handler = addCall(active, {tones, audioControl});
    ASSERT_TRUE(handler);
    EXPECT_TRUE(handler->supportsDtmf());
    EXPECT_EQ(commands().size(), 1) << "audio control is wired at once";
    EXPECT_EQ(host.events.value(0),
        "interfaces added /m/c1 zelkovar.Call.AudioControl1,zelkovar.Call.Call1,zelkovar.Call.DTMF1");
}

TEST_F(CallProviderTest, ReEmitsAReportWithTheObjectAndTheMapAsReceived)
{
    DBusCallObject object;
    QVariantMapMap received;
    QObject::connect(provider, &CallProvider::interfacesAdded, &host,
        [&](const DBusCallObject &call, const QVariantMapMap &interfaces) {
            object = call;
            received = interfaces;
        });
    ASSERT_TRUE(addCall("'Uri': <'sip:a@b'>"));
    EXPECT_EQ(object, DBusCallObject(application.name(), QDBusObjectPath("/m/c1")));
    EXPECT_EQ(received, QVariantMapMap({{"zelkovar.Call.Call1", {{"Uri", "sip:a@b"}}}}));
}

TEST_F(CallProviderTest, ASecondReportMakesNoSecondCallAndIsReEmitted)
{
    ASSERT_TRUE(addCall());
    host.events.clear();
    EXPECT_FALSE(addCall());
    EXPECT_EQ(host.events, QStringList({"interfaces added /m/c1 zelkovar.Call.Call1"}));
    EXPECT_EQ(provider->voiceCalls().size(), 1);
}

TEST_F(CallProviderTest, AHandlerTakesUpItsNewInterfacesBeforeTheReportIsReEmitted)
{
    ASSERT_TRUE(addCall());
    host.events.clear();
    application.announce(managerPath, callPath, "{'zelkovar.Call.DTMF1': {}}");
    settle();
    EXPECT_EQ(host.events, QStringList({"h1 dtmf true", "interfaces added /m/c1 zelkovar.Call.DTMF1"}));
}

TEST_F(CallProviderTest, ACallInTheFirstFetchAndInALiveSignalIsOneCall)
{
    const QString path = "/racing";
    application.holdSnapshot();
    application.setObjects("{'/racing/c1': " + callInterfaces(active) + "}");
    ASSERT_TRUE(application.registerCallManager(path));
    ASSERT_EQ(host.providers.size(), 2);
    int reports = 0;
    QObject::connect(
        qobject_cast<CallProvider *>(host.providers.at(1)), &CallProvider::interfacesAdded, &host, [&] { ++reports; });
    host.events.clear();

    application.announce(path, "/racing/c1", callInterfaces(active));
    ASSERT_TRUE(waitFor([&] { return reports == 1; }));
    application.releaseSnapshot();
    ASSERT_TRUE(waitFor([&] { return reports == 2; }));
    EXPECT_EQ(host.events, QStringList({"call added h1", "calls changed"}));
}

TEST_F(CallProviderTest, CallsOfTheFirstFetchAreAnnouncedInTheOrderOfTheirPaths)
{
    application.setObjects("{'/n/c2': " + callInterfaces({}) + ", '/n/c1': " + callInterfaces({}) + "}");
    host.events.clear();
    ASSERT_TRUE(application.registerCallManager("/n"));
    ASSERT_TRUE(waitFor([&] { return host.calls.size() == 2; }));
    ASSERT_EQ(host.providers.size(), 2);
    EXPECT_EQ(host.events,
        QStringList({"provider added ringlet/" + application.name() + "@/n", "call added h1", "calls changed",
            "call added h2", "calls changed"}));
    // Which of the two is which shows when one of them is told something.
    host.calls["h1"]->answer();
    EXPECT_EQ(commands(), QStringList({"/n/c1 zelkovar.Call.Call1.Accept()"}));
}

TEST_F(CallProviderTest, AsksTheHostForOneIdPerCall)
{
    ASSERT_TRUE(addCall());
    addCall();
    application.announce(managerPath, "/m/other", "{'zelkovar.Call.DTMF1': {}}");
    AbstractVoiceCallHandler *second = addCall({}, {}, "/m/c2");
    ASSERT_TRUE(second);
    EXPECT_EQ(second->handlerId(), "h2");
}

TEST_F(CallProviderTest, IgnoresAnObjectThatIsNoCall)
{
    application.announce(managerPath, callPath, "{'zelkovar.Call.DTMF1': {}, 'zelkovar.Call.AudioControl1': {}}");
    application.announce(managerPath, "/m/c2", "{}");
    application.announce(managerPath, "/m/c3", "{'zelkovar.Call.call1': {}, 'zelkovar.Call.Call': {}}");
    EXPECT_EQ(commands(), QStringList());
    EXPECT_EQ(host.events, QStringList());
    EXPECT_TRUE(provider->voiceCalls().isEmpty());
}

TEST_F(CallProviderTest, ForgetsWhatAnObjectShowedBeforeItBecameACall)
{
    application.announce(managerPath, callPath, "{'zelkovar.Call.DTMF1': {}, 'zelkovar.Call.AudioControl1': {}}");
    AbstractVoiceCallHandler *handler = addCall();
    ASSERT_TRUE(handler);
    EXPECT_FALSE(handler->supportsDtmf());
    EXPECT_EQ(commands(), QStringList());
}

TEST_F(CallProviderTest, SaysThatInterfacesWentBeforeItSaysThatTheCallWent)
{
    ASSERT_TRUE(addCall());
    host.events.clear();
    application.withdraw(managerPath, callPath, {"zelkovar.Call.Call1"});
    settle();
    EXPECT_EQ(
        host.events, QStringList({"interfaces removed /m/c1 zelkovar.Call.Call1", "call removed h1", "calls changed"}));
    EXPECT_TRUE(provider->voiceCalls().isEmpty());
}

TEST_F(CallProviderTest, StillListsTheCallWhileItTellsOfInterfacesAndNoLongerWhenItTellsOfTheCall)
{
    ASSERT_TRUE(addCall());
    QList<int> listed;
    QObject::connect(
        provider, &CallProvider::interfacesRemoved, &host, [&] { listed.append(provider->voiceCalls().size()); });
    QObject::connect(provider, &AbstractVoiceCallProvider::voiceCallRemoved, &host,
        [&] { listed.append(provider->voiceCalls().size()); });
    application.withdraw(managerPath, callPath, {"zelkovar.Call.Call1"});
    settle();
    EXPECT_EQ(listed, QList<int>({1, 0}));
}

TEST_F(CallProviderTest, ReEmitsARemovalWithTheObjectAndTheListAsReceived)
{
    ASSERT_TRUE(addCall());
    DBusCallObject object;
    QStringList received;
    QObject::connect(provider, &CallProvider::interfacesRemoved, &host,
        [&](const DBusCallObject &call, const QStringList &interfaces) {
            object = call;
            received = interfaces;
        });
    const QStringList interfaces = {"z.Never.Seen", "zelkovar.Call.Call1", "a.Third"};
    application.withdraw(managerPath, callPath, interfaces);
    settle();
    EXPECT_EQ(object, DBusCallObject(application.name(), QDBusObjectPath("/m/c1")));
    EXPECT_EQ(received, interfaces);
    EXPECT_TRUE(host.calls.isEmpty());
}

TEST_F(CallProviderTest, DeletesARemovedCallOnlyOnceControlIsBackInTheEventLoop)
{
    const QPointer<QObject> handler = addCall();
    ASSERT_TRUE(handler);
    provider->onInterfacesRemoved(application.name(), QDBusObjectPath(callPath), {"zelkovar.Call.Call1"});
    EXPECT_EQ(host.events.value(host.events.size() - 2), "call removed h1");
    EXPECT_TRUE(handler) << "the host may still use the pointer";
    EXPECT_TRUE(waitFor([&] { return handler.isNull(); }));
}

TEST_F(CallProviderTest, SchedulesTheDeletionOfARemovedCallBeforeItTellsOfTheRemoval)
{
    const QPointer<QObject> handler = addCall();
    ASSERT_TRUE(handler);
    bool wasScheduled = false;
    QObject::connect(provider, &AbstractVoiceCallProvider::voiceCallRemoved, &host, [&] {
        // Deletes it now if that is due.
        QCoreApplication::sendPostedEvents(handler, QEvent::DeferredDelete);
        wasScheduled = handler.isNull();
    });
    provider->onInterfacesRemoved(application.name(), QDBusObjectPath(callPath), {"zelkovar.Call.Call1"});
    EXPECT_TRUE(wasScheduled);
}

TEST_F(CallProviderTest, LosingOtherInterfacesOrNoneLeavesTheCallAsItIs)
{
    const QPointer<AbstractVoiceCallHandler> handler = addCall(active, {tones, audioControl});
    host.events.clear();
    application.withdraw(managerPath, callPath, {audioControl});
    application.withdraw(managerPath, callPath, {tones});
    application.withdraw(managerPath, callPath, {});
    application.withdraw(managerPath, callPath, {"zelkovar.Call.call1", "zelkovar.Call.Call"});
    settle();
    EXPECT_EQ(host.events,
        QStringList(
            {"interfaces removed /m/c1 zelkovar.Call.AudioControl1", "interfaces removed /m/c1 zelkovar.Call.DTMF1",
                "interfaces removed /m/c1 ", "interfaces removed /m/c1 zelkovar.Call.call1,zelkovar.Call.Call"}));
    ASSERT_TRUE(handler);
    EXPECT_TRUE(handler->supportsDtmf());
    EXPECT_EQ(provider->voiceCalls().size(), 1);
}

TEST_F(CallProviderTest, ARemovalOfWhatIsNoCallSaysNothing)
{
    application.announce(managerPath, "/m/other", "{'zelkovar.Call.DTMF1': {}}");
    application.withdraw(managerPath, "/m/other", {tones});
    application.withdraw(managerPath, "/m/unknown", {"zelkovar.Call.Call1"});
    ASSERT_TRUE(addCall());
    application.withdraw(managerPath, callPath, {"zelkovar.Call.Call1"});
    settle();
    host.events.clear();
    application.withdraw(managerPath, callPath, {"zelkovar.Call.Call1"});
    settle();
    EXPECT_EQ(host.events, QStringList());
}

TEST_F(CallProviderTest, ACallThatGoesAndComesBackIsANewCallWithANewId)
{
    const QPointer<AbstractVoiceCallHandler> first = addCall(active);
    application.withdraw(managerPath, callPath, {"zelkovar.Call.Call1"});
    AbstractVoiceCallHandler *second = addCall(incoming);
    ASSERT_TRUE(second);
    EXPECT_TRUE(first.isNull());
    EXPECT_EQ(second->handlerId(), "h2");
    EXPECT_EQ(second->status(), AbstractVoiceCallHandler::StatusIncoming);
    EXPECT_EQ(host.events,
        QStringList({"interfaces added /m/c1 zelkovar.Call.Call1", "call added h1", "calls changed",
            "interfaces removed /m/c1 zelkovar.Call.Call1", "call removed h1", "calls changed",
            "interfaces added /m/c1 zelkovar.Call.Call1", "call added h2", "calls changed"}));
}

TEST_F(CallProviderTest, TheSamePathOfAnotherApplicationIsAnotherCall)
{
    ScriptedApplication other;
    ASSERT_TRUE(addCall());
    provider->onInterfacesAdded(other.name(), QDBusObjectPath(callPath), {{"zelkovar.Call.Call1", {}}});
    ASSERT_EQ(provider->voiceCalls().size(), 2);
    host.calls["h2"]->answer();
    settle();
    EXPECT_TRUE(waitFor([&] { return !other.commands().isEmpty(); }));
    EXPECT_EQ(other.commands(), QStringList({"/m/c1 zelkovar.Call.Call1.Accept()"}));
    EXPECT_EQ(commands(), QStringList());
}

TEST_F(CallProviderTest, AnObjectOutsideTheCallManagersPathIsTakenUpAsWell)
{
    AbstractVoiceCallHandler *handler = addCall(active, {}, "/elsewhere");
    ASSERT_TRUE(handler);
    changeStatus(7, "/elsewhere");
    EXPECT_EQ(handler->status(), AbstractVoiceCallHandler::StatusHeld);
}

TEST_F(CallProviderTest, RemovingItRemovesEachCallWithItsSignalsInTheOrderOfPaths)
{
    const QPointer<QObject> second = addCall({}, {tones}, "/m/c2");
    const QPointer<QObject> first = addCall({}, {}, "/m/c1");
    host.events.clear();
    provider->remove();
    EXPECT_EQ(host.events,
        QStringList({"interfaces removed /m/c1 zelkovar.Call.Call1", "call removed h2", "calls changed",
            "interfaces removed /m/c2 zelkovar.Call.Call1,zelkovar.Call.DTMF1", "call removed h1", "calls changed"}));
    EXPECT_TRUE(provider->voiceCalls().isEmpty());
    EXPECT_TRUE(first && second);
    EXPECT_TRUE(waitFor([&] { return !first && !second; }));
}

TEST_F(CallProviderTest, ItsDestructionTakesItsCallsWithoutAWord)
{
    CallProvider *other
        = new CallProvider(DBusCallManager(application.name(), QDBusObjectPath("/other")), QString(), &host, nullptr);
    host.addProvider(other);
    other->onInterfacesAdded(application.name(), QDBusObjectPath("/other/c1"),
        {{"zelkovar.Call.Call1", {{"Status", 5U}}}, {"zelkovar.Call.DTMF1", {}}});
    const QPointer<QObject> handler = other->voiceCalls().value(0);
    ASSERT_TRUE(handler);
    int told = 0;
    QObject::connect(other, &CallProvider::interfacesRemoved, &host, [&] { ++told; });
    host.events.clear();
    delete other;
    EXPECT_TRUE(handler.isNull());
    EXPECT_EQ(told, 0);
    EXPECT_EQ(host.events, QStringList());
    host.calls.clear();
}

TEST_F(CallProviderTest, KeepsTheCallsOfTwoCallManagersApart)
{
    ASSERT_TRUE(application.registerCallManager("/n"));
    ASSERT_EQ(host.providers.size(), 2);
    ASSERT_TRUE(addCall());
    application.announce("/n", "/n/c1", callInterfaces(active));
    settle();
    ASSERT_EQ(host.providers.at(1)->voiceCalls().size(), 1);
    EXPECT_EQ(provider->voiceCalls().size(), 1);
    EXPECT_EQ(host.providers.at(1)->voiceCalls().first()->provider(), host.providers.at(1));
}
