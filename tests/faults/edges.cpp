// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// Single messages near the limits of the bus and of its libraries. On ordinary buses these are large: such
// programs belong to those that take their time, and so to scripts/check faults --long.

#include "faultcell.h"

#include "busmain.h"
#include "printers.h"
#include "textoutput.h"

#include <QtDBus/QDBusConnection>

namespace {

constexpr int edgePatience = 60000;
constexpr int protocolLimit = 128 * 1024 * 1024;

class EdgeCell : public FaultCell
{
protected:
    EdgeCell() : FaultCell(edgePatience) { memoryBound = 1024 * 1024; }

    void sendLarge(const QString &kind, int size)
    {
        ASSERT_NO_FATAL_FAILURE(bringUpFaulty());
        ASSERT_NO_FATAL_FAILURE(tell(QStringLiteral("large %1 %2").arg(kind).arg(size)));
        // Until the host has come to it.
        ASSERT_NO_FATAL_FAILURE(tellAndAwait("register /bad/behind", "registered /bad/behind"));
        honest.makeCall();
    }

    /** The daemon adds the sender to what it passes on, and the receiver's library cuts off the connection. */
    bool growsBeyondTheProtocol() { return largestMessage() == protocolLimit; }
};

class EdgeOfTheBus : public EdgeCell, public testing::WithParamInterface<const char *>
{
};

} // namespace

TEST_P(EdgeOfTheBus, Reaches)
{
    // The largest that is passed on as it is: on a bus without a limit of its own, what the daemon adds counts.
    sendLarge(GetParam(), largestMessage() - (growsBeyondTheProtocol() ? 64 : 8));
}

INSTANTIATE_TEST_SUITE_P(Of, EdgeOfTheBus, testing::Values("announcement", "call", "registration"),
    [](const auto &info) { return std::string(info.param); });

TEST_F(EdgeCell, TonesOfTheLargestSizeToACallWithALongPath)
{
    ASSERT_NO_FATAL_FAILURE(bringUpFaulty());
    const QString path = "/bad/" + QString(240, 'x');
    ASSERT_NO_FATAL_FAILURE(tell(QStringLiteral("announce %1 3").arg(path)));
    ASSERT_NO_FATAL_FAILURE(waitForFaultyStatus("incoming", path));
    host.commandTo("faulty:" + path, "SendDtmf", {QString(largestMessage() - 320, '1')});
    honest.makeCall();
}

TEST_F(EdgeCell, WhereTheLibraryWouldStopReading)
{
    // 63.5 and 63.3 MiB; a bus with a smaller limit does not let them through.
    if (largestMessage() < protocolLimit / 2) {
        ASSERT_NO_FATAL_FAILURE(bringUpFaulty());
        faulty.type("large call 66584576");
        EXPECT_EQ(faulty.waitForExit(), 0) << "the application is still on the bus";
        beginDeparture();
        return;
    }
    ASSERT_NO_FATAL_FAILURE(sendLarge("call", 66584576));
    ASSERT_NO_FATAL_FAILURE(tell("large announcement 66374861"));
    honest.makeCall();
}

TEST_F(EdgeCell, TheLargestMessageOfTheProtocolEndsTheHostOnABusWithoutLimitsAsIsDocumented)
{
    ASSERT_NO_FATAL_FAILURE(bringUpFaulty());
    faulty.type(QStringLiteral("large call %1").arg(protocolLimit - 8));
    if (growsBeyondTheProtocol()) {
        expectNoHost();
        EXPECT_EQ(host.program().waitForExit(), 1);
    } else {
        beginDeparture();
        EXPECT_EQ(faulty.waitForExit(), 0) << "the application is still on the bus";
    }
}

TEST_F(EdgeCell, TwoRegistrationsWhosePathsAreTooLongForOneList)
{
    // 34 MB each, or as much of it as the bus lets through: more than an array may hold.
    const int length = qMin(34000000, largestMessage() * 6 / 10);
    ASSERT_NO_FATAL_FAILURE(tellAndAwait(QStringLiteral("flood paths 2 %1").arg(length), "answered"));
    ScriptedApplication client;
    EXPECT_EQ(
        client.call(DesktopHost::name(), "/zelkovar/call/service", "zelkovar.Call.ServiceManager1", "ListCallManagers"),
        "org.freedesktop.DBus.Error.LimitsExceeded");
    EXPECT_EQ(host.providers().size(), 1);
    honest.makeCall();
}
