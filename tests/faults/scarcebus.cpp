// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// main() of tests on a bus that has little of what an ordinary one has 50,000 of, so that its end is soon
// reached.

#include "busmain.h"

#include <gmock/gmock.h>

static const char limits[] = R"(
  <limit name="max_match_rules_per_connection">300</limit>
  <limit name="max_replies_per_connection">300</limit>
  <limit name="reply_timeout">15000</limit>
)";

int main(int argc, char *argv[])
{
    testing::InitGoogleMock(&argc, argv);
    return testing::GTEST_FLAG(list_tests) ? RUN_ALL_TESTS() : runTestsOnBus(QString::fromLatin1(limits), argc, argv);
}
