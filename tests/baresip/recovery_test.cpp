// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// Softphone, bridge and host come and go while calls are up.

#include "printers.h"
#include "softphonetest.h"
#include "waitfor.h"

using SoftphoneRecovery = SoftphoneTest;

TEST_F(SoftphoneRecovery, CallsOfAKilledSoftphoneVanishAndANewOneIsBridgedAgain)
{
    ASSERT_TRUE(startBridge());
    ASSERT_TRUE(talk());
    ann.kill();
    EXPECT_TRUE(host.waitForTable({}));
    EXPECT_TRUE(bridge.waitForOutput("lost baresip"));
    ben.ask("hangup");

    const int before = bridge.lines().size();
    ASSERT_TRUE(ann.start(Baresip::ControlledBy::Bridge));
    ASSERT_TRUE(bridge.waitForOutput("connected to baresip", before));
    EXPECT_TRUE(talk());
}

TEST_F(SoftphoneRecovery, TheBridgeMayBeThereBeforeSoftphoneAndHost)
{
    ann.kill();
    host.kill();
    ASSERT_TRUE(bridge.start(RINGLET_BARESIP, {"--control", QStringLiteral("127.0.0.1:%1").arg(ann.controlPort())}));
    ASSERT_TRUE(bridge.waitForOutput("waiting for baresip"));
    ASSERT_TRUE(ann.start(Baresip::ControlledBy::Bridge));
    ASSERT_TRUE(bridge.waitForOutput("connected to baresip"));
    ASSERT_TRUE(host.start());
    EXPECT_TRUE(talk());
}

TEST_F(SoftphoneRecovery, CallsComeBackWhenTheHostIsRestarted)
{
    ASSERT_TRUE(startBridge());
    ASSERT_TRUE(talk());
    host.kill();
    ASSERT_TRUE(host.start());
    ASSERT_TRUE(host.waitForTable({row(ben, "active")}));
    EXPECT_EQ(host.call().value("LineId"), "Ben Example");
    EXPECT_EQ(command(ben.address(), "Hold", {true}), "");
    ASSERT_TRUE(host.waitForStatus("held"));

    host.kill();
    ASSERT_TRUE(host.start());
    ASSERT_TRUE(host.waitForTable({row(ben, "held")}));
    EXPECT_EQ(command(ben.address(), "Hold", {false}), "");
    ASSERT_TRUE(host.waitForStatus("active"));
    EXPECT_TRUE(ben.waitForPackets(10));
    EXPECT_EQ(command(ben.address(), "Hangup"), "");
    EXPECT_TRUE(ben.waitForEvent("CALL_CLOSED"));
}

TEST_F(SoftphoneRecovery, WhatHappensWhileThereIsNoHostShowsInTheNextOne)
{
    ASSERT_TRUE(startBridge());
    ASSERT_TRUE(talk());
    ASSERT_TRUE(cid.start(Baresip::ControlledBy::Test));
    host.kill();
    ben.ask("hangup");
    cid.ask("dial", ann.address());
    ASSERT_TRUE(cid.waitForEvent("CALL_RINGING"));
    ASSERT_TRUE(host.start());
    EXPECT_TRUE(host.waitForTable({row(cid, "incoming")}));
    EXPECT_EQ(command(cid.address(), "Answer"), "");
    EXPECT_TRUE(cid.waitForTone(nearTone));
}

TEST_F(SoftphoneRecovery, ANewBridgeTakesOverTheCallsThatAreUp)
{
    ASSERT_TRUE(startBridge());
    ASSERT_TRUE(cid.start(Baresip::ControlledBy::Test));
    ASSERT_TRUE(talk());
    EXPECT_EQ(command(ben.address(), "Hold", {true}), "");
    ASSERT_TRUE(host.waitForStatus("held"));
    cid.ask("dial", ann.addressOf("office"));
    ASSERT_TRUE(host.waitForTable({row(ben, "held"), row(cid, "incoming")}));

    killBridge();
    ASSERT_TRUE(host.waitForTable({}));
    ASSERT_TRUE(startBridge());
    ASSERT_TRUE(host.waitForTable({row(ben, "held"), row(cid, "incoming")}));
    EXPECT_EQ(hostCall(ben.address()).value("LineId"), "Ben Example");
    EXPECT_EQ(hostCall(cid.address()).value("LineId"), "Cid Example");
    EXPECT_EQ(hostCall(cid.address()).value("Incoming"), true);
    EXPECT_EQ(command(cid.address(), "Answer"), "");
    EXPECT_TRUE(cid.waitForTone(nearTone));
    EXPECT_TRUE(host.waitForTable({row(ben, "held"), row(cid, "active")}));
}

TEST_F(SoftphoneRecovery, AMutedCallStaysMutedUnderANewBridge)
{
    ASSERT_TRUE(startBridge());
    ASSERT_TRUE(talk());
    EXPECT_EQ(host.manage("Audio1", "SetMicrophoneMuted", {true}), "");
    ASSERT_TRUE(ben.waitForSilence());
    killBridge();
    ASSERT_TRUE(startBridge());
    ASSERT_TRUE(host.waitForTable({row(ben, "active")}));
    EXPECT_TRUE(ben.waitForSilence());
    EXPECT_EQ(host.manage("Audio1", "SetMicrophoneMuted", {false}), "");
    EXPECT_TRUE(ben.waitForTone(nearTone));
}

TEST_F(SoftphoneRecovery, ABridgeThatEndsTakesItsCallsOutOfTheHostAndLeavesThemUp)
{
    ASSERT_TRUE(startBridge());
    ASSERT_TRUE(talk());
    EXPECT_EQ(stopBridge(), 0);
    EXPECT_TRUE(host.waitForTable({}));
    EXPECT_TRUE(ben.waitForPackets(10));
}
