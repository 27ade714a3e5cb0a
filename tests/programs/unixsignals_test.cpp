// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "programs/unixsignals.h"

#include "program.h"
#include "waitfor.h"

#include <csignal>
#include <cstring>
#include <gmock/gmock.h>
#include <sys/resource.h>

using testing::ElementsAre;
using testing::StartsWith;

TEST(UnixSignalsTest, SignalsReachTheEventLoop)
{
    const UnixSignals unixSignals({SIGUSR1, SIGUSR2});
    EXPECT_EQ(unixSignals.errorString().toStdString(), "");
    std::vector<int> received;
    QObject::connect(&unixSignals, &UnixSignals::received, [&](int number) { received.push_back(number); });
    raise(SIGUSR2);
    raise(SIGUSR1);
    raise(SIGUSR1);
    waitFor([&] { return received.size() == 3; });
    EXPECT_THAT(received, ElementsAre(SIGUSR2, SIGUSR1, SIGUSR1));
}

TEST(UnixSignalsTest, ASecondSignalEndsTheProcessWhereThatIsWanted)
{
    const auto raiseTwice = [](UnixSignals::Second second) {
        const UnixSignals unixSignals({SIGTERM}, second);
        raise(SIGTERM);
        raise(SIGTERM);
        _exit(7);
    };
    EXPECT_EXIT(raiseTwice(UnixSignals::Second::EndsTheProcess), testing::KilledBySignal(SIGTERM), "");
    EXPECT_EXIT(raiseTwice(UnixSignals::Second::IsReceived), testing::ExitedWithCode(7), "");
}

// The sanitizers open files themselves.
#ifndef IS_SANITIZED

TEST(UnixSignalsTest, SaysWhyItCannotWork)
{
    rlimit before = {};
    getrlimit(RLIMIT_NOFILE, &before);
    const rlimit none = {0, before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    const QString error = UnixSignals({SIGUSR1}).errorString();
    setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ(error.toStdString(), "cannot watch for signals: Too many open files");
}

// Qt itself gives up below 5 files. Which of the things that it then lacks a program tells of, it may decide.
class ProgramWithFewFiles : public testing::TestWithParam<std::tuple<const char *, int>>
{
};

TEST_P(ProgramWithFewFiles, SaysSoAndDoesNotCrash)
{
    const auto &[file, files] = GetParam();
    QStringList command = {QStringLiteral("--nofile=%1").arg(files), QString::fromUtf8(file)};
    if (QByteArray(file).endsWith("callctl"))
        command.append(QStringLiteral("watch"));
    Program program;
    ASSERT_TRUE(program.start(QStringLiteral("prlimit"), command));
    EXPECT_GT(program.waitForExit(), 0);
    EXPECT_THAT(program.errorOutput().toStdString(),
        StartsWith(QByteArray(file).mid(QByteArray(file).lastIndexOf('/') + 1).toStdString() + ": "));
}

INSTANTIATE_TEST_SUITE_P(Of, ProgramWithFewFiles,
    testing::Combine(testing::Values(VOICECALLD, CALLCTL, RINGLET_SIM, RINGLET_BARESIP), testing::Values(6, 7)),
    [](const auto &info) {
        const QByteArray file = std::get<0>(info.param);
        return file.mid(file.lastIndexOf('/') + 1).replace('-', '_').toStdString() + "_"
            + std::to_string(std::get<1>(info.param));
    });

#endif
