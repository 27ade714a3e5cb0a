// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// The bus itself dies. By itself in this file, for nothing can come after it in the same process.

#include "faultcell.h"

#include "busdaemon.h"
#include "printers.h"
#include "privatebus.h"
#include "programs.h"
#include "textoutput.h"

#include <csignal>
#include <gmock/gmock.h>

using testing::HasSubstr;

using LostBusCell = FaultCell;

TEST_F(LostBusCell, TheDaemonIsKilled)
{
    ASSERT_NO_FATAL_FAILURE(bringUpFaulty());
    expectNoHost();
    QElapsedTimer clock;
    clock.start();
    const qint64 daemon = BusDaemon::processId();
    Program::setMayEnd(daemon);
    ::kill(pid_t(daemon), SIGKILL);
    EXPECT_EQ(host.program().waitForExit(), 1);
    note(QStringLiteral("voicecalld has ended after %1 ms").arg(clock.elapsed()));
    EXPECT_THAT(host.program().errorOutput().toStdString(), HasSubstr("voicecalld: the session bus is gone\n"));

    // On the next bus it starts as if nothing had been.
    const PrivateBus next;
    next.useAsSessionBus();
    Program again;
    ASSERT_TRUE(again.start(Programs::voicecalld(), {"--plugin", Programs::plugin()}));
    ASSERT_TRUE(again.waitForOutput("voicecalld: ready"));
    ScriptedApplication application;
    ASSERT_TRUE(application.registerCallManager("/m", DesktopHost::name()));
    again.signal(SIGTERM);
    EXPECT_EQ(again.waitForExit(), 0) << again.errorOutput();
}
