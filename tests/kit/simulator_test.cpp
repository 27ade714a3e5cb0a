// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// The simulator's options, and the order in which it tells the host of its calls.

#include "kittest.h"
#include "scriptedapplication.h"
#include "waitfor.h"

#include <QtCore/QRegularExpression>

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

class Simulator : public KitTest
{
protected:
    bool start(const QStringList &arguments, const QStringList &environment = {})
    {
        return program.start(RINGLET_SIM, arguments, environment);
    }

    std::string errors() { return program.errorOutput().toStdString(); }

    std::string complaintAboutOptions(const QStringList &arguments)
    {
        start(arguments);
        EXPECT_EQ(program.waitForExit(), 2) << qPrintable(arguments.join(' '));
        EXPECT_THAT(program.lines(), IsEmpty());
        return errors();
    }

    QVariantMap callProperties(const QString &path)
    {
        return host.managedObjects(manager).value(QDBusObjectPath(path)).value("zelkovar.Call.Call1");
    }
};

// --- The order of events

TEST_F(Simulator, CallsMadeBeforeTheHostIsThereAreInItsFirstPicture)
{
    ASSERT_TRUE(start({}));
    ASSERT_TRUE(program.waitForOutput("waiting for host"));
    ASSERT_TRUE(type("incoming ann sip:ann@example.org"));
    ASSERT_TRUE(host.waitForWire("InterfacesAdded /ringlet/sim/ann"));
    host.forgetWire();
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(waitForLine("ann shown 3 incoming"));
    EXPECT_THAT(host.wire(),
        ElementsAre("RegisterCallManager /ringlet/sim", "GetManagedObjects /ringlet/sim: /ringlet/sim/ann=3"));
}

TEST_F(Simulator, CallsMadeDuringTheRegistrationAreKeptBackAndThenAnnouncedOnce)
{
    host.holdAnswers();
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(start({}));
    ASSERT_TRUE(host.waitForWire("GetManagedObjects /ringlet/sim"));
    ASSERT_TRUE(type("incoming ann sip:ann@example.org\nanswer ann"));
    EXPECT_TRUE(host.managedObjects(manager).isEmpty());
    EXPECT_THAT(host.wire(), ElementsAre("RegisterCallManager /ringlet/sim", "GetManagedObjects /ringlet/sim:"));

    host.forgetWire();
    host.answerRegistrations();
    ASSERT_TRUE(waitForLine("ann shown 5 active"));
    EXPECT_THAT(host.wire(), ElementsAre("InterfacesAdded /ringlet/sim/ann 5"));
    const QStringList lines = program.lines();
    EXPECT_LT(lines.indexOf("registered /ringlet/sim"), lines.indexOf("ann announced 5 active"));
}

TEST_F(Simulator, ACallThatEndsWhileItIsKeptBackHasNeverBeen)
{
    host.holdAnswers();
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(start({}));
    ASSERT_TRUE(host.waitForWire("GetManagedObjects /ringlet/sim"));
    ASSERT_TRUE(type("incoming ann sip:ann@example.org\nhangup ann"));
    host.forgetWire();
    host.answerRegistrations();
    ASSERT_TRUE(waitForLine("registered /ringlet/sim"));
    ASSERT_TRUE(host.settle(manager));
    EXPECT_THAT(host.wire(), IsEmpty());
}

TEST_F(Simulator, CallsKeptBackComeOutWhenTheHostRefusesOrDies)
{
    host.refuseWith("org.example.Error.NotToday");
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(start({}));
    ASSERT_TRUE(waitForLine("refused /ringlet/sim org.example.Error.NotToday \"not \\\"today\\\"\""));
    ASSERT_TRUE(type("incoming ann sip:ann@example.org"));
    EXPECT_TRUE(waitForLine("ann announced 3 incoming"));

    FakeHost next;
    next.holdAnswers();
    host.dropName();
    ASSERT_TRUE(next.takeName());
    ASSERT_TRUE(next.waitForWire("GetManagedObjects /ringlet/sim"));
    ASSERT_TRUE(type("incoming bob sip:bob@example.org"));
    EXPECT_THAT(linesThatStart("bob"), IsEmpty());
    next.dropName();
    EXPECT_TRUE(waitForLine("bob announced 3 incoming"));
}

TEST_F(Simulator, AStatusThatLeftTogetherWithTheAnnouncementIsSentAgain)
{
    startSimulator();
    host.forgetWire();
    program.type("incoming ann sip:ann@example.org\nanswer ann");
    ASSERT_TRUE(waitForLine("ann status 5 active again"));
    ASSERT_TRUE(host.settle(manager));
    EXPECT_THAT(host.wire(),
        ElementsAre("InterfacesAdded /ringlet/sim/ann 3", "StatusChanged /ringlet/sim/ann 5",
            "StatusChanged /ringlet/sim/ann 5"));
    EXPECT_TRUE(program.lines().contains("ann shown 3 incoming"));
}

TEST_F(Simulator, AskingAgainForWhatIsSendsNothing)
{
    startSimulator({"--incoming", "sip:ann@example.org"});
    updateAudioState("call1", false, "mic", "ear");
    ASSERT_TRUE(type("answer call1"));
    ASSERT_TRUE(host.settle(manager));
    host.forgetWire();
    ASSERT_TRUE(type("answer call1\nhold call1 off\nstatus call1 5\nmute call1 off\nroute call1 mic ear"));
    ASSERT_TRUE(host.settle(manager));
    EXPECT_THAT(host.wire(), IsEmpty());
    EXPECT_EQ(program.lines().count("call1 unchanged"), 5);
}

TEST_F(Simulator, AsksTheHostForNothingBeforeItHasSentItsAudio)
{
    startSimulator({"--incoming", "sip:ann@example.org"});
    ASSERT_TRUE(type("answer call1\nmute call1 on"));
    EXPECT_THAT(errors(), HasSubstr("call1 cannot ask for mute yet"));
    ASSERT_TRUE(type("route call1 mic ear"));
    EXPECT_THAT(errors(), HasSubstr("call1 cannot ask for a route yet: the host has sent it no UpdateAudioRouteState"));
    // An update alone is no state.
    updateAudioRoute("call1", false, "mic", "ear");
    ASSERT_TRUE(type("mute call1 on\ncheck call1 muted unknown"));
    EXPECT_EQ(program.errorOutput().count("call1 cannot ask for mute yet"), 2);
    EXPECT_THAT(errors(), testing::Not(HasSubstr("call1 muted is")));
    ASSERT_TRUE(host.settle(manager));
    EXPECT_THAT(host.wire().filter("Request"), IsEmpty());

    updateAudioState("call1", false, "mic", "ear");
    ASSERT_TRUE(type("mute call1 on\nroute call1 headset headset"));
    ASSERT_TRUE(host.settle(manager));
    EXPECT_THAT(host.wire().filter("Request"),
        ElementsAre("RequestMute /ringlet/sim/call1 true", "RequestAudioRoute /ringlet/sim/call1 headset headset"));
}

TEST_F(Simulator, ANewHostMustSendItsAudioAnew)
{
    startSimulator({"--incoming", "sip:ann@example.org"});
    callInterface("call1", "Accept");
    updateAudioState("call1", false, "mic", "ear");
    host.dropName();
    ASSERT_TRUE(waitForLine("host gone"));
    ASSERT_TRUE(type("check call1 shown no\ncheck call1 muted unknown\ncheck call1 devices 0"));
    EXPECT_THAT(errors(), testing::Not(HasSubstr(" is ")));
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(waitForLine("registered /ringlet/sim", 2));
    ASSERT_TRUE(type("mute call1 on"));
    EXPECT_THAT(errors(), HasSubstr("call1 cannot ask for mute yet"));
}

TEST_F(Simulator, WhatItShowsIsAtEveryStepWhatItHasTold)
{
    startSimulator({"--incoming", "sip:ann@example.org"});
    for (const char *step : {"incoming ann sip:ann@example.org tones=no", "outgoing bob sip:bob@example.org audio=no",
             "hangup call1", "incoming call1 sip:again@example.org", "hangup ann", "hangup bob", "hangup call1"}) {
        ASSERT_TRUE(type(step));
        const ObjectMap shown = host.managedObjects(manager);
        EXPECT_TRUE(shown == host.calls()) << step;
    }
    EXPECT_TRUE(host.calls().isEmpty());
}

TEST_F(Simulator, ACommandForACallThatHasGoneIsShown)
{
    startSimulator({"--incoming", "sip:ann@example.org", "--without", "hold"});
    callInterface("call1", "Reject", {1u});
    EXPECT_EQ(
        callInterface("call1", "SetHold", {true}).errorName(), QString("org.freedesktop.DBus.Error.UnknownObject"));
    EXPECT_TRUE(waitForLine("late /ringlet/sim/call1 SetHold"));
}

TEST_F(Simulator, AcceptOfADialingCallDoesNothing)
{
    startSimulator({"--outgoing", "sip:ann@example.org"});
    host.forgetWire();
    EXPECT_EQ(callInterface("call1", "Accept").type(), QDBusMessage::ReplyMessage);
    EXPECT_TRUE(waitForLine("call1 unchanged"));
    ASSERT_TRUE(host.settle(manager));
    EXPECT_THAT(host.wire(), IsEmpty());
}

TEST_F(Simulator, SetHoldOfACallThatCannotBeHeldDoesNothing)
{
    startSimulator({"--incoming", "sip:ann@example.org", "--without", "hold"});
    callInterface("call1", "Accept");
    ASSERT_TRUE(host.settle(manager));
    host.forgetWire();
    callInterface("call1", "SetHold", {true});
    EXPECT_TRUE(waitForLine("call1 command hold on"));
    ASSERT_TRUE(host.settle(manager));
    EXPECT_THAT(host.wire(), IsEmpty());
}

TEST_F(Simulator, NeverWaitsForAnAnswerFromTheBus)
{
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(start({"--incoming", "sip:ann@example.org"}, {"Q_DBUS_BLOCKING_CALL_MAIN_THREAD_WARNING_MS=0"}));
    ASSERT_TRUE(waitForLine("call1 shown 3 incoming"));
    callInterface("call1", "Accept");
    updateAudioState("call1", false, "mic", "ear");
    ASSERT_TRUE(type("mute call1 on\nquit"));
    EXPECT_EQ(program.waitForExit(), 0);
    EXPECT_THAT(errors(), testing::Not(HasSubstr("QDBus")));
}

TEST_F(Simulator, AnInterfaceThatTheCallLacksCannotBeCalled)
{
    startSimulator({"--incoming", "sip:ann@example.org", "--without", "tones"});
    EXPECT_EQ(host.call("/ringlet/sim/call1", "zelkovar.Call.DTMF1", "SendDTMF", {"1"}).errorName(),
        QString("org.freedesktop.DBus.Error.UnknownInterface"));
    EXPECT_THAT(linesThatStart("call1 command"), IsEmpty());
}

TEST_F(Simulator, OnlyTheHostIsObeyedUnlessEverybodyIs)
{
    startSimulator({"--incoming", "sip:ann@example.org"});
    ScriptedApplication stranger;
    EXPECT_EQ(stranger.call(host.application(), "/ringlet/sim/call1", "zelkovar.Call.Call1", "Accept"),
        "org.freedesktop.DBus.Error.AccessDenied");
    EXPECT_THAT(linesThatStart("call1 command"), IsEmpty());
    type("quit");
    EXPECT_EQ(program.waitForExit(), 0);
    startSimulator({"--incoming", "sip:ann@example.org", "--anyone"});
    EXPECT_EQ(stranger.call(host.application(), "/ringlet/sim/call1", "zelkovar.Call.Call1", "Accept"), "()");
    EXPECT_TRUE(waitForLine("call1 status 5 active"));
}

// --- Options

TEST_F(Simulator, RegistersEveryManagerThatIsGiven)
{
    manager = "/first";
    startSimulator({"--manager", "/first", "--manager", "/second/one"});
    ASSERT_TRUE(waitForLine("registered /second/one"));
    ASSERT_TRUE(type("incoming ann sip:ann@example.org manager=/second/one\nincoming bob sip:bob@example.org"));
    EXPECT_TRUE(waitForLine("ann shown 3 incoming"));
    EXPECT_EQ(host.managedObjects("/first").keys(), QList<QDBusObjectPath>{QDBusObjectPath("/first/bob")});
    EXPECT_EQ(host.managedObjects("/second/one").keys(), QList<QDBusObjectPath>{QDBusObjectPath("/second/one/ann")});
    EXPECT_EQ(host.wire().count("RegisterCallManager /first"), 1);
    EXPECT_EQ(host.wire().count("RegisterCallManager /second/one"), 1);
}

TEST_F(Simulator, StartsWithTheCallsOfTheCommandLineInItsOrder)
{
    startSimulator({"--outgoing", "sip:a@example.org", "--incoming", "sip:b@example.org", "--outgoing",
        "sip:c@example.org", "--name", "Example"});
    EXPECT_EQ(host.managedObjects(manager).size(), 3);
    const char *const addresses[] = {"sip:a@example.org", "sip:b@example.org", "sip:c@example.org"};
    for (int i = 0; i < 3; ++i) {
        const QVariantMap call = callProperties(QString("/ringlet/sim/call%1").arg(i + 1));
        EXPECT_EQ(call.value("Uri"), QVariant(addresses[i]));
        EXPECT_EQ(call.value("RemoteName"), QVariant("Example"));
        EXPECT_EQ(call.value("Incoming"), QVariant(i == 1));
        EXPECT_EQ(call.value("Status"), QVariant(i == 1 ? 3u : 2u));
    }
}

TEST_F(Simulator, LeavesOutTheFeaturesThatAreNotWanted)
{
    startSimulator(
        {"--incoming", "sip:a@example.org", "--without", "tones", "--without", "audio", "--without", "hold"});
    EXPECT_EQ(host.managedObjects(manager).value(QDBusObjectPath("/ringlet/sim/call1")).keys(),
        QStringList{"zelkovar.Call.Call1"});
    EXPECT_EQ(callProperties("/ringlet/sim/call1").value("Holdable"), QVariant(false));
}

TEST_F(Simulator, HelpShowsEveryOptionAndCommand)
{
    ASSERT_TRUE(start({"--help"}));
    EXPECT_EQ(program.waitForExit(), 0);
    const QString help = program.lines().join('\n');
    for (const char *word : {"--host", "--manager", "--incoming", "--outgoing", "--name", "--without", "--script",
             "--scenario", "--list-scenarios", "--stay", "--help", "--version", "\n  incoming", "\n  outgoing",
             "\n  answer", "\n  hangup", "\n  hold", "\n  mute", "\n  route", "\n  status", "\n  many", "\n  raw",
             "\n  raw NAME signal", "\n  calls", "\n  check", "\n  help", "\n  quit", "wait", "until", "timeout",
             "pause", "Exit code"})
        EXPECT_TRUE(help.contains(word)) << word;
}

TEST_F(Simulator, RunsAScenarioByItsName)
{
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(start({"--scenario", "missed-call"}));
    EXPECT_EQ(program.waitForExit(), 0) << errors();
    ASSERT_TRUE(host.waitForWire("InterfacesRemoved /ringlet/sim/ann"));
    EXPECT_THAT(host.wire().filter("/ringlet/sim/ann"),
        ElementsAre("InterfacesAdded /ringlet/sim/ann 3", "StatusChanged /ringlet/sim/ann 1",
            "InterfacesRemoved /ringlet/sim/ann zelkovar.Call.AudioControl1 zelkovar.Call.Call1 zelkovar.Call.DTMF1"));
}

TEST_F(Simulator, AScenarioThatFailsIsNamedWithItsLine)
{
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(start({"--scenario", "many-calls", "--incoming", "sip:one.more@example.org"}));
    EXPECT_EQ(program.waitForExit(), 1);
    EXPECT_EQ(errors(), "ringlet-sim: many-calls:12: number of calls is \"51\", not \"50\"\n");
}

TEST_F(Simulator, ListsItsScenariosWithALineForEach)
{
    ASSERT_TRUE(start({"--list-scenarios"}));
    EXPECT_EQ(program.waitForExit(), 0);
    EXPECT_GE(program.lines().size(), 25);
    EXPECT_THAT(program.lines().filter(QRegularExpression("^missed-call  +A call rings, .*\\.$")), testing::SizeIs(1));
}

TEST_F(Simulator, VersionIsOneLine)
{
    ASSERT_TRUE(start({"--version"}));
    EXPECT_EQ(program.waitForExit(), 0);
    ASSERT_EQ(program.lines().size(), 1);
    EXPECT_TRUE(program.lines().constFirst().startsWith("ringlet-sim 0"));
}

TEST_F(Simulator, NamesWhatIsWrongOnTheCommandLine)
{
    EXPECT_THAT(complaintAboutOptions({"--explode"}), HasSubstr("explode"));
    EXPECT_THAT(complaintAboutOptions({"sip:ann@example.org"}), HasSubstr("\"sip:ann@example.org\" is no option"));
    EXPECT_THAT(complaintAboutOptions({"--host", "host"}), HasSubstr("--host: \"host\" is no bus name"));
    EXPECT_THAT(complaintAboutOptions({"--manager", "calls"}), HasSubstr("--manager: \"calls\" is no path"));
    EXPECT_THAT(complaintAboutOptions({"--manager", "/"}), HasSubstr("--manager: \"/\" is no path"));
    EXPECT_THAT(complaintAboutOptions({"--manager", "/a", "--manager", "/a"}), HasSubstr("/a is given twice"));
    EXPECT_THAT(
        complaintAboutOptions({"--manager", "/a", "--manager", "/a/b"}), HasSubstr("/a/b lies among the calls of /a"));
    EXPECT_THAT(complaintAboutOptions({"--without", "colour"}),
        AllOf(HasSubstr("\"colour\" is no feature"), HasSubstr("tones, hold and audio")));
    EXPECT_THAT(complaintAboutOptions({"--stay"}), HasSubstr("--stay goes with --script or --scenario only"));
    EXPECT_THAT(complaintAboutOptions({"--incoming"}), HasSubstr("incoming"));
    EXPECT_THAT(complaintAboutOptions({"--scenario", "nothing-like-it"}),
        HasSubstr("--scenario: there is no \"nothing-like-it\"; --list-scenarios shows what there is"));
    EXPECT_THAT(complaintAboutOptions({"--scenario", "busy", "--script", "busy.script"}),
        HasSubstr("--script and --scenario do not go together"));
}

} // namespace
