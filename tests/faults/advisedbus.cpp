// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// main() of tests on a bus that is set up as docs/limits.md advises.

#include "busmain.h"

#include <gmock/gmock.h>

int main(int argc, char *argv[])
{
    testing::InitGoogleMock(&argc, argv);
    return testing::GTEST_FLAG(list_tests) ? RUN_ALL_TESTS() : runTestsOnBus(advisedLimits(), argc, argv);
}
