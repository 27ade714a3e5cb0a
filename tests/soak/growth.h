// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_GROWTH_H
#define TESTS_GROWTH_H

#include <vector>

/** How something grows with something else. */
class Growth
{
public:
    void add(double x, double y) { m_points.push_back({x, y}); }

    /** What y grows by for each unit of x: the line with the least squares of distances; 0 for less than two points. */
    double slope() const;

private:
    struct Point
    {
        double x;
        double y;
    };
    std::vector<Point> m_points;
};

#endif
