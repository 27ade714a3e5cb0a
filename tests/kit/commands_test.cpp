// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// The commands that are typed into the simulator.

#include "kittest.h"
#include "waitfor.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

class Commands : public KitTest
{
protected:
    // A broadcast could meet a command that comes right behind the call, and have its status sent again.
    void SetUp() override
    {
        host.keepQuiet();
        startSimulator();
    }

    void show(const QString &call)
    {
        const QString path = manager + '/' + call;
        ASSERT_TRUE(host.waitForWire("InterfacesAdded " + path));
        host.broadcast(path, host.calls().value(QDBusObjectPath(path)));
        ASSERT_TRUE(program.waitForOutput(call + " shown"));
    }

    QStringList wireAfter(const QString &command)
    {
        host.settle(manager);
        host.forgetWire();
        expectDone(command);
        host.settle(manager);
        return host.wire();
    }

    QVariantMap properties(const QString &call)
    {
        return host.calls().value(QDBusObjectPath(manager + '/' + call)).value("zelkovar.Call.Call1");
    }
};

TEST_F(Commands, IncomingAnnouncesARingingCall)
{
    EXPECT_THAT(wireAfter("incoming ann sip:ann@example.org name=\"Ann Example\""),
        ElementsAre("InterfacesAdded /ringlet/sim/ann 3"));
    EXPECT_EQ(properties("ann").value("Incoming"), QVariant(true));
    EXPECT_EQ(properties("ann").value("Holdable"), QVariant(true));
    EXPECT_EQ(properties("ann").value("RemoteName"), QVariant("Ann Example"));
    EXPECT_EQ(properties("ann").value("Uri"), QVariant("sip:ann@example.org"));
    EXPECT_EQ(host.calls().value(QDBusObjectPath("/ringlet/sim/ann")).size(), 3);
}

TEST_F(Commands, OutgoingAnnouncesADialingCall)
{
    EXPECT_THAT(wireAfter("outgoing ann sip:ann@example.org tones=no hold=no audio=no"),
        ElementsAre("InterfacesAdded /ringlet/sim/ann 2"));
    EXPECT_EQ(properties("ann").value("Incoming"), QVariant(false));
    EXPECT_EQ(properties("ann").value("Holdable"), QVariant(false));
    EXPECT_EQ(host.calls().value(QDBusObjectPath("/ringlet/sim/ann")).keys(), QStringList{"zelkovar.Call.Call1"});
}

TEST_F(Commands, AnswerMakesARingingOrDialingCallActive)
{
    expectDone("incoming ann sip:ann@example.org");
    expectDone("outgoing bob sip:bob@example.org");
    EXPECT_THAT(wireAfter("answer ann"), ElementsAre("StatusChanged /ringlet/sim/ann 5"));
    EXPECT_THAT(wireAfter("answer bob"), ElementsAre("StatusChanged /ringlet/sim/bob 5"));
    expectDone("hold bob on");
    EXPECT_THAT(complaintAbout("answer bob"), HasSubstr("bob cannot be answered: it is held"));
}

TEST_F(Commands, HangupSendsTheFinalStatusAndTakesTheCallAway)
{
    expectDone("incoming ann sip:ann@example.org audio=no");
    EXPECT_THAT(wireAfter("hangup ann"),
        ElementsAre("StatusChanged /ringlet/sim/ann 1",
            "InterfacesRemoved /ringlet/sim/ann zelkovar.Call.Call1 zelkovar.Call.DTMF1"));
}

TEST_F(Commands, ANameCanBeUsedAgainWhenItsCallHasGone)
{
    expectDone("incoming ann sip:ann@example.org");
    expectDone("hangup ann");
    expectDone("check ann status gone");
    EXPECT_THAT(wireAfter("incoming ann sip:ann@example.org"), ElementsAre("InterfacesAdded /ringlet/sim/ann 3"));
    expectDone("check ann status incoming");
}

TEST_F(Commands, HoldHoldsAndResumesFromTheFarEnd)
{
    expectDone("incoming ann sip:ann@example.org");
    EXPECT_THAT(complaintAbout("hold ann on"), HasSubstr("ann cannot change hold: it is incoming"));
    expectDone("answer ann");
    EXPECT_THAT(wireAfter("hold ann on"), ElementsAre("StatusChanged /ringlet/sim/ann 7"));
    EXPECT_THAT(wireAfter("hold ann off"), ElementsAre("StatusChanged /ringlet/sim/ann 5"));
    EXPECT_THAT(complaintAbout("hold ann maybe"), HasSubstr("\"maybe\" is neither on nor off"));

    expectDone("incoming bob sip:bob@example.org hold=no");
    expectDone("answer bob");
    EXPECT_THAT(complaintAbout("hold bob on"), HasSubstr("was made with hold=no"));
}

TEST_F(Commands, MuteAndRouteAskTheHost)
{
    expectDone("incoming ann sip:ann@example.org");
    expectDone("answer ann");
    updateAudioState("ann", false, "mic", "ear");
    EXPECT_THAT(wireAfter("mute ann on"), ElementsAre("RequestMute /ringlet/sim/ann true"));
    EXPECT_TRUE(program.lines().contains("ann request mute on"));
    updateAudioRoute("ann", true, "mic", "ear");
    EXPECT_THAT(wireAfter("mute ann off"), ElementsAre("RequestMute /ringlet/sim/ann false"));
    EXPECT_THAT(wireAfter("route ann mic speaker"), ElementsAre("RequestAudioRoute /ringlet/sim/ann mic speaker"));
    EXPECT_TRUE(program.lines().contains("ann request route \"mic\" \"speaker\""));
    EXPECT_THAT(complaintAbout("mute ann yes"), HasSubstr("\"yes\" is neither on nor off"));
}

TEST_F(Commands, MuteAndRouteAreForCallsThatTheHostListensTo)
{
    expectDone("incoming ann sip:ann@example.org");
    updateAudioState("ann", false, "mic", "ear");
    host.settle(manager);
    host.forgetWire();
    EXPECT_THAT(complaintAbout("mute ann on"),
        HasSubstr("ann cannot ask for mute: it is incoming, and has to be dialing or active"));
    EXPECT_THAT(complaintAbout("route ann a b"), HasSubstr("ann cannot ask for a route: it is incoming"));
    host.settle(manager);
    EXPECT_THAT(host.wire(), IsEmpty());
}

TEST_F(Commands, ACallWithoutAudioControlCannotAskForAnything)
{
    expectDone("incoming ann sip:ann@example.org audio=no");
    EXPECT_THAT(complaintAbout("mute ann on"), HasSubstr("audio=no"));
    EXPECT_THAT(complaintAbout("route ann mic ear"), HasSubstr("audio=no"));
}

TEST_F(Commands, StatusSendsAnyNumberAndLeavesADisconnectedCallThere)
{
    expectDone("incoming ann sip:ann@example.org");
    for (const char *number : {"0", "1", "2", "4", "5", "6", "7", "3"})
        EXPECT_THAT(wireAfter(QString("status ann ") + number),
            ElementsAre(QString("StatusChanged /ringlet/sim/ann ") + number));
    expectDone("status ann 4");
    EXPECT_TRUE(program.lines().contains("ann status 4 disconnected"));
    expectDone("check ann status disconnected");
    EXPECT_THAT(wireAfter("hangup ann"),
        ElementsAre("InterfacesRemoved /ringlet/sim/ann zelkovar.Call.AudioControl1 zelkovar.Call.Call1 "
                    "zelkovar.Call.DTMF1"));
}

TEST_F(Commands, StatusTakesNumbersUpToSevenOnly)
{
    expectDone("incoming ann sip:ann@example.org");
    for (const char *wrong : {"8", "-1", "active"})
        EXPECT_THAT(
            complaintAbout(QString("status ann ") + wrong), HasSubstr("is no status; it is a number from 0 to 7"));
}

TEST_F(Commands, StatusSixIsActiveToo)
{
    expectDone("incoming ann sip:ann@example.org");
    expectDone("status ann 6");
    EXPECT_THAT(wireAfter("hold ann on"), ElementsAre("StatusChanged /ringlet/sim/ann 7"));
}

TEST_F(Commands, CallsListsThem)
{
    expectDone("incoming ann sip:ann@example.org name=Ann");
    show("ann");
    expectDone("calls");
    EXPECT_TRUE(waitForLine("call ann status 3 incoming shown yes \"sip:ann@example.org\" \"Ann\""));
    EXPECT_TRUE(waitForLine("calls 1"));
}

TEST_F(Commands, CheckComparesEveryFact)
{
    expectDone("incoming ann sip:ann@example.org");
    show("ann");
    for (const char *fact : {"ann status incoming", "ann shown yes", "ann tones \"\"", "ann muted unknown",
             "ann input unknown", "ann output unknown", "ann devices 0", "calls 1", "host registered"})
        expectDone(QString("check ") + fact);
    updateAudioState("ann", true, "mic", "ear");
    host.call("/ringlet/sim/ann", "zelkovar.Call.DTMF1", "SendDTMF", {"12"});
    host.call("/ringlet/sim/ann", "zelkovar.Call.DTMF1", "SendDTMF", {"#"});
    for (const char *fact : {"ann tones 12#", "ann muted yes", "ann input mic", "ann output ear", "ann devices 2"})
        expectDone(QString("check ") + fact);
    host.dropName();
    ASSERT_TRUE(program.waitForOutput("waiting for host"));
    expectDone("check host absent");
    expectDone("check ann shown no");
}

TEST_F(Commands, CheckSaysWhatIsInstead)
{
    expectDone("incoming ann sip:ann@example.org");
    EXPECT_THAT(complaintAbout("check ann status active"), HasSubstr("ann status is \"incoming\", not \"active\""));
    EXPECT_THAT(complaintAbout("check calls 2"), HasSubstr("number of calls is \"1\", not \"2\""));
    EXPECT_THAT(complaintAbout("check host absent"), HasSubstr("host is \"registered\", not \"absent\""));
    EXPECT_THAT(
        complaintAbout("check ann colour red"), HasSubstr("a call has no \"colour\"; it has status, shown, tones"));
    EXPECT_THAT(complaintAbout("check ann status"), HasSubstr("usage: check CALL FACT VALUE"));
    EXPECT_THAT(complaintAbout("check bob status gone"), HasSubstr("there is no call \"bob\""));
    expectDone("hangup ann");
    EXPECT_THAT(complaintAbout("check ann status active"), HasSubstr("ann status is \"gone\", not \"active\""));
}

TEST_F(Commands, HelpListsEveryCommand)
{
    expectDone("help");
    const QString help = program.lines().join('\n');
    for (const char *command : {"incoming", "outgoing", "answer", "hangup", "hold", "mute", "route", "status", "calls",
             "check", "many", "application", "leave", "raw", "ask", "die", "help", "quit"})
        EXPECT_TRUE(help.contains(QString("\n  ") + command)) << command;
}

TEST_F(Commands, EmptyLinesDoNothing) { EXPECT_THAT(wireAfter("\n  \n"), IsEmpty()); }

TEST_F(Commands, NameWhatIsWrongWithThem)
{
    expectDone("incoming ann sip:ann@example.org");
    host.settle(manager);
    host.forgetWire();
    EXPECT_THAT(complaintAbout("explode ann"), HasSubstr("unknown command \"explode\"; \"help\" lists them"));
    EXPECT_THAT(complaintAbout("answer"), HasSubstr("usage: answer CALL"));
    EXPECT_THAT(complaintAbout("answer ann now"), HasSubstr("usage: answer CALL"));
    EXPECT_THAT(complaintAbout("answer bob"), HasSubstr("there is no call \"bob\"; calls: ann"));
    EXPECT_THAT(complaintAbout("incoming ann sip:x"), HasSubstr("there is a call \"ann\" already"));
    EXPECT_THAT(complaintAbout("incoming a-b sip:x"), HasSubstr("letters, digits and _ only"));
    EXPECT_THAT(complaintAbout("incoming host sip:x"), HasSubstr("cannot be named \"host\""));
    EXPECT_THAT(complaintAbout("incoming bob sip:x colour=red"), HasSubstr("\"colour=red\" is no option of a call"));
    EXPECT_THAT(complaintAbout("incoming bob sip:x tones=maybe"), HasSubstr("tones: \"maybe\" is neither yes nor no"));
    EXPECT_THAT(complaintAbout("incoming bob sip:x manager=/nowhere"),
        HasSubstr("there is no call manager \"/nowhere\"; there is /ringlet/sim"));
    EXPECT_THAT(complaintAbout("incoming bob sip:x name=\"Bob"), HasSubstr("a quote is not closed"));
    EXPECT_THAT(complaintAbout("hangup ann"), Not(HasSubstr("no call")));
    EXPECT_THAT(complaintAbout("hangup ann"), HasSubstr("calls: none"));
    host.settle(manager);
    EXPECT_EQ(host.wire().filter("InterfacesAdded"), QStringList());
}

TEST_F(Commands, QuotesKeepBlanksAndEscapes)
{
    expectDone("incoming ann \"sip:ann@example.org\" name=\"A \\\"B\\\" \\\\C\\n\"");
    host.settle(manager);
    EXPECT_EQ(properties("ann").value("RemoteName"), QVariant("A \"B\" \\C\n"));
}

} // namespace
