// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// What is around host and applications fails: the bus daemon, descriptors, the host itself.

#include "faultcell.h"

#include "busdaemon.h"
#include "patience.h"
#include "printers.h"
#include "processfacts.h"
#include "programs.h"
#include "textoutput.h"

#include <array>
#include <csignal>
#include <gmock/gmock.h>

using testing::HasSubstr;

namespace {

class BusCell : public FaultCell
{
protected:
    void SetUp() override
    {
        FaultCell::SetUp();
        daemon = pid_t(BusDaemon::processId());
        ASSERT_GT(daemon, 0);
    }

    std::string said() { return host.program().errorOutput().toStdString(); }

    int openDescriptors() { return ProcessFacts::openDescriptors(host.program().processId()); }

    bool limitDescriptors(int count) { return ProcessFacts::limitDescriptors(host.program().processId(), count); }

    pid_t daemon = 0;
};

} // namespace

TEST_F(BusCell, TheDaemonIsStoppedForFiveSeconds)
{
    ASSERT_NO_FATAL_FAILURE(bringUpFaulty());
    const qint64 pid = host.program().processId();
    int used = 0;
    QElapsedTimer clock;
    ::kill(daemon, SIGSTOP);
    faulty.type("status /bad/1 5");
    honest.exchange([&] {
        const int before = ProcessFacts::processorTime(pid);
        endure(5000);
        used = ProcessFacts::processorTime(pid) - before;
        clock.start();
        ::kill(daemon, SIGCONT);
    });
    EXPECT_LT(used, 1000) << "ms of processor time: the host has to wait, not to spin";
    note(QStringLiteral("used %1 ms of processor time while the bus stood still; the command of that time and its"
                        " effect were there %2 ms after it went on")
             .arg(used)
             .arg(clock.elapsed()));
    waitForFaultyStatus("active");
    honest.commandTimes.clear(); // of five seconds
}

TEST_F(BusCell, WithoutAFreeDescriptorTheHonestCallGoesOn)
{
    ASSERT_NO_FATAL_FAILURE(bringUpFaulty());
    // What is open stays open, and nothing more can be opened. Sanitizers need a pipe to look at an object.
    ASSERT_TRUE(limitDescriptors(isSanitized ? openDescriptors() + 2 : 3));
    honest.makeCall();
    tell("announce /bad/2 3");
    waitForFaultyStatus("incoming", "/bad/2");
    honest.exchange();
}

TEST_F(BusCell, DescriptorsThatFitAreClosedAgain)
{
    ASSERT_NO_FATAL_FAILURE(bringUpFaulty());
    ASSERT_TRUE(limitDescriptors(openDescriptors() + 20));
    for (int i = 0; i < 100; ++i) {
        tell("descriptors 4");
        tellAndAwait("register /bad", "registered /bad");
    }
    honest.makeCall();
}

TEST_F(BusCell, DescriptorsThatDoNotFitCostTheHostItsBusAsIsDocumented)
{
    ASSERT_NO_FATAL_FAILURE(bringUpFaulty());
    expectNoHost();
    ASSERT_TRUE(limitDescriptors(openDescriptors() + 4));
    tell("descriptors 10");
    EXPECT_EQ(host.program().waitForExit(), 1);
    EXPECT_THAT(said(), HasSubstr("voicecalld: the session bus is gone\n"));
    faulty.signal(SIGKILL);

    // Started again by its supervisor, it takes the honest call up anew.
    ASSERT_TRUE(host.start());
    HonestApplication again(20000);
    ASSERT_NO_FATAL_FAILURE(again.bringUp());
    ASSERT_NO_FATAL_FAILURE(again.makeCall());
    ASSERT_NO_FATAL_FAILURE(again.hangUp());
    EXPECT_EQ(host.stop(), 0) << said();
}

TEST_F(BusCell, TheHostIsKilledAndTenApplicationsComeBackByThemselves)
{
    expectNoHost();
    std::array<Program, 10> applications;
    QStringList table = {"honest:/honest/lasting=held"};
    for (Program &application : applications) {
        const QString address = QStringLiteral("sip:%1@example.org").arg(table.size());
        ASSERT_TRUE(application.start(Programs::simulator(), {"--incoming", address}));
        table.append(address + "=incoming");
    }
    table.sort();
    ASSERT_TRUE(host.waitForTable(table)) << host.table().join(", ");

    host.kill();
    QElapsedTimer clock;
    clock.start();
    ASSERT_TRUE(host.start());
    table.removeAll("honest:/honest/lasting=held");
    ASSERT_TRUE(host.waitForTable(table)) << host.table().join(", ");
    note(QStringLiteral("ten calls were back %1 ms after the host was started again").arg(clock.elapsed()));

    // The honest application registers anew, and finds the host as good as new.
    HonestApplication again(20000);
    ASSERT_TRUE(again.connection().registerCallManager("/m", DesktopHost::name()));
    for (int i = 1; i <= 10; ++i) {
        const QString address = QStringLiteral("sip:%1@example.org").arg(i);
        EXPECT_EQ(host.commandTo(address, "Answer"), QString());
        EXPECT_TRUE(holdsWithin(20000, [&] { return host.table().contains(address + "=active"); }));
    }
    EXPECT_EQ(host.stop(), 0) << said();
}

// --- The place of the service object is taken

namespace {

std::string leftOut(const QString &file)
{
    return "voicecalld: " + file.toStdString() + " is left out: it could not be initialised\n";
}

/** voicecalld with two plug-ins that want the same place. */
class PathCell : public testing::Test
{
protected:
    void SetUp() override { qputenv("QT_LOGGING_RULES", "default.info=false\ndefault.debug=false"); }

    void TearDown() override
    {
        host.signal(SIGTERM);
        EXPECT_EQ(host.waitForExit(), 0) << host.errorOutput();
    }

    void start(const QStringList &options)
    {
        ASSERT_TRUE(host.start(Programs::voicecalld(), options));
        ASSERT_TRUE(host.waitForOutput("voicecalld: ready")) << host.errorOutput();
        said = host.errorOutput().toStdString();
    }

    Program host;
    std::string said;
    HonestApplication honest{20000};
};

} // namespace

TEST_F(PathCell, TheServicePathIsTakenBeforeThePluginIsInitialised)
{
    ASSERT_NO_FATAL_FAILURE(start({"--plugin", Programs::pathTaker(), "--plugin", Programs::plugin()}));
    EXPECT_THAT(said, HasSubstr(leftOut(Programs::plugin())));
    EXPECT_THAT(host.lines().join('\n').toStdString(), HasSubstr(" with pathtaker"));
    EXPECT_FALSE(honest.connection().registerCallManager("/m", DesktopHost::name()));
    honest.roundTrip();
}

TEST_F(PathCell, TheServicePathIsWantedByALaterPlugin)
{
    ASSERT_NO_FATAL_FAILURE(start({"--plugin", Programs::plugin(), "--plugin", Programs::pathTaker()}));
    EXPECT_THAT(said, HasSubstr(leftOut(Programs::pathTaker())));
    ASSERT_NO_FATAL_FAILURE(honest.bringUp());
    ASSERT_NO_FATAL_FAILURE(honest.makeCall());
    ASSERT_NO_FATAL_FAILURE(honest.hangUp());
}
