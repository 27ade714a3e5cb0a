// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// What every application of the kit has to do, whatever it is written on.

#include "kittest.h"
#include "privatebus.h"
#include "waitfor.h"

#include <csignal>

using testing::ElementsAre;

namespace {

struct Candidate
{
    const char *name;
    const char *file;
    /** They give it one incoming call, named call1. */
    QStringList arguments;
    const char *manager;
    const char *hangUp;
};

void PrintTo(const Candidate &candidate, std::ostream *stream) { *stream << candidate.name; }

const QString call1 = "call1";

class ApplicationTest : public KitTest, public testing::WithParamInterface<Candidate>
{
protected:
    ApplicationTest()
    {
        manager = QString::fromLatin1(GetParam().manager);
        path = manager + "/call1";
    }

    bool start(const QStringList &further = {}, const QStringList &environment = {})
    {
        return program.start(QString::fromLatin1(GetParam().file), GetParam().arguments + further, environment);
    }

    void startWithHost()
    {
        ASSERT_TRUE(host.takeName());
        ASSERT_TRUE(start());
        ASSERT_TRUE(program.waitForOutput("call1 shown"));
        ASSERT_TRUE(host.settle(manager));
        host.forgetWire();
    }

    bool settle() const { return host.settle(manager); }

    QString path;
    const QString removed = QStringLiteral("InterfacesRemoved %1 zelkovar.Call.AudioControl1 zelkovar.Call.Call1 "
                                           "zelkovar.Call.DTMF1");
};

TEST_P(ApplicationTest, ReportsItsCallToTheHostExactlyOnce)
{
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(start());
    ASSERT_TRUE(program.waitForOutput("call1 shown 3 incoming"));
    ASSERT_TRUE(settle());

    EXPECT_EQ(host.wire().count("RegisterCallManager " + manager), 1);
    // Hosts subscribe when an application registers: what came before reaches none.
    const QStringList heard = host.wire().mid(host.wire().indexOf("RegisterCallManager " + manager));
    const int inSnapshot = heard.count(QStringLiteral("GetManagedObjects %1: %2=3").arg(manager, path));
    const int announced = heard.count("InterfacesAdded " + path + " 3");
    EXPECT_EQ(inSnapshot + announced, 1) << qPrintable(host.wire().join(QLatin1Char('\n')));
}

TEST_P(ApplicationTest, ReportsAllThatTheHostReads)
{
    startWithHost();
    const InterfaceMap call = host.calls().value(QDBusObjectPath(path));
    EXPECT_EQ(call.keys(), (QStringList{"zelkovar.Call.AudioControl1", "zelkovar.Call.Call1", "zelkovar.Call.DTMF1"}));
    const QVariantMap properties = call.value("zelkovar.Call.Call1");
    EXPECT_EQ(properties.keys(),
        (QStringList{
            "Holdable", "Incoming", "LocalHandle", "LocalName", "RemoteHandle", "RemoteName", "Status", "Uri"}));
    EXPECT_EQ(properties.value("Incoming"), QVariant(true));
    EXPECT_EQ(properties.value("Holdable"), QVariant(true));
    EXPECT_EQ(properties.value("Status"), QVariant(3u));
    EXPECT_EQ(properties.value("RemoteName"), QVariant("Ann \"Ä\" Example"));
    EXPECT_EQ(properties.value("RemoteHandle"), QVariant("sip:ann@example.org"));
    EXPECT_EQ(properties.value("Uri"), QVariant("sip:ann@example.org"));
}

TEST_P(ApplicationTest, WaitsForAHostThatIsNotThereAndRegistersWhenItComes)
{
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitForLine("waiting for host org.tarnwickle.voicecall"));
    EXPECT_FALSE(program.lines().contains("host gone"));
    ASSERT_TRUE(host.takeName());
    EXPECT_TRUE(waitForLine("host appeared " + host.uniqueName()));
    EXPECT_TRUE(waitForLine("registered " + manager));
    EXPECT_TRUE(program.waitForOutput("call1 shown 3 incoming"));
}

TEST_P(ApplicationTest, LooksForTheHostUnderTheNameGiven)
{
    ASSERT_TRUE(host.takeName("org.example.Host"));
    ASSERT_TRUE(start({"--host", "org.example.Host"}));
    EXPECT_TRUE(waitForLine("registered " + manager));
}

TEST_P(ApplicationTest, AcceptMakesAnIncomingCallActive)
{
    startWithHost();
    EXPECT_EQ(callInterface(call1, "Accept").type(), QDBusMessage::ReplyMessage);
    EXPECT_TRUE(waitForLine("call1 status 5 active"));
    EXPECT_TRUE(waitForLine("call1 command accept"));
    ASSERT_TRUE(settle());
    EXPECT_THAT(host.wire(), ElementsAre("StatusChanged " + path + " 5"));
}

TEST_P(ApplicationTest, AcceptOfAnActiveCallSendsNothing)
{
    startWithHost();
    callInterface(call1, "Accept");
    EXPECT_EQ(callInterface(call1, "Accept").type(), QDBusMessage::ReplyMessage);
    EXPECT_TRUE(waitForLine("call1 command accept", 2));
    ASSERT_TRUE(settle());
    EXPECT_THAT(host.wire(), ElementsAre("StatusChanged " + path + " 5"));
}

TEST_P(ApplicationTest, RejectSendsTheFinalStatusAndThenTakesTheCallAway)
{
    startWithHost();
    EXPECT_EQ(callInterface(call1, "Reject", {1u}).type(), QDBusMessage::ReplyMessage);
    EXPECT_TRUE(waitForLine("call1 command reject 1"));
    EXPECT_TRUE(waitForLine("call1 removed"));
    ASSERT_TRUE(settle());
    EXPECT_THAT(host.wire(), ElementsAre("StatusChanged " + path + " 1", removed.arg(path)));
    EXPECT_TRUE(host.managedObjects(manager).isEmpty());
    EXPECT_EQ(callInterface(call1, "Accept").type(), QDBusMessage::ErrorMessage);
}

TEST_P(ApplicationTest, SetHoldHoldsAndResumesAnActiveCall)
{
    startWithHost();
    callInterface(call1, "Accept");
    callInterface(call1, "SetHold", {true});
    callInterface(call1, "SetHold", {true});
    callInterface(call1, "SetHold", {false});
    EXPECT_TRUE(waitForLine("call1 command hold on", 2));
    EXPECT_TRUE(waitForLine("call1 command hold off"));
    ASSERT_TRUE(settle());
    EXPECT_THAT(host.wire(),
        ElementsAre("StatusChanged " + path + " 5", "StatusChanged " + path + " 7", "StatusChanged " + path + " 5"));
}

TEST_P(ApplicationTest, SetHoldOfARingingCallSendsNothing)
{
    startWithHost();
    callInterface(call1, "SetHold", {true});
    EXPECT_TRUE(waitForLine("call1 command hold on"));
    ASSERT_TRUE(settle());
    EXPECT_TRUE(host.wire().isEmpty());
}

TEST_P(ApplicationTest, ShowsTones)
{
    startWithHost();
    host.call(path, "zelkovar.Call.DTMF1", "SendDTMF", {"1\"2#\n*"});
    EXPECT_TRUE(waitForLine("call1 command tones \"1\\\"2#\\n*\""));
}

TEST_P(ApplicationTest, ShowsTheHostsAudioAndDoesNotEchoIt)
{
    startWithHost();
    callInterface(call1, "Accept");
    EXPECT_EQ(updateAudioState(call1, false, "mic", "ear").type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(updateAudioRoute(call1, true, "mic", QString()).type(), QDBusMessage::ReplyMessage);
    EXPECT_TRUE(waitForLine("call1 audio-state muted=no input=\"mic\" output=\"ear\" devices=2 \"mic\" \"ear\""));
    EXPECT_TRUE(waitForLine("call1 audio-route muted=yes input=\"mic\" output=\"\""));
    ASSERT_TRUE(settle());
    EXPECT_THAT(host.wire(), ElementsAre("StatusChanged " + path + " 5"));
}

TEST_P(ApplicationTest, TheFarEndHangsUp)
{
    startWithHost();
    callInterface(call1, "Accept");
    ASSERT_TRUE(settle());
    host.forgetWire();
    program.type(QString::fromLatin1(GetParam().hangUp));
    ASSERT_TRUE(host.waitForWire("InterfacesRemoved"));
    EXPECT_THAT(host.wire(), ElementsAre("StatusChanged " + path + " 1", removed.arg(path)));
}

TEST_P(ApplicationTest, SendsTheStatusAgainWhenTheHostShowsAnOlderOne)
{
    host.keepQuiet();
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitFor([&] { return !host.calls().isEmpty(); }));
    const InterfaceMap reported = host.calls().value(QDBusObjectPath(path));
    callInterface(call1, "Accept");
    ASSERT_TRUE(settle());
    host.forgetWire();

    host.broadcast(path, reported);
    EXPECT_TRUE(waitForLine("call1 shown 3 incoming"));
    EXPECT_TRUE(waitForLine("call1 status 5 active again"));
    ASSERT_TRUE(settle());
    EXPECT_THAT(host.wire(), ElementsAre("StatusChanged " + path + " 5"));
}

TEST_P(ApplicationTest, SendsNothingWhenTheHostShowsTheStatusThatIs)
{
    startWithHost();
    host.broadcast(path, host.calls().value(QDBusObjectPath(path)));
    EXPECT_TRUE(waitForLine("call1 shown 3 incoming", 2));
    ASSERT_TRUE(settle());
    EXPECT_TRUE(host.wire().isEmpty());
}

TEST_P(ApplicationTest, HeedsNoBroadcastOfAStrangerOrOfAnotherApplicationOrPath)
{
    startWithHost();
    const InterfaceMap reported = host.calls().value(QDBusObjectPath(path));
    callInterface(call1, "Accept");
    ASSERT_TRUE(settle());
    host.forgetWire();

    FakeHost stranger;
    stranger.broadcast(path, reported, host.application());
    host.broadcast(path, reported, ":1.9999");
    host.broadcast(path + "0", reported);
    host.broadcast(path, {{"zelkovar.Call.DTMF1", {}}});
    host.broadcast(path, {{"zelkovar.Call.Call1", {{"Status", "3"}}}});
    // The last one counts, and comes behind all the others.
    InterfaceMap current = reported;
    current["zelkovar.Call.Call1"].insert("Status", 5u);
    host.broadcast(path, current);
    ASSERT_TRUE(waitForLine("call1 shown 5 active"));
    ASSERT_TRUE(settle());
    EXPECT_TRUE(host.wire().isEmpty());
    EXPECT_EQ(linesThatStart("call1 shown").size(), 2);
}

TEST_P(ApplicationTest, RegistersAgainWhenTheHostHasTakenItsNameAgain)
{
    startWithHost();
    callInterface(call1, "Accept");
    host.dropName();
    ASSERT_TRUE(waitForLine("host gone"));
    ASSERT_TRUE(waitForLine("waiting for host org.tarnwickle.voicecall"));
    host.forgetWire();
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(program.waitForOutput("call1 shown 5 active"));
    ASSERT_TRUE(settle());
    EXPECT_THAT(host.wire(),
        ElementsAre("RegisterCallManager " + manager, QStringLiteral("GetManagedObjects %1: %2=5").arg(manager, path)));
}

TEST_P(ApplicationTest, RegistersWithAHostThatIsAnotherProcess)
{
    startWithHost();
    host.dropName();
    FakeHost next;
    ASSERT_TRUE(next.takeName());
    ASSERT_TRUE(waitForLine("host appeared " + next.uniqueName()));
    ASSERT_TRUE(next.waitForWire("GetManagedObjects"));
    EXPECT_EQ(next.wire().count("RegisterCallManager " + manager), 1);
    EXPECT_EQ(next.wire().count(QStringLiteral("GetManagedObjects %1: %2=3").arg(manager, path)), 1);
    EXPECT_EQ(host.wire().count("RegisterCallManager " + manager), 0);
}

TEST_P(ApplicationTest, SaysThatTheHostRefused)
{
    host.refuseWith("org.example.Error.NotToday");
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(start());
    EXPECT_TRUE(program.waitForOutput("refused " + manager));
    EXPECT_TRUE(program.waitForOutput("org.example.Error.NotToday"));
    EXPECT_TRUE(program.isRunning());
}

TEST_P(ApplicationTest, WhatItShowsIsWhatItHasTold)
{
    startWithHost();
    callInterface(call1, "Accept");
    ObjectMap told = host.calls();
    told[QDBusObjectPath(path)]["zelkovar.Call.Call1"].insert("Status", 5u);
    EXPECT_EQ(host.managedObjects(manager), told);
}

TEST_P(ApplicationTest, ServesItsPropertiesReadOnly)
{
    startWithHost();
    const QString properties = "org.freedesktop.DBus.Properties";
    const QString call = "zelkovar.Call.Call1";
    QDBusMessage reply = host.call(path, properties, "Get", {call, "Status"});
    ASSERT_EQ(reply.signature(), "v");
    EXPECT_EQ(reply.arguments().at(0).value<QDBusVariant>().variant(), QVariant(3u));

    reply = host.call(path, properties, "GetAll", {call});
    ASSERT_EQ(reply.signature(), "a{sv}");
    EXPECT_EQ(qdbus_cast<QVariantMap>(reply.arguments().at(0)), host.calls().value(QDBusObjectPath(path)).value(call));

    reply = host.call(path, properties, "Set", {call, "Status", QVariant::fromValue(QDBusVariant(5u))});
    EXPECT_EQ(reply.type(), QDBusMessage::ErrorMessage);
    EXPECT_EQ(host.managedObjects(manager), host.calls());
}

TEST_P(ApplicationTest, AWrongTypeIsAnInvalidArgument)
{
    startWithHost();
    const QString invalid = "org.freedesktop.DBus.Error.InvalidArgs";
    EXPECT_EQ(callInterface(call1, "Accept", {1u}).errorName(), invalid);
    EXPECT_EQ(callInterface(call1, "Reject", {"1"}).errorName(), invalid);
    EXPECT_EQ(callInterface(call1, "Reject").errorName(), invalid);
    EXPECT_EQ(callInterface(call1, "SetHold", {1}).errorName(), invalid);
    EXPECT_EQ(host.call(path, "zelkovar.Call.DTMF1", "SendDTMF", {true}).errorName(), invalid);
    const QString audio = "zelkovar.Call.AudioControl1";
    EXPECT_EQ(host.call(path, audio, "UpdateAudioRoute", {"in", "out", true}).errorName(), invalid);
    EXPECT_EQ(host.call(path, audio, "UpdateAudioRouteState", {"mic", true, "in", "out"}).errorName(), invalid);
    ASSERT_TRUE(settle());
    EXPECT_TRUE(host.wire().isEmpty());
    EXPECT_THAT(linesThatStart("call1 command"), testing::IsEmpty());
}

TEST_P(ApplicationTest, AnUnknownMethodIsSaidToBeOne)
{
    startWithHost();
    EXPECT_EQ(callInterface(call1, "Deflect").errorName(), "org.freedesktop.DBus.Error.UnknownMethod");
}

TEST_P(ApplicationTest, DescribesItselfToIntrospection)
{
    startWithHost();
    const auto introspect = [&](const QString &object) {
        return host.call(object, "org.freedesktop.DBus.Introspectable", "Introspect").arguments().value(0).toString();
    };
    EXPECT_TRUE(introspect(manager).contains("org.freedesktop.DBus.ObjectManager"));
    EXPECT_TRUE(introspect(manager).contains("<node name=\"call1\"/>"));
    for (const QString &name : host.calls().value(QDBusObjectPath(path)).keys())
        EXPECT_EQ(introspect(path).count(QStringLiteral("<interface name=\"%1\">").arg(name)), 1) << qPrintable(name);
    EXPECT_EQ(introspect(path).count("org.freedesktop.DBus.Properties\""), 1);
}

TEST_P(ApplicationTest, QuitEndsTheCallFirst)
{
    startWithHost();
    program.type("quit");
    EXPECT_EQ(program.waitForExit(), 0);
    ASSERT_TRUE(host.waitForWire("InterfacesRemoved"));
    EXPECT_THAT(host.wire(), ElementsAre("StatusChanged " + path + " 1", removed.arg(path)));
}

TEST_P(ApplicationTest, SignalsToStopEndTheCallFirst)
{
    for (const int number : {SIGTERM, SIGINT}) {
        host.dropName();
        startWithHost();
        program.signal(number);
        EXPECT_EQ(program.waitForExit(), 0);
        ASSERT_TRUE(host.waitForWire("InterfacesRemoved"));
        EXPECT_THAT(host.wire(), ElementsAre("StatusChanged " + path + " 1", removed.arg(path)));
    }
}

TEST_P(ApplicationTest, EndedInputDoesNotEndIt)
{
    startWithHost();
    program.closeWriteChannel();
    callInterface(call1, "Accept");
    EXPECT_TRUE(waitForLine("call1 status 5 active"));
    EXPECT_TRUE(program.isRunning());
}

TEST_P(ApplicationTest, AnUnknownCommandIsNamedAndChangesNothing)
{
    startWithHost();
    program.type("explode");
    EXPECT_TRUE(program.waitForError("unknown command \"explode\""));
    ASSERT_TRUE(settle());
    EXPECT_TRUE(host.wire().isEmpty());
}

TEST_P(ApplicationTest, AnUnknownOptionIsNamed)
{
    ASSERT_TRUE(start({"--explode"}));
    EXPECT_EQ(program.waitForExit(), 2);
    EXPECT_TRUE(program.errorOutput().contains("explode")) << qPrintable(program.errorOutput());
}

TEST_P(ApplicationTest, SaysThatThereIsNoBus)
{
    ASSERT_TRUE(start({}, {"DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent"}));
    EXPECT_EQ(program.waitForExit(), 3);
    EXPECT_FALSE(program.errorOutput().isEmpty());
}

TEST_P(ApplicationTest, SaysThatTheBusHasGone)
{
    PrivateBus bus;
    ASSERT_TRUE(start({}, {"DBUS_SESSION_BUS_ADDRESS=" + QString::fromUtf8(bus.address())}));
    ASSERT_TRUE(program.waitForOutput("waiting for host"));
    bus.daemon().signal(SIGKILL);
    EXPECT_EQ(program.waitForExit(), 3);
    EXPECT_TRUE(program.errorOutput().contains("the session bus has gone"));
}

INSTANTIATE_TEST_SUITE_P(Kit, ApplicationTest,
    testing::Values(Candidate{"Simulator", RINGLET_SIM,
        {"--incoming", "sip:ann@example.org", "--name", "Ann \"Ä\" Example"}, "/ringlet/sim", "hangup call1"}),
    [](const testing::TestParamInfo<Candidate> &info) { return std::string(info.param.name); });

} // namespace
