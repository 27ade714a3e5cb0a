// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "echofilter.h"

#include <gtest/gtest.h>

using Ringlet::EchoFilter;
using namespace std::chrono_literals;

TEST(EchoFilter, WhatNobodyToldIsNoEcho)
{
    EchoFilter<int> filter;
    EXPECT_FALSE(filter.isEcho(1));
}

TEST(EchoFilter, WhatWasToldIsAnEchoOnce)
{
    EchoFilter<int> filter;
    filter.told(1);
    EXPECT_TRUE(filter.isEcho(1));
    EXPECT_FALSE(filter.isEcho(1));
}

TEST(EchoFilter, EveryThingToldHasItsEcho)
{
    EchoFilter<int> filter;
    filter.told(1);
    filter.told(2);
    filter.told(1);
    EXPECT_TRUE(filter.isEcho(1));
    EXPECT_TRUE(filter.isEcho(2));
    EXPECT_TRUE(filter.isEcho(1));
    EXPECT_FALSE(filter.isEcho(2));
}

TEST(EchoFilter, AnEchoSettlesWhatWasToldBefore)
{
    EchoFilter<int> filter;
    filter.told(1);
    filter.told(2);
    EXPECT_TRUE(filter.isEcho(2));
    EXPECT_FALSE(filter.isEcho(1));
}

TEST(EchoFilter, AnOwnChangeSettlesEverything)
{
    EchoFilter<int> filter;
    filter.told(1);
    EXPECT_FALSE(filter.isEcho(2));
    EXPECT_FALSE(filter.isEcho(1));
}

TEST(EchoFilter, ForgetsWhatWasToldLongAgo)
{
    EchoFilter<int> filter(0ms);
    filter.told(1);
    EXPECT_FALSE(filter.isEcho(1));
}
