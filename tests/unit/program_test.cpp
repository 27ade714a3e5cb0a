// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// That tests notice when what they stand on dies.

#include "program.h"
#include "waitfor.h"

#include <csignal>
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

static bool startShell(Program &program, const char *script)
{
    return program.start(QStringLiteral("sh"), {QStringLiteral("-c"), QString::fromLatin1(script)});
}

// A wait for what holds of the dead, too.
static bool wait()
{
    return waitFor([] { return true; });
}

// What becomes of a program with the script, told within a wait and at its end.
static void runUntil(const char *script, void (*prepare)(Program &program))
{
    Program program;
    ASSERT_TRUE(startShell(program, script));
    prepare(program);
}

static void letItEnd(Program &program)
{
    ASSERT_TRUE(QTest::qWaitFor([&] { return !program.isRunning(); }, waitLimitMs));
}

TEST(LostProgram, EndsAWaitAtOnceWhateverIsWaitedFor)
{
    EXPECT_NONFATAL_FAILURE(runUntil("kill -TRAP $$",
                                [](Program &program) {
                                    letItEnd(program);
                                    const QDeadlineTimer limit(waitLimitMs);
                                    EXPECT_TRUE(
                                        !wait() && !waitFor([] { return false; }) && !limit.hasExpired()); // NOLINT
                                }),
        "sh has ended by itself, signal 5");
}

TEST(LostProgram, IsToldWhenItsObjectGoes)
{
    EXPECT_NONFATAL_FAILURE(runUntil("exit 3", letItEnd), "sh has ended by itself, exit code 3");
    EXPECT_NONFATAL_FAILURE(runUntil("kill -SEGV $$", letItEnd), "signal 11");
}

TEST(LostProgram, MayNotEndWellEitherWhenItHasToStay)
{
    EXPECT_NONFATAL_FAILURE(runUntil("exit 0",
                                [](Program &program) {
                                    program.setMustStay();
                                    letItEnd(program);
                                    EXPECT_FALSE(wait());
                                }),
        "exit code 0");
}

// As a leak checker does.
TEST(LostProgram, IsOneThatEndsBadlyWhenItIsAskedTo)
{
    EXPECT_NONFATAL_FAILURE(runUntil("trap 'kill $!; exit 23' TERM; sleep 60 & echo up; wait",
                                [](Program &program) { EXPECT_TRUE(program.waitForOutput("up")); }),
        "sh has not ended well, exit code 23");
}

TEST(LostProgram, IsNoneWhoseEndTheTestWants)
{
    runUntil("exit 0", letItEnd);
    runUntil("exit 3", [](Program &program) { EXPECT_EQ(program.waitForExit(), 3); });
    runUntil("exit 3", [](Program &program) {
        program.setMayEnd();
        letItEnd(program);
    });
    runUntil("exec sleep 60", [](Program &program) {
        program.setMustStay();
        program.signal(SIGKILL);
        letItEnd(program);
    });
    runUntil("exec sleep 60", [](Program &program) { program.signal(SIGSTOP); });
    EXPECT_TRUE(wait());
}
