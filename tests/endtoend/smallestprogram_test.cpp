// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// The program of the README, as it is printed there, built with the tree and outside of it.

#include "desktophost.h"
#include "printers.h"

#include <gmock/gmock.h>

namespace {

struct Build
{
    const char *name;
    const char *program;
};

void PrintTo(const Build &build, std::ostream *stream) { *stream << build.name; }

class SmallestProgram : public testing::TestWithParam<Build>
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(host.start()) << host.program().errorOutput().toStdString();
        ASSERT_TRUE(program.start(GetParam().program, {}, {"LD_LIBRARY_PATH=" OUTSIDE_LIBRARIES}));
        ASSERT_TRUE(host.waitForTable({"sip:ann@example.org=incoming"})) << program.errorOutput().toStdString();
    }

    DesktopHost host;
    Program program;
};

} // namespace

TEST_P(SmallestProgram, ShowsACallThatCanBeAnsweredAndHungUp)
{
    EXPECT_EQ(host.call().value("LineId"), "Ann Example");
    EXPECT_EQ(host.command("Answer"), QString());
    EXPECT_TRUE(host.waitForStatus("active"));
    EXPECT_EQ(host.command("Hangup"), QString());
    EXPECT_TRUE(host.waitForTable({}));
    EXPECT_EQ(program.waitForExit(), 0);
}

TEST_P(SmallestProgram, ShowsACallThatCanBeRejected)
{
    EXPECT_EQ(host.command("Hangup"), QString());
    EXPECT_TRUE(host.waitForTable({}));
    EXPECT_EQ(program.waitForExit(), 0);
}

TEST_P(SmallestProgram, OutlivesTheHost)
{
    host.kill();
    ASSERT_TRUE(host.start());
    EXPECT_TRUE(host.waitForTable({"sip:ann@example.org=incoming"}));
}

// The bus library can tell of every call that waits in the main thread. That it does, the host shows, whose
// plug-in has to ask the bus daemon for a process id.
TEST(ClientLibrary, NeverWaits)
{
    qputenv("Q_DBUS_BLOCKING_CALL_MAIN_THREAD_WARNING_MS", "0");
    DesktopHost host;
    ASSERT_TRUE(host.start());
    Program program;
    ASSERT_TRUE(program.start(README_PROGRAM, {}));
    ASSERT_TRUE(host.waitForTable({"sip:ann@example.org=incoming"}));
    host.kill();
    ASSERT_TRUE(host.start());
    ASSERT_TRUE(host.waitForTable({"sip:ann@example.org=incoming"}));
    EXPECT_EQ(host.command("Hangup"), QString());
    EXPECT_EQ(program.waitForExit(), 0);
    EXPECT_TRUE(host.program().waitForError("blocking call"));
    EXPECT_EQ(program.errorOutput(), QString());
}

INSTANTIATE_TEST_SUITE_P(Built, SmallestProgram,
    testing::Values(Build{"InTheTree", README_PROGRAM}, Build{"WithCMake", OUTSIDE "/with-cmake"},
        Build{"WithPkgConfig", OUTSIDE "/with-pkg-config"}),
    [](const auto &info) { return info.param.name; });
