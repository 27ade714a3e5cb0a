// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// The life of a call through the real host and the real plug-in, each step seen from both sides.

#include "desktophost.h"
#include "printers.h"
#include "scriptedapplication.h"
#include "waitfor.h"

#include <csignal>
#include <gmock/gmock.h>

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

const QString manager = QStringLiteral("/app/calls");
const QString firstCall = QStringLiteral("/app/calls/1");
const QStringList callInterface = {QStringLiteral("zelkovar.Call.Call1")};

MATCHER_P(StartsWithText, prefix, "") { return arg.startsWith(prefix); }

// A call with everything that an application can offer.
QString fullCall(uint status, const QString &uri = QStringLiteral("sip:ada@example.org"), bool holdable = true)
{
    return QStringLiteral("{'zelkovar.Call.Call1': {'Status': <uint32 %1>, 'Incoming': <true>, 'Holdable': <%2>,"
                          " 'RemoteName': <'Ada'>, 'Uri': <'%3'>},"
                          " 'zelkovar.Call.DTMF1': {}, 'zelkovar.Call.AudioControl1': {}}")
        .arg(status)
        .arg(holdable ? QStringLiteral("true") : QStringLiteral("false"), uri);
}

class TypicalCall : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(host.start()) << host.program().errorOutput().toStdString(); }

    // The host ends cleanly whatever a test has left behind.
    void TearDown() override
    {
        if (host.program().isRunning()) {
            EXPECT_EQ(host.stop(), 0) << host.program().errorOutput().toStdString();
        }
    }

    void bringUp(ScriptedApplication &application, uint status, bool holdable = true)
    {
        ASSERT_TRUE(application.registerCallManager(manager, DesktopHost::name()));
        application.announce(manager, firstCall, fullCall(status, QStringLiteral("sip:ada@example.org"), holdable));
        ASSERT_TRUE(waitFor([&] { return !host.call().isEmpty(); }));
        // The host has handled the announcement, so it follows the call by now.
        ASSERT_TRUE(application.settle(DesktopHost::name()));
        application.forgetWhatArrived();
    }

    QStringList commandsAfterSettling(ScriptedApplication &application)
    {
        application.settle(DesktopHost::name());
        return application.commands();
    }

    DesktopHost host;
};

} // namespace

TEST_F(TypicalCall, RegistrationGivesTheHostAProviderBeforeItIsAnswered)
{
    ScriptedApplication application;
    ASSERT_TRUE(application.registerCallManager(manager, DesktopHost::name()));
    EXPECT_THAT(
        host.providers(), ElementsAre(QStringLiteral("ringlet ringlet/%1@%2").arg(application.name(), manager)));
}

TEST_F(TypicalCall, CallsOfTheSnapshotAppearWithEverythingTheApplicationTold)
{
    ScriptedApplication application;
    application.setObjects(QStringLiteral("{'%1': %2}").arg(firstCall, fullCall(3)));
    ASSERT_TRUE(application.registerCallManager(manager, DesktopHost::name()));
    ASSERT_TRUE(host.waitForStatus("incoming"));

    const QVariantMap call = host.call();
    EXPECT_EQ(call.value("LineId"), "Ada");
    EXPECT_EQ(call.value("Uri"), "sip:ada@example.org");
    EXPECT_EQ(call.value("Incoming"), true);
    EXPECT_EQ(call.value("Status"), 5);
    EXPECT_EQ(call.value("ProviderType"), "ringlet");
    EXPECT_EQ(call.value("ProviderId"), QStringLiteral("ringlet/%1@%2").arg(application.name(), manager));
    EXPECT_EQ(call.value("Holdable"), true);
    EXPECT_EQ(call.value("SupportsDtmf"), true);
    EXPECT_EQ(call.value("Ongoing"), false);
    EXPECT_EQ(call.value("SupportsMultiparty"), false);
    EXPECT_THAT(commandsAfterSettling(application),
        ElementsAre(StartsWithText(firstCall + " zelkovar.Call.AudioControl1.UpdateAudioRouteState(")));
}

TEST_F(TypicalCall, AnnouncedCallsAreBroadcastWithTheApplicationsName)
{
    ScriptedApplication application;
    ScriptedApplication listener;
    listener.subscribe("interface='zelkovar.Call.ServiceManager1'");
    listener.forgetWhatArrived();
    ASSERT_TRUE(application.registerCallManager(manager, DesktopHost::name()));
    application.announce(manager, firstCall, "{'zelkovar.Call.Call1': {'Status': <uint32 3>}}");
    application.withdraw(manager, firstCall, callInterface);
    ASSERT_TRUE(waitFor([&] { return listener.signalsHeard().size() == 2; }));
    EXPECT_THAT(listener.signalsHeard(),
        ElementsAre(QStringLiteral("/zelkovar/call/service zelkovar.Call.ServiceManager1.InterfacesAdded('%1', "
                                   "objectpath '%2', {'zelkovar.Call.Call1': {'Status': <uint32 3>}})")
                        .arg(application.name(), firstCall),
            QStringLiteral("/zelkovar/call/service zelkovar.Call.ServiceManager1.InterfacesRemoved("
                           "'%1', objectpath '%2', ['zelkovar.Call.Call1'])")
                .arg(application.name(), firstCall)));
}

TEST_F(TypicalCall, AnsweringSendsAcceptAndTheCallIsActiveWhenTheApplicationSaysSo)
{
    ScriptedApplication application;
    bringUp(application, 3);
    EXPECT_EQ(host.command("Answer"), QString());
    EXPECT_THAT(commandsAfterSettling(application), ElementsAre("/app/calls/1 zelkovar.Call.Call1.Accept()"));
    EXPECT_EQ(host.call().value("StatusText"), "incoming");

    application.changeStatus(firstCall, 5);
    EXPECT_TRUE(host.waitForStatus("active"));
    EXPECT_EQ(host.call().value("Ongoing"), true);
}

TEST_F(TypicalCall, DurationRunsWhileTheCallIsActive)
{
    ScriptedApplication application;
    bringUp(application, 5);
    EXPECT_TRUE(waitFor([&] { return host.call().value("Duration").toInt() >= 1; }));
}

TEST_F(TypicalCall, HoldAndReleaseReachTheApplicationAndItsStatusTheHost)
{
    ScriptedApplication application;
    bringUp(application, 5);
    EXPECT_EQ(host.command("Hold", {true}), QString());
    EXPECT_THAT(commandsAfterSettling(application), ElementsAre("/app/calls/1 zelkovar.Call.Call1.SetHold(true)"));

    application.changeStatus(firstCall, 7);
    ASSERT_TRUE(host.waitForStatus("held"));
    EXPECT_EQ(host.call().value("RemoteHeld"), true);
    EXPECT_EQ(host.command("Hold", {false}), QString());
    EXPECT_THAT(commandsAfterSettling(application), Contains("/app/calls/1 zelkovar.Call.Call1.SetHold(false)"));
    application.changeStatus(firstCall, 5);
    EXPECT_TRUE(host.waitForStatus("active"));
    EXPECT_EQ(host.call().value("RemoteHeld"), false);
}

TEST_F(TypicalCall, HoldingACallThatCannotBeHeldSendsBothMessages)
{
    ScriptedApplication application;
    bringUp(application, 5, false);
    EXPECT_EQ(host.command("Hold", {true}), QString());
    EXPECT_THAT(commandsAfterSettling(application),
        ElementsAre(
            "/app/calls/1 zelkovar.Call.Call1.Reject(uint32 1)", "/app/calls/1 zelkovar.Call.Call1.SetHold(true)"));
}

TEST_F(TypicalCall, TonesArriveAsOneString)
{
    ScriptedApplication application;
    bringUp(application, 5);
    EXPECT_EQ(host.command("SendDtmf", {QStringLiteral("12#")}), QString());
    EXPECT_THAT(commandsAfterSettling(application), ElementsAre("/app/calls/1 zelkovar.Call.DTMF1.SendDTMF('12#')"));
}

TEST_F(TypicalCall, CommandsThatAreNotOfferedSendNothing)
{
    ScriptedApplication application;
    bringUp(application, 5);
    EXPECT_EQ(host.command("Deflect", {QStringLiteral("sip:eve@example.org")}), QString());
    EXPECT_EQ(host.command("Merge", {QStringLiteral("1")}), QString());
    EXPECT_EQ(host.command("Split"), QString());
    EXPECT_THAT(commandsAfterSettling(application), IsEmpty());
    EXPECT_EQ(host.call().value("StatusText"), "active");
}

TEST_F(TypicalCall, MuteGoesBothWays)
{
    ScriptedApplication application;
    bringUp(application, 5);
    EXPECT_EQ(host.manage("Audio1", "SetMicrophoneMuted", {true}), QString());
    const QString input = host.property("Audio1", "InputDevice").toString();
    const QString output = host.property("Audio1", "OutputDevice").toString();
    const auto update = QStringLiteral("/app/calls/1 zelkovar.Call.AudioControl1.UpdateAudioRoute(%1, '%2', '%3')");
    EXPECT_THAT(commandsAfterSettling(application), ElementsAre(update.arg("true", input, output)));

    application.signal(firstCall, "zelkovar.Call.AudioControl1", "RequestMute", "false");
    EXPECT_TRUE(waitFor([&] { return host.property("Audio1", "MicrophoneMuted") == false; }));
    EXPECT_THAT(commandsAfterSettling(application), Contains(update.arg("false", input, output)));
}

TEST_F(TypicalCall, RequestsForAnUnknownDeviceOrWhileRingingChangeNothing)
{
    ScriptedApplication application;
    bringUp(application, 3);
    const QString output = host.property("Audio1", "OutputDevice").toString();
    application.signal(firstCall, "zelkovar.Call.AudioControl1", "RequestMute", "true");
    application.changeStatus(firstCall, 5);
    application.signal(firstCall, "zelkovar.Call.AudioControl1", "RequestAudioRoute", "'nowhere', 'nowhere'");
    EXPECT_THAT(commandsAfterSettling(application), IsEmpty());
    EXPECT_EQ(host.property("Audio1", "MicrophoneMuted"), false);
    EXPECT_EQ(host.property("Audio1", "OutputDevice"), output);
}

TEST_F(TypicalCall, DiallingIsRefusedWithTheReason)
{
    ScriptedApplication application;
    ASSERT_TRUE(application.registerCallManager(manager, DesktopHost::name()));
    const QString provider = QStringLiteral("ringlet/%1@%2").arg(application.name(), manager);
    EXPECT_EQ(host.manage("Manager1", "Dial", {provider, QStringLiteral("123")}),
        "org.tarnwickle.voicecall.Error.DialRefused");
    EXPECT_TRUE(host.table().isEmpty());
}

TEST_F(TypicalCall, HangingUpSendsTheReasonAndADisconnectedCallStaysUntilItIsWithdrawn)
{
    ScriptedApplication application;
    bringUp(application, 5);
    EXPECT_EQ(host.command("Hangup"), QString());
    EXPECT_THAT(commandsAfterSettling(application), ElementsAre("/app/calls/1 zelkovar.Call.Call1.Reject(uint32 1)"));
    application.changeStatus(firstCall, 0);
    ASSERT_TRUE(host.waitForStatus("disconnected"));
    ASSERT_TRUE(application.settle(DesktopHost::name()));
    EXPECT_THAT(host.table(), SizeIs(1));

    application.withdraw(manager, firstCall, callInterface);
    EXPECT_TRUE(host.waitForTable({}));
}

TEST_F(TypicalCall, ACallThatGoesAndComesBackIsANewCall)
{
    ScriptedApplication application;
    bringUp(application, 5);
    const QString before = host.call().value("HandlerId").toString();
    application.withdraw(manager, firstCall, callInterface);
    application.announce(manager, firstCall, fullCall(3));
    ASSERT_TRUE(host.waitForStatus("incoming"));
    EXPECT_NE(host.call().value("HandlerId").toString(), before);
    EXPECT_EQ(host.call().value("Duration"), 0);
}

TEST_F(TypicalCall, TwoApplicationsCarryCallsAtOnceAndHearTheirOwnCommandsOnly)
{
    ScriptedApplication first;
    ScriptedApplication second;
    ASSERT_TRUE(first.registerCallManager(manager, DesktopHost::name()));
    ASSERT_TRUE(second.registerCallManager(manager, DesktopHost::name()));
    first.announce(manager, firstCall, fullCall(5, "sip:ada@example.org"));
    second.announce(manager, firstCall, fullCall(3, "sip:bea@example.org"));
    ASSERT_TRUE(host.waitForTable({"sip:ada@example.org=active", "sip:bea@example.org=incoming"}));
    ASSERT_TRUE(first.settle(DesktopHost::name()));
    first.forgetWhatArrived();

    second.leave();
    ASSERT_TRUE(host.waitForTable({"sip:ada@example.org=active"}));
    EXPECT_EQ(host.command("Hangup"), QString());
    EXPECT_THAT(commandsAfterSettling(first), ElementsAre("/app/calls/1 zelkovar.Call.Call1.Reject(uint32 1)"));
    EXPECT_THAT(second.commands(), SizeIs(1)); // the audio state that it was given
}

TEST_F(TypicalCall, StatusFromAStrangerOrOfAnotherObjectIsIgnored)
{
    ScriptedApplication application;
    ScriptedApplication stranger;
    bringUp(application, 3);
    stranger.changeStatus(firstCall, 5);
    ASSERT_TRUE(stranger.settle(DesktopHost::name()));
    application.changeStatus("/app/calls/2", 5);
    application.changeStatus(manager, 5);
    ASSERT_TRUE(application.settle(DesktopHost::name()));
    EXPECT_EQ(host.call().value("StatusText"), "incoming");
}

TEST_F(TypicalCall, TheHostEndsCleanlyWithCallsUp)
{
    ScriptedApplication application;
    bringUp(application, 5);
    EXPECT_EQ(host.stop(), 0) << host.program().errorOutput().toStdString();
}

TEST_F(TypicalCall, CallsComeBackWhenTheHostIsRestarted)
{
    ScriptedApplication application;
    application.setObjects(QStringLiteral("{'%1': %2}").arg(firstCall, fullCall(5)));
    ASSERT_TRUE(application.registerCallManager(manager, DesktopHost::name()));
    ASSERT_TRUE(host.waitForStatus("active"));

    host.kill();
    ASSERT_TRUE(host.start());
    EXPECT_THAT(host.table(), IsEmpty());
    ASSERT_TRUE(application.registerCallManager(manager, DesktopHost::name()));
    EXPECT_TRUE(host.waitForStatus("active"));
}

class ApplicationKilled : public TypicalCall, public testing::WithParamInterface<int>
{
};

TEST_P(ApplicationKilled, TakesItsCallsAndItsProviderAlong)
{
    ScriptedApplication survivor;
    ASSERT_TRUE(survivor.registerCallManager("/survivor", DesktopHost::name()));
    {
        ScriptedApplication application;
        bringUp(application, uint(GetParam()));
    }
    EXPECT_TRUE(host.waitForTable({}));
    EXPECT_THAT(host.providers(), SizeIs(1));

    survivor.announce("/survivor", "/survivor/1", fullCall(3));
    EXPECT_TRUE(host.waitForStatus("incoming"));
}

INSTANTIATE_TEST_SUITE_P(InEveryStatus, ApplicationKilled, testing::Range(0, 9));
