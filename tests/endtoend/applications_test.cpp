// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// The applications of the kit with the real host and the real plug-in.

#include "desktophost.h"
#include "printers.h"
#include "waitfor.h"

#include <csignal>
#include <gmock/gmock.h>

namespace {

const QString sim = QStringLiteral(RINGLET_SIM);
const QString glibExample = QStringLiteral(RINGLET_EXAMPLE_GLIB);

class Applications : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(host.start()) << host.program().errorOutput().toStdString(); }

    void TearDown() override { EXPECT_EQ(host.stop(), 0) << host.program().errorOutput().toStdString(); }

    DesktopHost host;
};

// Both applications start with one incoming call that the host can do everything with.
class EveryApplication : public Applications, public testing::WithParamInterface<QString>
{
protected:
    void bringUp()
    {
        const QStringList options = GetParam() == sim
            ? QStringList{"--incoming", "sip:ada@example.org", "--name", "Ada"}
            : QStringList{"--address", "sip:ada@example.org", "--name", "Ada"};
        ASSERT_TRUE(application.start(GetParam(), options));
        ASSERT_TRUE(host.waitForTable({"sip:ada@example.org=incoming"}));
        ASSERT_TRUE(application.waitForOutput("call1 audio-state")) << application.lines().join('\n').toStdString();
    }

    Program application;
};

} // namespace

TEST_P(EveryApplication, ShowsItsCallWithNameAndDirection)
{
    bringUp();
    const QVariantMap call = host.call();
    EXPECT_EQ(call.value("LineId"), "Ada");
    EXPECT_EQ(call.value("Incoming"), true);
    EXPECT_EQ(call.value("Holdable"), true);
    EXPECT_EQ(call.value("SupportsDtmf"), true);
}

TEST_P(EveryApplication, ObeysTheHost)
{
    bringUp();
    EXPECT_EQ(host.command("Answer"), QString());
    EXPECT_TRUE(host.waitForStatus("active"));
    EXPECT_EQ(host.command("SendDtmf", {QStringLiteral("12#")}), QString());
    EXPECT_TRUE(application.waitForOutput("call1 command tones \"12#\""));
    EXPECT_EQ(host.command("Hold", {true}), QString());
    EXPECT_TRUE(host.waitForStatus("held"));
    EXPECT_EQ(host.command("Hold", {false}), QString());
    EXPECT_TRUE(host.waitForStatus("active"));
    EXPECT_EQ(host.manage("Audio1", "SetMicrophoneMuted", {true}), QString());
    EXPECT_TRUE(application.waitForOutput("call1 audio-route muted=yes"));
    EXPECT_EQ(host.command("Hangup"), QString());
    EXPECT_TRUE(host.waitForTable({}));
}

TEST_P(EveryApplication, HangsUpFromTheFarEnd)
{
    bringUp();
    application.type(GetParam() == sim ? "hangup call1" : "hangup");
    EXPECT_TRUE(host.waitForTable({}));
}

TEST_P(EveryApplication, KilledTakesItsCallAlong)
{
    bringUp();
    application.signal(SIGKILL);
    EXPECT_TRUE(host.waitForTable({}));
    EXPECT_TRUE(host.providers().isEmpty());
}

TEST_P(EveryApplication, RegistersAgainWhenTheHostIsRestarted)
{
    bringUp();
    ASSERT_EQ(host.command("Answer"), QString());
    ASSERT_TRUE(host.waitForStatus("active"));
    host.kill();
    ASSERT_TRUE(host.start());
    EXPECT_TRUE(host.waitForTable({"sip:ada@example.org=active"}));
}

INSTANTIATE_TEST_SUITE_P(OfTheKit, EveryApplication, testing::Values(sim, glibExample),
    [](const auto &info) { return info.param == sim ? "Simulator" : "GlibExample"; });

// The host subscribes to the call's signals only after it has heard of the call: a status that is sent
// right behind the announcement is lost, and the application has to send it again.
TEST_F(Applications, AStatusThatChangesInTheSameWriteAsTheAnnouncementReachesTheHost)
{
    Program application;
    ASSERT_TRUE(application.start(sim, {"--script", QStringLiteral(SCRIPTS "/immediateanswer.script"), "--stay"}));
    EXPECT_TRUE(host.waitForTable({"sip:ada@example.org=active"}));
    EXPECT_TRUE(application.waitForOutput("ada shown 3 incoming")) << application.lines().join('\n').toStdString();
    EXPECT_TRUE(application.waitForOutput("ada status 5 active again"));
}

TEST_F(Applications, WaitForAHostThatComesLater)
{
    ASSERT_EQ(host.stop(), 0);
    Program application;
    ASSERT_TRUE(application.start(sim, {"--incoming", "sip:ada@example.org"}));
    ASSERT_TRUE(application.waitForOutput("waiting for host"));
    ASSERT_TRUE(host.start());
    EXPECT_TRUE(host.waitForTable({"sip:ada@example.org=incoming"}));
}
