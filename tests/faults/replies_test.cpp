// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// An application answers the host never, late, wrongly, or more often than it was asked.

#include "faultcell.h"

#include "printers.h"

namespace {

/** "hold", "error", "wrong", "twice": the faulty application's ways to answer. */
class ReplyCell : public FaultCell, public testing::WithParamInterface<const char *>
{
protected:
    void giveEveryCommand()
    {
        commandFaulty("Answer");
        commandFaulty("Hold", {true});
        commandFaulty("SendDtmf", {"1"});
        commandFaulty("Hangup");
        ASSERT_TRUE(faulty.waitForOutput("command Reject"));
    }

    void beAsked() { tellAndAwait("register /bad", "asked"); }

    /** All that was sent before has been handled by the host. */
    void settle() { tellAndAwait("register /bad", "registered /bad"); }
};

} // namespace

TEST_P(ReplyCell, ToTheSnapshotRequest)
{
    tell(QStringLiteral("snapshot ") + GetParam());
    tell("object /bad/1 3");
    ASSERT_NO_FATAL_FAILURE(beAsked());
    // Whatever became of the snapshot, announcements count.
    tell("announce /bad/2 3");
    waitForFaultyStatus("incoming", "/bad/2");
    honest.makeCall();
    EXPECT_EQ(faultyStatus("/bad/1"), GetParam() == QLatin1String("twice") ? "incoming" : "");
}

TEST_P(ReplyCell, ToCommands)
{
    tell(QStringLiteral("commands ") + GetParam());
    ASSERT_NO_FATAL_FAILURE(bringUpFaulty());
    ASSERT_NO_FATAL_FAILURE(giveEveryCommand());
    settle();
    honest.makeCall();
    EXPECT_EQ(faultyStatus(), "incoming");
}

INSTANTIATE_TEST_SUITE_P(Answers, ReplyCell, testing::Values("hold", "error", "wrong", "twice"),
    [](const auto &info) { return std::string(info.param == QLatin1String("hold") ? "never" : info.param); });

using LateReplyCell = ReplyCell;

TEST_F(LateReplyCell, ToTheSnapshotRequest)
{
    tell("snapshot hold");
    tell("object /bad/1 3");
    ASSERT_NO_FATAL_FAILURE(beAsked());
    tell("announce /bad/1 3");
    waitForFaultyStatus("incoming");
    tell("object /bad/2 3");
    honest.makeCall();
    tell("release");
    waitForFaultyStatus("incoming", "/bad/2");
    EXPECT_EQ(host.calls().size(), 3) << "a call that is announced twice is one call";
}

TEST_F(LateReplyCell, ToTheSnapshotRequestAfterTheCallWasRemoved)
{
    tell("snapshot hold");
    tell("object /bad/1 3");
    ASSERT_NO_FATAL_FAILURE(beAsked());
    tell("announce /bad/1 3");
    waitForFaultyStatus("incoming");
    tell("withdraw /bad/1");
    waitForFaultyStatus("");
    tell("release");
    // The reply is taken as it is: the call is back, until its application leaves.
    waitForFaultyStatus("incoming");
    honest.makeCall();
}

TEST_F(LateReplyCell, ToCommands)
{
    tell("commands hold");
    ASSERT_NO_FATAL_FAILURE(bringUpFaulty());
    ASSERT_NO_FATAL_FAILURE(giveEveryCommand());
    honest.makeCall();
    tell("release");
    settle();
    EXPECT_EQ(faultyStatus(), "incoming");
}

TEST_F(LateReplyCell, ToCommandsAfterTheCallWasRemoved)
{
    tell("commands hold");
    ASSERT_NO_FATAL_FAILURE(bringUpFaulty());
    ASSERT_NO_FATAL_FAILURE(giveEveryCommand());
    tell("withdraw /bad/1");
    waitForFaultyStatus("");
    tell("release");
    settle();
    honest.makeCall();
}

TEST_F(LateReplyCell, ThatNobodyHasAskedFor)
{
    ASSERT_NO_FATAL_FAILURE(bringUpFaulty());
    tell("unsolicited");
    settle();
    honest.makeCall();
    EXPECT_EQ(faultyStatus(), "incoming");
}
