// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BENCH_RESULTS_H
#define BENCH_RESULTS_H

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <string>
#include <vector>

/** What was measured of one program in one row: for every round its values, in the row's unit. */
struct Samples
{
    std::string who;
    std::vector<std::vector<double>> rounds;
};

/** One row: the same thing done by several programs in turns. */
struct Row
{
    std::string name;
    /** How many calls, registrations, … the row is about; 0 where that is no question. */
    int size = 0;
    std::string unit;
    std::vector<Samples> samples;

    /** Puts a value of this program into its round. */
    void add(const std::string &who, int round, double value);
};

/** The rows of one measurement, told on standard output as they come, and written as JSON at the end. */
class Results
{
public:
    void add(const Row &row);

    /** Every value, and `about`. Throws std::runtime_error when the file cannot be written. */
    void write(const std::string &file, QJsonObject about) const;

private:
    QJsonArray m_rows;
};

#endif
