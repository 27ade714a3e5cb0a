// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "histories.h"
#include "historyrun.h"
#include "historytext.h"

#include <QtCore/QDir>
#include <QtCore/QLoggingCategory>
#include <QtDBus/QDBusConnection>
#include <fstream>
#include <gmock/gmock.h>

using namespace testing;

// One for the process: a monitor per history would cost more than the history. What the plug-in logs is not
// looked at here, and writing it would cost as much.
static BusMonitor &monitor()
{
    QLoggingCategory::setFilterRules(QStringLiteral("*=false"));
    static BusMonitor shared(QDBusConnection::sessionBus().baseService().toStdString());
    return shared;
}

// A number from the environment, for other histories than those of every day, or the usual one.
static std::uint64_t setting(const char *variable, std::uint64_t usual)
{
    return qEnvironmentVariableIsSet(variable) ? qEnvironmentVariable(variable).toULongLong() : usual;
}

class ModelHistories : public TestWithParam<int>
{
};

TEST_P(ModelHistories, PluginAndModelAgree)
{
    const std::uint64_t seed = setting("RINGLET_MODEL_SEED", 1) + std::uint64_t(GetParam());
    const int count = int(setting("RINGLET_MODEL_HISTORIES", 50));
    const HistoriesResult result
        = checkHistories(seed, count, [](const History &history) { return runHistory(monitor(), history).difference; });

    EXPECT_THAT(result.difference, IsEmpty())
        << "seed " << seed << ", after " << result.passed << " histories that agreed:\n"
        << text(result.failed);
    EXPECT_THAT(result.passed, Eq(count));
}

INSTANTIATE_TEST_SUITE_P(SeedPlus, ModelHistories, Range(0, 6));

class KeptHistory : public TestWithParam<std::string>
{
};

TEST_P(KeptHistory, PluginAndModelAgree)
{
    std::ifstream file(HISTORIES "/" + GetParam() + ".history");
    ASSERT_TRUE(file);
    const History history = parseHistory(file);
    const HistoryResult result = runHistory(monitor(), history);

    EXPECT_THAT(result.difference, IsEmpty());
    EXPECT_THAT(result.steps, Eq(int(history.size())));
}

static std::vector<std::string> keptHistories()
{
    std::vector<std::string> names;
    for (const QFileInfo &file : QDir(QStringLiteral(HISTORIES)).entryInfoList({QStringLiteral("*.history")}))
        names.push_back(file.completeBaseName().toStdString());
    return names;
}

INSTANTIATE_TEST_SUITE_P(
    Named, KeptHistory, ValuesIn(keptHistories()), [](const TestParamInfo<std::string> &info) { return info.param; });

TEST(Model, HasMostStepsOfAHistoryDone)
{
    int done = 0, all = 0;
    checkHistories(1, 20, [&](const History &history) {
        const HistoryResult result = runHistory(monitor(), history);
        done += result.steps;
        all += int(history.size());
        return result.difference;
    });
    EXPECT_THAT(done, Gt(all / 2));
}
