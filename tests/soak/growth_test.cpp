// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "growth.h"

#include <gtest/gtest.h>

TEST(Growth, OfALineIsItsSlope)
{
    Growth growth;
    for (int x = 10; x < 20; ++x)
        growth.add(x, 3.0 * x + 7);
    EXPECT_DOUBLE_EQ(growth.slope(), 3.0);
}

TEST(Growth, OfWhatGoesUpAndComesDownIsNone)
{
    Growth growth;
    const double values[] = {4, 6, 9, 6, 4};
    for (int x = 0; x < 5; ++x)
        growth.add(x, values[x]);
    EXPECT_DOUBLE_EQ(growth.slope(), 0.0);
}

TEST(Growth, IsTheOneWithTheLeastSquaresWherePointsScatter)
{
    Growth growth;
    growth.add(0, 1);
    growth.add(1, 0);
    growth.add(2, 4);
    EXPECT_DOUBLE_EQ(growth.slope(), 1.5);
}

TEST(Growth, OfOnePointIsNone)
{
    Growth growth;
    EXPECT_EQ(growth.slope(), 0.0);
    growth.add(5, 5);
    EXPECT_EQ(growth.slope(), 0.0);
}
