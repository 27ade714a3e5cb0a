// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// One application has used up what the bus gives to the host.

#include "faultcell.h"

#include "printers.h"
#include "textoutput.h"
#include "waitfor.h"

#include <csignal>

namespace {

class ScarceBusCell : public FaultCell
{
protected:
    /** A stopped application, and more commands for it than the bus keeps. */
    void useUpReplies()
    {
        ASSERT_NO_FATAL_FAILURE(bringUpFaulty());
        ASSERT_NO_FATAL_FAILURE(tellLast("stop"));
        for (int i = 0; i < 320; ++i)
            commandFaulty("SendDtmf", {"1"});
        EXPECT_FALSE(honest.hearsCommands());
    }
};

QString callWithUri(const char *uri)
{
    return QStringLiteral("{'zelkovar.Call.Call1': {'Status': <uint32 3>, 'Incoming': <true>, 'Uri': <'%1'>}}")
        .arg(QLatin1String(uri));
}

} // namespace

TEST_F(ScarceBusCell, WithoutMatchRulesOldCallsGoOnAndNewOnesDoNotFollowTheirStatus)
{
    ASSERT_NO_FATAL_FAILURE(bringUpFaulty());
    faulty.type("flood registrations 200");
    ASSERT_TRUE(faulty.waitForOutput("answered"));
    honest.exchange();

    ScriptedApplication &application = honest.connection();
    application.announce("/honest", "/honest/deaf", callWithUri("deaf"));
    ASSERT_TRUE(application.settle(DesktopHost::name()));
    EXPECT_EQ(host.commandTo("deaf", "Answer"), QString());
    ASSERT_TRUE(application.settle(DesktopHost::name()));
    EXPECT_TRUE(application.commands().contains("/honest/deaf zelkovar.Call.Call1.Accept()"));
    application.changeStatus("/honest/deaf", 5);
    ASSERT_TRUE(application.settle(DesktopHost::name()));
    EXPECT_TRUE(host.table().contains("deaf=incoming")) << "the bus had a match rule left: " << host.table().join(' ');

    application.withdraw("/honest", "/honest/deaf", {"zelkovar.Call.Call1"});
    ASSERT_TRUE(application.settle(DesktopHost::name()));
    EXPECT_TRUE(host.table().filter("deaf").isEmpty());
}

TEST_F(ScarceBusCell, WithoutMatchRulesANewApplicationIsShownWithTheCallsOfItsSnapshotOnly)
{
    ASSERT_NO_FATAL_FAILURE(bringUpFaulty());
    faulty.type("flood registrations 200");
    ASSERT_TRUE(faulty.waitForOutput("answered"));
    ScriptedApplication late;
    late.setObjects(QStringLiteral("{'/late/1': %1}").arg(callWithUri("late")));
    ASSERT_TRUE(late.registerCallManager("/late", DesktopHost::name()));
    EXPECT_TRUE(waitFor([&] { return host.table().contains("late=incoming"); }));
    late.announce("/late", "/late/2", callWithUri("unheard"));
    ASSERT_TRUE(late.settle(DesktopHost::name()));
    EXPECT_FALSE(host.table().contains("unheard=incoming")) << "the bus had a match rule left";
}

TEST_F(ScarceBusCell, WithoutPendingRepliesCommandsToOthersAreLostUntilTheApplicationGoes)
{
    ASSERT_NO_FATAL_FAILURE(useUpReplies());
    // What applications say still counts.
    honest.connection().changeStatus("/honest/lasting", 2);
    EXPECT_TRUE(waitFor([&] { return host.table().contains("honest:/honest/lasting=dialing"); }));
    honest.connection().changeStatus("/honest/lasting", 7);

    killFaulty();
    ASSERT_NO_FATAL_FAILURE(waitForDeparture());
    EXPECT_TRUE(honest.hearsCommands());
}

TEST_F(ScarceBusCell, WithoutPendingRepliesCommandsComeAgainWhenTheApplicationGoesOn)
{
    ASSERT_NO_FATAL_FAILURE(useUpReplies());
    faulty.signal(SIGCONT);
    ASSERT_TRUE(faulty.waitForOutput("done stop"));
    tellAndAwait("register /bad", "registered /bad");
    EXPECT_TRUE(honest.hearsCommands());
}

TEST_F(ScarceBusCell, WithoutPendingRepliesCommandsComeAgainWhenTheBusGivesUpWaiting)
{
    ASSERT_NO_FATAL_FAILURE(useUpReplies());
    EXPECT_TRUE(waitFor([&] { return honest.hearsCommands(); }));
}
