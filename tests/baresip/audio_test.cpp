// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// What can be done with a call that is up: measured on the packets and on the sound, not on flags.

#include "printers.h"
#include "softphonetest.h"
#include "waitfor.h"

using SoftphoneAudio = SoftphoneTest;

TEST_F(SoftphoneAudio, HoldStopsTheStreamByAnotherInvitationAndResumeRestoresIt)
{
    ASSERT_TRUE(startBridge());
    ASSERT_TRUE(talk());
    ASSERT_EQ(ben.stream().direction, "sendrecv");

    EXPECT_EQ(command(ben.address(), "Hold", {true}), "");
    ASSERT_TRUE(host.waitForStatus("held"));
    EXPECT_TRUE(ben.waitForEvent("CALL_REMOTE_SDP offer"));
    EXPECT_EQ(ben.stream().direction, "recvonly");
    EXPECT_TRUE(ben.waitForStandstill());

    EXPECT_EQ(command(ben.address(), "Hold", {false}), "");
    ASSERT_TRUE(host.waitForStatus("active"));
    EXPECT_TRUE(ben.waitForPackets(25));
    EXPECT_EQ(ben.stream().direction, "sendrecv");
}

TEST_F(SoftphoneAudio, HoldAtTheSoftphoneItselfShowsInTheHost)
{
    ASSERT_TRUE(startBridge());
    ASSERT_TRUE(talk());
    ann.type("hold");
    EXPECT_TRUE(host.waitForStatus("held"));
    ann.type("resume");
    EXPECT_TRUE(host.waitForStatus("active"));
}

TEST_F(SoftphoneAudio, TonesTypedInTheHostArriveInOrder)
{
    ASSERT_TRUE(startBridge());
    ASSERT_TRUE(talk());
    EXPECT_EQ(command(ben.address(), "SendDtmf", {QStringLiteral("12#*0d")}), "");
    EXPECT_TRUE(waitFor([&] {
        return ben.events().filter("CALL_DTMF_START")
            == QStringList{"CALL_DTMF_START 1", "CALL_DTMF_START 2", "CALL_DTMF_START #", "CALL_DTMF_START *",
                "CALL_DTMF_START 0", "CALL_DTMF_START D"};
    }));
}

TEST_F(SoftphoneAudio, TonesThatThereAreNotAreLeftOutWithAWarning)
{
    ASSERT_TRUE(startBridge());
    ASSERT_TRUE(talk());
    EXPECT_EQ(command(ben.address(), "SendDtmf", {QStringLiteral("1x2")}), "");
    EXPECT_TRUE(ben.waitForEvent("CALL_DTMF_START 2"));
    EXPECT_TRUE(bridge.waitForError("of the tones \"1x2\" only \"12\" can be sent"));
}

TEST_F(SoftphoneAudio, MuteInTheHostSilencesWhatTheFarEndHears)
{
    ASSERT_TRUE(startBridge());
    ASSERT_TRUE(talk());
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(host.manage("Audio1", "SetMicrophoneMuted", {true}), "");
        ASSERT_TRUE(ben.waitForSilence());
        EXPECT_TRUE(ann.waitForTone(farTone));
        EXPECT_EQ(host.manage("Audio1", "SetMicrophoneMuted", {false}), "");
        ASSERT_TRUE(ben.waitForTone(nearTone));
    }
}

TEST_F(SoftphoneAudio, WithTheHostMutedNothingIsHeardFromTheFirstSampleOn)
{
    ASSERT_TRUE(startBridge());
    EXPECT_EQ(host.manage("Audio1", "SetMicrophoneMuted", {true}), "");
    ASSERT_TRUE(ring());
    EXPECT_EQ(command(ben.address(), "Answer"), "");
    ASSERT_TRUE(waitFor([&] { return ben.recording().size() >= Recording::samplesPerSecond; }));
    EXPECT_LT(ben.recording().peak(), 100);
    EXPECT_EQ(host.manage("Audio1", "SetMicrophoneMuted", {false}), "");
    EXPECT_TRUE(ben.waitForTone(nearTone));
}

TEST_F(SoftphoneAudio, MuteChangedAtTheSoftphoneItselfIsPutRightByTheNextChangeInTheHost)
{
    ASSERT_TRUE(startBridge());
    ASSERT_TRUE(talk());
    ann.type("mute");
    ASSERT_TRUE(ben.waitForSilence());
    // The first toggle unmutes it, which the bridge learns from the answer.
    EXPECT_EQ(host.manage("Audio1", "SetMicrophoneMuted", {true}), "");
    ASSERT_TRUE(ben.waitForSilence());
    EXPECT_EQ(host.manage("Audio1", "SetMicrophoneMuted", {false}), "");
    EXPECT_TRUE(ben.waitForTone(nearTone));
}

TEST_F(SoftphoneAudio, MuteHoldsForBothCalls)
{
    ASSERT_TRUE(startBridge());
    ASSERT_TRUE(cid.start(Baresip::ControlledBy::Test));
    ASSERT_TRUE(talk());
    EXPECT_EQ(host.manage("Audio1", "SetMicrophoneMuted", {true}), "");
    ASSERT_TRUE(ben.waitForSilence());
    cid.ask("dial", ann.address());
    ASSERT_TRUE(host.waitForTable({row(ben, "active"), row(cid, "incoming")}));
    EXPECT_EQ(command(cid.address(), "Answer"), "");
    ASSERT_TRUE(host.waitForTable({row(ben, "held"), row(cid, "active")}));
    EXPECT_TRUE(cid.waitForSilence());
    EXPECT_EQ(host.manage("Audio1", "SetMicrophoneMuted", {false}), "");
    EXPECT_TRUE(cid.waitForTone(nearTone));
}

TEST_F(SoftphoneAudio, TheSoftphoneUsesTheDevicesThatTheHostHasSelected)
{
    ASSERT_TRUE(startBridge({"--input", "headset=ausine,1000", "--input", "microphone=ausine,440", "--output",
        "headset=aubridge,headset"}));
    ASSERT_TRUE(talk());
    EXPECT_EQ(host.manage("Audio1", "SelectInputDevice", {"headset"}), "");
    EXPECT_TRUE(ben.waitForTone(1000));
    EXPECT_EQ(host.manage("Audio1", "SelectOutputDevice", {"headset"}), "");
    EXPECT_EQ(host.manage("Audio1", "SelectInputDevice", {"microphone"}), "");
    EXPECT_TRUE(ben.waitForTone(nearTone));
    EXPECT_TRUE(ann.waitForTone(farTone));
    EXPECT_EQ(bridge.errorOutput(), "");
}

TEST_F(SoftphoneAudio, ADeviceThatCannotBeUsedIsReportedAndTheOneBeforeComesBack)
{
    ASSERT_TRUE(startBridge({"--input", "headset=aufile,/nonexistent.wav", "--output", "speaker=nosuch,device"}));
    ASSERT_TRUE(talk());
    EXPECT_EQ(host.manage("Audio1", "SelectInputDevice", {"headset"}), "");
    EXPECT_TRUE(bridge.waitForError("baresip cannot use aufile,/nonexistent.wav (ausrc for the host's headset): "
                                    "failed to set audio-source"));
    EXPECT_TRUE(ben.waitForTone(nearTone));
    EXPECT_EQ(host.manage("Audio1", "SelectOutputDevice", {"speaker"}), "");
    EXPECT_TRUE(bridge.waitForError("no such audio-player: nosuch"));
    EXPECT_TRUE(ann.waitForTone(farTone));
}
