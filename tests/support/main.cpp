// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "privatebus.h"

#include "scriptedapplication.h"

#include <QtCore/QCoreApplication>
#include <gmock/gmock.h>

// The bus layer holds back what arrives before the event loop first runs, and may deliver it behind what
// arrives right after: applications would be seen to come after they have called.
static void waitForDispatch()
{
    ScriptedApplication caller;
    caller.call(ScriptedApplication::thisProcess(), QStringLiteral("/"),
        QStringLiteral("org.freedesktop.DBus.Introspectable"), QStringLiteral("Introspect"));
}

namespace {

// What has died by the end of a test is that test's failure, also when nothing was waited for any more.
class LossWatch : public testing::EmptyTestEventListener
{
    void OnTestEnd(const testing::TestInfo &) override { Program::reportLost(); }
};

} // namespace

int main(int argc, char *argv[])
{
    testing::InitGoogleMock(&argc, argv);
    if (testing::GTEST_FLAG(list_tests))
        return RUN_ALL_TESTS();
    QCoreApplication application(argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new LossWatch);
    // Before the tests: the first use of the session bus decides which one it is for the whole process.
    PrivateBus bus;
    bus.useAsSessionBus();
    waitForDispatch();
    return RUN_ALL_TESTS();
}
