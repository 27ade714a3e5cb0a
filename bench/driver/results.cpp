// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "results.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QSaveFile>
#include <algorithm>
#include <cstdio>
#include <stdexcept>

void Row::add(const std::string &who, int round, double value)
{
    auto found
        = std::find_if(samples.begin(), samples.end(), [&](const Samples &samples) { return samples.who == who; });
    if (found == samples.end())
        found = samples.insert(samples.end(), {who, {}});
    if (found->rounds.size() <= size_t(round))
        found->rounds.resize(size_t(round) + 1);
    found->rounds[size_t(round)].push_back(value);
}

// To see how it goes on; what is told of the values in the end is counted by bench/report.
static double middle(const Samples &samples)
{
    std::vector<double> all;
    for (const std::vector<double> &round : samples.rounds)
        all.insert(all.end(), round.begin(), round.end());
    if (all.empty())
        return 0;
    const auto place = all.begin() + std::ptrdiff_t(all.size() / 2);
    std::nth_element(all.begin(), place, all.end());
    return *place;
}

static void print(const Row &row)
{
    std::printf("%-28s %6d ", row.name.c_str(), row.size);
    for (const Samples &samples : row.samples)
        std::printf(" %s %.6g;", samples.who.c_str(), middle(samples));
    std::printf(" %s\n", row.unit.c_str());
    std::fflush(stdout);
}

static QJsonObject toJson(const Samples &samples)
{
    QJsonArray rounds;
    for (const std::vector<double> &round : samples.rounds) {
        QJsonArray values;
        for (const double value : round)
            values.append(value);
        rounds.append(values);
    }
    return {{QStringLiteral("who"), QString::fromStdString(samples.who)}, {QStringLiteral("rounds"), rounds}};
}

void Results::add(const Row &row)
{
    print(row);
    QJsonArray samples;
    for (const Samples &one : row.samples)
        samples.append(toJson(one));
    m_rows.append(
        QJsonObject{{QStringLiteral("name"), QString::fromStdString(row.name)}, {QStringLiteral("size"), row.size},
            {QStringLiteral("unit"), QString::fromStdString(row.unit)}, {QStringLiteral("samples"), samples}});
}

void Results::write(const std::string &file, QJsonObject about) const
{
    about.insert(QStringLiteral("rows"), m_rows);
    QSaveFile out(QString::fromStdString(file));
    const QByteArray text = QJsonDocument(about).toJson(QJsonDocument::Compact) + '\n';
    if (!out.open(QIODevice::WriteOnly) || out.write(text) != text.size() || !out.commit())
        throw std::runtime_error("cannot write " + file + ": " + out.errorString().toStdString());
}
