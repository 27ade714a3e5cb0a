// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "simulator/eventlog.h"

#include <gmock/gmock.h>

TEST(EventLogTest, OfLinesThatNobodyTakesTheOldestGo)
{
    EventLog events;
    testing::internal::CaptureStdout();
    for (int i = 0; i < 3000; ++i)
        events.add(QStringLiteral("line %1 ").arg(i) + QString(4000, 'x'));
    EXPECT_GT(testing::internal::GetCapturedStdout().size(), 3000u * 4000u) << "all are printed";
    QStringList kept;
    while (!events.isEmpty())
        kept.append(events.take());
    EXPECT_LE(kept.join(QString()).size(), 4 * 1024 * 1024);
    EXPECT_GT(kept.size(), 1000);
    EXPECT_TRUE(kept.constLast().startsWith("line 2999 "));
}
