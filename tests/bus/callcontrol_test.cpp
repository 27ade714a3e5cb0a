// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "callfixture.h"
#include "calls/callhandler.h"
#include "logrecorder.h"

static const QString accept = "/m/c1 zelkovar.Call.Call1.Accept()";
static const QString reject = "/m/c1 zelkovar.Call.Call1.Reject(uint32 1)";
static const QString setHold = "/m/c1 zelkovar.Call.Call1.SetHold(true)";
static const QString release = "/m/c1 zelkovar.Call.Call1.SetHold(false)";

static QString withStatus(uint status, bool holdable)
{
    return QString("'Status': <uint32 %1>, 'Holdable': <%2>").arg(status).arg(holdable ? "true" : "false");
}

class CallControlTest : public CallFixture
{
protected:
    /** Nothing is told to the host by a command, and the call is as it was. */
    void expectNothingChanged(const AbstractVoiceCallHandler *handler, int status)
    {
        EXPECT_EQ(host.events, QStringList());
        EXPECT_EQ(handler->status(), status);
        EXPECT_EQ(host.calls.size(), 1);
    }
};

class CommandInStatusTest : public CallControlTest, public testing::WithParamInterface<uint>
{
protected:
    void SetUp() override
    {
        CallControlTest::SetUp();
        handler = addCall(withStatus(GetParam(), true));
        ASSERT_TRUE(handler);
        status = handler->status();
        host.events.clear();
    }

    AbstractVoiceCallHandler *handler = nullptr;
    int status = 0;
};

TEST_P(CommandInStatusTest, AnsweringSendsAccept)
{
    handler->answer();
    EXPECT_EQ(commands(), QStringList({accept}));
    expectNothingChanged(handler, status);
}

TEST_P(CommandInStatusTest, HangingUpSendsRejectWithReasonOne)
{
    handler->hangup();
    EXPECT_EQ(commands(), QStringList({reject}));
    expectNothingChanged(handler, status);
}

TEST_P(CommandInStatusTest, HoldingSendsSetHoldUnlessHeld)
{
    handler->hold(true);
    EXPECT_EQ(commands(), GetParam() == 7 ? QStringList() : QStringList({setHold}));
    expectNothingChanged(handler, status);
}

TEST_P(CommandInStatusTest, ReleasingSendsSetHoldOnlyWhenHeld)
{
    handler->hold(false);
    EXPECT_EQ(commands(), GetParam() == 7 ? QStringList({release}) : QStringList());
    expectNothingChanged(handler, status);
}

INSTANTIATE_TEST_SUITE_P(OfRemoteStatus, CommandInStatusTest, testing::Range(0U, 9U));

TEST_F(CallControlTest, HangingUpAnIncomingCallIsTheSameAsAnActiveOne)
{
    AbstractVoiceCallHandler *handler = addCall(incoming);
    ASSERT_TRUE(handler);
    handler->hangup();
    changeStatus(5);
    handler->hangup();
    EXPECT_EQ(commands(), QStringList({reject, reject}));
}

TEST_F(CallControlTest, HoldingAnUnholdableCallRejectsItFirstAndThenHoldsIt)
{
    AbstractVoiceCallHandler *handler = addCall(withStatus(5, false));
    ASSERT_TRUE(handler);
    handler->hold(true);
    EXPECT_EQ(commands(), QStringList({reject, setHold}));
}

TEST_F(CallControlTest, HoldingACallThatDoesNotSayWhetherItIsHoldableRejectsItFirst)
{
    AbstractVoiceCallHandler *handler = addCall(active);
    ASSERT_TRUE(handler);
    handler->hold(true);
    EXPECT_EQ(commands(), QStringList({reject, setHold}));
}

TEST_F(CallControlTest, HoldingAHeldUnholdableCallRejectsItOnly)
{
    AbstractVoiceCallHandler *handler = addCall(held);
    ASSERT_TRUE(handler);
    handler->hold(true);
    EXPECT_EQ(commands(), QStringList({reject}));
}

TEST_F(CallControlTest, ReleasingAnUnholdableCallRejectsNothing)
{
    AbstractVoiceCallHandler *handler = addCall(held);
    ASSERT_TRUE(handler);
    handler->hold(false);
    EXPECT_EQ(commands(), QStringList({release}));
    application.forgetWhatArrived();
    changeStatus(5);
    handler->hold(false);
    EXPECT_EQ(commands(), QStringList());
}

TEST_F(CallControlTest, HoldFollowsTheStatusThatTheApplicationTellsAndNoEarlierCommand)
{
    AbstractVoiceCallHandler *handler = addCall(holdableActive);
    ASSERT_TRUE(handler);
    handler->hold(true);
    handler->hold(true);
    EXPECT_EQ(commands(), QStringList({setHold, setHold}));
    application.forgetWhatArrived();
    changeStatus(7);
    handler->hold(true);
    handler->hold(false);
    EXPECT_EQ(commands(), QStringList({release}));
}

TEST_F(CallControlTest, HoldByNameWithoutAnArgumentHoldsTheCall)
{
    AbstractVoiceCallHandler *handler = addCall(holdableActive);
    ASSERT_TRUE(handler);
    ASSERT_TRUE(QMetaObject::invokeMethod(handler, "hold"));
    EXPECT_EQ(commands(), QStringList({setHold}));
}

TEST_F(CallControlTest, EveryCommandCanBeInvokedByName)
{
    AbstractVoiceCallHandler *handler = addCall(held, {tones});
    ASSERT_TRUE(handler);
    EXPECT_TRUE(QMetaObject::invokeMethod(handler, "answer"));
    EXPECT_TRUE(QMetaObject::invokeMethod(handler, "hangup"));
    EXPECT_TRUE(QMetaObject::invokeMethod(handler, "hold", Q_ARG(bool, false)));
    EXPECT_TRUE(QMetaObject::invokeMethod(handler, "deflect", Q_ARG(QString, "x")));
    EXPECT_TRUE(QMetaObject::invokeMethod(handler, "sendDtmf", Q_ARG(QString, "1")));
    EXPECT_TRUE(QMetaObject::invokeMethod(handler, "merge", Q_ARG(QString, "h2")));
    EXPECT_TRUE(QMetaObject::invokeMethod(handler, "split"));
    EXPECT_EQ(commands(), QStringList({accept, reject, release, "/m/c1 zelkovar.Call.DTMF1.SendDTMF('1')"}));
}

TEST_F(CallControlTest, TonesGoOutUnchangedInOneMessage)
{
    AbstractVoiceCallHandler *handler = addCall(active, {tones});
    ASSERT_TRUE(handler);
    host.events.clear();
    handler->sendDtmf("12#");
    handler->sendDtmf("");
    handler->sendDtmf("a * p,w ü");
    EXPECT_EQ(commands(),
        QStringList({"/m/c1 zelkovar.Call.DTMF1.SendDTMF('12#')", "/m/c1 zelkovar.Call.DTMF1.SendDTMF('')",
            "/m/c1 zelkovar.Call.DTMF1.SendDTMF('a * p,w ü')"}));
    expectNothingChanged(handler, 1);
}

TEST_F(CallControlTest, TonesGoOutInAnyStatus)
{
    AbstractVoiceCallHandler *handler = addCall(incoming, {tones});
    ASSERT_TRUE(handler);
    handler->sendDtmf("1");
    changeStatus(0);
    handler->sendDtmf("2");
    EXPECT_EQ(commands().size(), 2);
}

TEST_F(CallControlTest, WithoutTheToneInterfaceNoTonesAreSentAndNothingIsLogged)
{
    AbstractVoiceCallHandler *handler = addCall(active, {audioControl});
    ASSERT_TRUE(handler);
    settle();
    application.forgetWhatArrived();
    const LogRecorder log;
    handler->sendDtmf("12#");
    EXPECT_EQ(commands(), QStringList());
    EXPECT_EQ(log.entries().filter("sendDtmf").size(), 1) << "the trace line";
    EXPECT_EQ(log.startingWith("info voicecall: "), log.entries());
}

TEST_F(CallControlTest, TonesAreStillSentAfterTheInterfaceWent)
{
    AbstractVoiceCallHandler *handler = addCall(active, {tones});
    ASSERT_TRUE(handler);
    application.withdraw(managerPath, callPath, {tones});
    settle();
    handler->sendDtmf("1");
    EXPECT_EQ(commands(), QStringList({"/m/c1 zelkovar.Call.DTMF1.SendDTMF('1')"}));
}

TEST_F(CallControlTest, DeflectMergeAndSplitDoNothing)
{
    AbstractVoiceCallHandler *handler = addCall(incoming, {tones});
    ASSERT_TRUE(handler);
    ASSERT_TRUE(addCall(active, {}, "/m/c2"));
    host.events.clear();
    handler->deflect("sip:other@example.org");
    handler->merge("h2");
    handler->split();
    EXPECT_EQ(commands(), QStringList());
    EXPECT_EQ(host.events, QStringList());
    EXPECT_EQ(handler->status(), AbstractVoiceCallHandler::StatusIncoming);
    EXPECT_FALSE(handler->isMultiparty());
    EXPECT_TRUE(handler->childCalls().isEmpty());
}

TEST_F(CallControlTest, CommandsGoToTheirOwnCallInTheOrderGiven)
{
    AbstractVoiceCallHandler *first = addCall(incoming);
    AbstractVoiceCallHandler *second = addCall(incoming, {}, "/m/c2");
    ASSERT_TRUE(first && second);
    second->answer();
    first->hangup();
    first->answer();
    EXPECT_EQ(commands(), QStringList({"/m/c2 zelkovar.Call.Call1.Accept()", reject, accept}));
}

TEST_F(CallControlTest, CommandsAreSentToTheApplicationAlone)
{
    ScriptedApplication other;
    AbstractVoiceCallHandler *handler = addCall(incoming);
    ASSERT_TRUE(handler);
    handler->answer();
    EXPECT_EQ(commands(), QStringList({accept}));
    ASSERT_TRUE(other.settle());
    EXPECT_EQ(other.commands(), QStringList());
}

TEST_F(CallControlTest, ErrorsOfTheApplicationGoUnnoticed)
{
    AbstractVoiceCallHandler *handler = addCall(holdableActive, {tones});
    ASSERT_TRUE(handler);
    host.events.clear();
    application.refuseCommands("org.freedesktop.DBus.Error.UnknownMethod");
    const LogRecorder log;
    handler->answer();
    handler->hold(true);
    handler->sendDtmf("1");
    handler->hangup();
    EXPECT_EQ(commands().size(), 4);
    settle();
    EXPECT_EQ(log.startingWith("info voicecall: "), log.entries());
    expectNothingChanged(handler, 1);
}

TEST_F(CallControlTest, CommandsToAnApplicationThatHasLeftGoUnnoticed)
{
    ScriptedApplication gone;
    provider->onInterfacesAdded(gone.name(), QDBusObjectPath(callPath), {{"zelkovar.Call.Call1", {{"Status", 5U}}}});
    AbstractVoiceCallHandler *handler = host.call();
    ASSERT_TRUE(handler);
    gone.leave();
    settle();
    host.events.clear();
    const LogRecorder log;
    handler->answer();
    handler->hangup();
    handler->hold(true);
    settle();
    EXPECT_EQ(log.startingWith("info voicecall: "), log.entries());
    expectNothingChanged(handler, 1);
}
