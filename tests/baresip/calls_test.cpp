// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// Calls of a real softphone in the host: from ringing to hanging up, on either side.

#include "printers.h"
#include "softphonetest.h"
#include "waitfor.h"

using testing::HasSubstr;

using Softphone = SoftphoneTest;

TEST_F(Softphone, AnIncomingCallShowsWithNameAndAddressOfTheCaller)
{
    ASSERT_TRUE(startBridge());
    ASSERT_TRUE(ring());
    const QVariantMap call = host.call();
    EXPECT_EQ(call.value("LineId"), "Ben Example");
    EXPECT_EQ(call.value("Uri"), ben.address());
    EXPECT_EQ(call.value("Incoming"), true);
    EXPECT_EQ(call.value("Holdable"), true);
    EXPECT_EQ(call.value("SupportsDtmf"), true);
    EXPECT_TRUE(ben.waitForEvent("CALL_RINGING"));
}

TEST_F(Softphone, AnsweredFromTheHostTheFarEndSeesItAndSoundGoesBothWays)
{
    ASSERT_TRUE(startBridge());
    ASSERT_TRUE(ring());
    EXPECT_EQ(command(ben.address(), "Answer"), "");
    EXPECT_TRUE(host.waitForStatus("active"));
    EXPECT_TRUE(ben.waitForEvent("CALL_ESTABLISHED"));
    EXPECT_THAT(ben.ask("listcalls").toStdString(), HasSubstr("ESTABLISHED"));
    EXPECT_TRUE(ben.waitForPackets(25));
    EXPECT_TRUE(ben.waitForTone(nearTone));
    EXPECT_TRUE(ann.waitForTone(farTone));
}

TEST_F(Softphone, RejectedFromTheHostTheCallerHearsBusy)
{
    ASSERT_TRUE(startBridge());
    ASSERT_TRUE(ring());
    EXPECT_EQ(command(ben.address(), "Hangup"), "");
    EXPECT_TRUE(ben.waitForEvent("CALL_CLOSED 486"));
    EXPECT_TRUE(host.waitForTable({}));
}

TEST_F(Softphone, HangingUpInTheHostEndsTheCallAtTheFarEnd)
{
    ASSERT_TRUE(startBridge());
    ASSERT_TRUE(talk());
    EXPECT_EQ(command(ben.address(), "Hangup"), "");
    EXPECT_TRUE(ben.waitForEvent("CALL_CLOSED"));
    EXPECT_TRUE(host.waitForTable({}));
}

TEST_F(Softphone, HangingUpAtTheFarEndEndsTheCallInTheHost)
{
    ASSERT_TRUE(startBridge());
    ASSERT_TRUE(talk());
    ben.ask("hangup");
    EXPECT_TRUE(host.waitForTable({}));
}

TEST_F(Softphone, AnsweringAndHangingUpAtTheSoftphoneItselfShowInTheHost)
{
    ASSERT_TRUE(startBridge());
    ASSERT_TRUE(ring());
    ann.type("accept");
    EXPECT_TRUE(host.waitForStatus("active"));
    ann.type("hangup");
    EXPECT_TRUE(host.waitForTable({}));
    EXPECT_TRUE(ben.waitForEvent("CALL_CLOSED"));
}

TEST_F(Softphone, AnOutgoingCallShowsAsDialingAndIsActiveWhenItIsAnswered)
{
    ASSERT_TRUE(startBridge());
    ann.type("dial " + ben.address());
    ASSERT_TRUE(host.waitForTable({row(ben, "dialing")}));
    EXPECT_EQ(host.call().value("Incoming"), false);
    ASSERT_TRUE(ben.waitForEvent("CALL_INCOMING"));
    ben.ask("accept");
    EXPECT_TRUE(host.waitForTable({row(ben, "active")}));
    EXPECT_TRUE(ben.waitForTone(nearTone));
    EXPECT_EQ(command(ben.address(), "Hangup"), "");
    EXPECT_TRUE(ben.waitForEvent("CALL_CLOSED"));
    EXPECT_TRUE(host.waitForTable({}));
}

TEST_F(Softphone, AnOutgoingCallThatRingsIsCancelledFromTheHost)
{
    ASSERT_TRUE(startBridge());
    ann.type("dial " + ben.address());
    ASSERT_TRUE(ben.waitForEvent("CALL_INCOMING"));
    ASSERT_TRUE(host.waitForTable({row(ben, "dialing")}));
    EXPECT_EQ(command(ben.address(), "Hangup"), "");
    EXPECT_TRUE(ben.waitForEvent("CALL_CLOSED"));
    EXPECT_TRUE(host.waitForTable({}));
}

TEST_F(Softphone, AnOutgoingCallToNobodyShowsAndIsCancelledBeforeItRings)
{
    ASSERT_TRUE(startBridge());
    const QString nobody = QStringLiteral("sip:nobody@127.0.0.1:%1").arg(ports.port(99));
    ann.type("dial " + nobody);
    ASSERT_TRUE(host.waitForTable({nobody + "=dialing"}));
    EXPECT_EQ(command(nobody, "Hangup"), "");
    EXPECT_TRUE(host.waitForTable({}));
}

TEST_F(Softphone, ASecondCallWaitsAndAnsweringItHoldsTheFirst)
{
    ASSERT_TRUE(startBridge());
    ASSERT_TRUE(cid.start(Baresip::ControlledBy::Test));
    ASSERT_TRUE(talk());
    cid.ask("dial", ann.address());
    ASSERT_TRUE(host.waitForTable({row(ben, "active"), row(cid, "incoming")}));
    EXPECT_EQ(hostCall(cid.address()).value("LineId"), "Cid Example");

    EXPECT_EQ(command(cid.address(), "Answer"), "");
    ASSERT_TRUE(host.waitForTable({row(ben, "held"), row(cid, "active")}));
    EXPECT_TRUE(ben.waitForStandstill());
    EXPECT_TRUE(cid.waitForPackets(10));

    // Each command reaches its own call, whichever is the softphone's current one.
    EXPECT_EQ(command(cid.address(), "Hold", {true}), "");
    ASSERT_TRUE(host.waitForTable({row(ben, "held"), row(cid, "held")}));
    EXPECT_EQ(command(ben.address(), "Hold", {false}), "");
    ASSERT_TRUE(host.waitForTable({row(ben, "active"), row(cid, "held")}));
    EXPECT_TRUE(ben.waitForPackets(10));
    EXPECT_EQ(command(cid.address(), "Hangup"), "");
    EXPECT_TRUE(cid.waitForEvent("CALL_CLOSED"));
    EXPECT_TRUE(host.waitForTable({row(ben, "active")}));
}

TEST_F(Softphone, TheWaitingCallIsRejectedAndTheFirstGoesOn)
{
    ASSERT_TRUE(startBridge());
    ASSERT_TRUE(cid.start(Baresip::ControlledBy::Test));
    ASSERT_TRUE(talk());
    cid.ask("dial", ann.address());
    ASSERT_TRUE(host.waitForTable({row(ben, "active"), row(cid, "incoming")}));
    EXPECT_EQ(command(cid.address(), "Hangup"), "");
    EXPECT_TRUE(cid.waitForEvent("CALL_CLOSED 486"));
    EXPECT_TRUE(host.waitForTable({row(ben, "active")}));
    EXPECT_TRUE(ben.waitForPackets(10));
}

TEST_F(Softphone, CallsOfSeveralAccountsAreToldApart)
{
    ASSERT_TRUE(startBridge());
    ASSERT_TRUE(cid.start(Baresip::ControlledBy::Test));
    ASSERT_TRUE(talk());
    cid.ask("dial", ann.addressOf("office"));
    ASSERT_TRUE(host.waitForTable({row(ben, "active"), row(cid, "incoming")}));
    EXPECT_EQ(command(ben.address(), "Hold", {true}), "");
    ASSERT_TRUE(host.waitForTable({row(ben, "held"), row(cid, "incoming")}));
    EXPECT_EQ(command(cid.address(), "Answer"), "");
    ASSERT_TRUE(host.waitForTable({row(ben, "held"), row(cid, "active")}));
    EXPECT_EQ(command(ben.address(), "Hangup"), "");
    EXPECT_TRUE(ben.waitForEvent("CALL_CLOSED"));
    EXPECT_TRUE(host.waitForTable({row(cid, "active")}));
    EXPECT_TRUE(cid.waitForPackets(10));
}
