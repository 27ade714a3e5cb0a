// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "growth.h"

double Growth::slope() const
{
    double meanX = 0;
    double meanY = 0;
    for (const Point &point : m_points) {
        meanX += point.x / double(m_points.size());
        meanY += point.y / double(m_points.size());
    }
    double products = 0;
    double squares = 0;
    for (const Point &point : m_points) {
        products += (point.x - meanX) * (point.y - meanY);
        squares += (point.x - meanX) * (point.x - meanX);
    }
    return squares > 0 ? products / squares : 0;
}
