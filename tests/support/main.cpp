// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "privatebus.h"

#include <QtCore/QCoreApplication>
#include <gmock/gmock.h>

int main(int argc, char *argv[])
{
    testing::InitGoogleMock(&argc, argv);
    if (testing::GTEST_FLAG(list_tests))
        return RUN_ALL_TESTS();
    QCoreApplication application(argc, argv);
    // Before the tests: the first use of the session bus decides which one it is for the whole process.
    PrivateBus bus;
    bus.useAsSessionBus();
    return RUN_ALL_TESTS();
}
