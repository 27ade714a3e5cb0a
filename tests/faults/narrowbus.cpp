// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// main() of tests on a bus that lets only small messages through, as somebody may have set it up; voicecalld is
// told so.

#include "busmain.h"

#include <gmock/gmock.h>

static const char limits[] = R"(<limit name="max_message_size">1000000</limit>)";

int main(int argc, char *argv[])
{
    testing::InitGoogleMock(&argc, argv);
    return testing::GTEST_FLAG(list_tests) ? RUN_ALL_TESTS() : runTestsOnBus(QString::fromLatin1(limits), argc, argv);
}
