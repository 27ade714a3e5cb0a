// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "results.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QSaveFile>
#include <algorithm>
#include <cstdio>
#include <stdexcept>

double Samples::percentile(double share) const
{
    if (values.empty())
        return 0;
    std::vector<double> sorted = values;
    const auto place = sorted.begin() + std::ptrdiff_t(share * double(sorted.size() - 1));
    std::nth_element(sorted.begin(), place, sorted.end());
    return *place;
}

static QJsonObject summary(const Samples &samples)
{
    return {{QStringLiteral("who"), QString::fromStdString(samples.who)},
        {QStringLiteral("count"), int(samples.values.size())}, {QStringLiteral("p50"), samples.percentile(0.5)},
        {QStringLiteral("p99"), samples.percentile(0.99)}};
}

static const Samples *find(const Row &row, const char *who)
{
    const auto found = std::find_if(
        row.samples.begin(), row.samples.end(), [=](const Samples &samples) { return samples.who == who; });
    return found == row.samples.end() ? nullptr : &*found;
}

static void print(const Row &row)
{
    std::printf("%-28s %6d ", row.name.c_str(), row.size);
    for (const Samples &samples : row.samples)
        std::printf(" %s %.6g", samples.who.c_str(), samples.percentile(0.5));
    std::printf(" %s", row.unit.c_str());
    const Samples *plugin = find(row, "plug-in");
    const Samples *bare = find(row, "bare");
    const Samples *sending = find(row, "bare, sending");
    if (plugin && bare && bare->percentile(0.5) != 0)
        std::printf("  ratio %.3f, p99 %.3f", plugin->percentile(0.5) / bare->percentile(0.5),
            plugin->percentile(0.99) / bare->percentile(0.99));
    if (plugin && sending && sending->percentile(0.5) != 0)
        std::printf("; to sending %.3f", plugin->percentile(0.5) / sending->percentile(0.5));
    std::printf("\n");
    std::fflush(stdout);
}

void Results::add(const Row &row)
{
    print(row);
    QJsonArray samples;
    for (const Samples &one : row.samples)
        samples.append(summary(one));
    m_rows.append(
        QJsonObject{{QStringLiteral("name"), QString::fromStdString(row.name)}, {QStringLiteral("size"), row.size},
            {QStringLiteral("unit"), QString::fromStdString(row.unit)}, {QStringLiteral("samples"), samples}});
}

void Results::write(const std::string &file) const
{
    QSaveFile out(QString::fromStdString(file));
    const QByteArray text = QJsonDocument(QJsonObject{{QStringLiteral("rows"), m_rows}}).toJson();
    if (!out.open(QIODevice::WriteOnly) || out.write(text) != text.size() || !out.commit())
        throw std::runtime_error("cannot write " + file + ": " + out.errorString().toStdString());
}
