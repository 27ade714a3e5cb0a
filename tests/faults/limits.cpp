// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// Cells of minutes: how things get worse with their number, and where they end.

#include "faultcell.h"

#include "patience.h"
#include "printers.h"
#include "processfacts.h"
#include "textoutput.h"

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusPendingCall>
#include <csignal>

namespace {

constexpr int longPatience = 1800000;

class LimitCell : public FaultCell
{
protected:
    LimitCell() : FaultCell(longPatience)
    {
        memoryBound = 256 * 1024;
        // How things get worse with their number: with all of them shown.
        for (const char *bound : {"calls", "calls-each", "providers", "providers-each"})
            hostOptions += {QStringLiteral("--most-%1").arg(bound), "0"};
    }

    /** One flood from its beginning to the departure of its application, and what it costs the honest call. */
    void measureFlood(const QString &kind, int count)
    {
        memoryBound += count * 32;
        const int before = processorTimeSince(0);
        QElapsedTimer clock;
        clock.start();
        faulty.type(QStringLiteral("flood %1 %2").arg(kind).arg(count));
        exchangeWhile([&] { return faulty.isRunning() && !faulty.lines().contains("answered"); });
        honest.roundTrip();
        note(QStringLiteral("%1 %2: handled after %3 ms, with %4 ms of the host's processor time")
                 .arg(count)
                 .arg(kind)
                 .arg(clock.elapsed())
                 .arg(processorTimeSince(before)));
        noteLatencies("meanwhile");
        honest.exchange();
        noteLatencies("with all of them there");
        clock.start();
        killFaulty();
        honest.exchange();
        noteLatencies("while they are cleared");
        ASSERT_NO_FATAL_FAILURE(waitForDeparture());
        note(QStringLiteral("cleared after %1 ms; %2 ms of processor time in all")
                 .arg(clock.elapsed())
                 .arg(processorTimeSince(before)));
    }

    /** What the host has used, in milliseconds: other than the clock, it does not depend on who else computes. */
    int processorTimeSince(int before) { return ProcessFacts::processorTime(host.program().processId()) - before; }
};

class RegistrationCurve : public LimitCell, public testing::WithParamInterface<int>
{
};

class CallCurve : public LimitCell, public testing::WithParamInterface<int>
{
};

class AnnouncementCurve : public LimitCell, public testing::WithParamInterface<int>
{
};

/** A stopped application that is given commands. */
class StoppedCell : public LimitCell
{
protected:
    void SetUp() override
    {
        LimitCell::SetUp();
        ASSERT_NO_FATAL_FAILURE(bringUpFaulty());
        const QMap<QString, QVariantMap> calls = host.calls();
        for (auto call = calls.cbegin(); call != calls.cend(); ++call) {
            if (call->value("Uri") == "faulty:/bad/1")
                path = "/org/tarnwickle/voicecall/calls/" + call.key();
        }
        ASSERT_NO_FATAL_FAILURE(tellLast("stop"));
    }

    /** So many commands, as fast as the host takes them. */
    void command(int count)
    {
        QDBusMessage message
            = QDBusMessage::createMethodCall(DesktopHost::name(), path, "org.tarnwickle.voicecall.Call1", "SendDtmf");
        message.setArguments({"1"});
        for (int i = 0; i < count; ++i) {
            QDBusPendingCall pending = QDBusConnection::sessionBus().asyncCall(message);
            if (i % 500 == 499 || i == count - 1)
                pending.waitForFinished();
        }
        sent += count;
    }

    /** Sends commands until those to the honest application are lost. */
    void useUpReplies()
    {
        QElapsedTimer clock;
        clock.start();
        command(49000);
        while (sent < 55000 && honest.hearsCommands())
            command(50);
        ASSERT_LT(sent, 55000) << "commands arrive however many are pending";
        note(QStringLiteral("commands to others are lost after %1 to the stopped application, given in %2 ms")
                 .arg(sent)
                 .arg(clock.elapsed()));
    }

    void noteHealing(const QString &by)
    {
        QElapsedTimer clock;
        clock.start();
        const bool heals = holdsWithin(60000, [&] { return honest.hearsCommands(); });
        note(heals ? QStringLiteral("%1: commands arrive again after %2 ms").arg(by).arg(clock.elapsed())
                   : QStringLiteral("%1: commands are still lost after %2 ms").arg(by).arg(clock.elapsed()));
        isHealed = heals;
    }

    QString path;
    int sent = 0;
    bool isHealed = false;
};

} // namespace

TEST_P(RegistrationCurve, OfOneApplication) { measureFlood("registrations", GetParam()); }

INSTANTIATE_TEST_SUITE_P(Of, RegistrationCurve, testing::Values(100, 300, 1000, 3000, 5000, 10000, 25000),
    testing::PrintToStringParamName());

TEST_P(CallCurve, OfOneApplication)
{
    ASSERT_NO_FATAL_FAILURE(bringUpFaulty());
    measureFlood("calls", GetParam());
}

INSTANTIATE_TEST_SUITE_P(Of, CallCurve, testing::Values(100, 300, 1000, 3000), testing::PrintToStringParamName());

TEST_P(AnnouncementCurve, WithWithdrawals)
{
    ASSERT_NO_FATAL_FAILURE(bringUpFaulty());
    measureFlood("announcements", GetParam());
}

INSTANTIATE_TEST_SUITE_P(
    Of, AnnouncementCurve, testing::Values(100, 300, 1000, 2000, 3000), testing::PrintToStringParamName());

TEST_F(LimitCell, AGibibyteOfProperties)
{
    ASSERT_NO_FATAL_FAILURE(bringUpFaulty());
    measureFlood("mebibytes", 1024);
}

TEST_F(LimitCell, AMillionStatusChanges)
{
    ASSERT_NO_FATAL_FAILURE(bringUpFaulty());
    measureFlood("status", 1000000);
}

TEST_F(StoppedCell, PendingRepliesRunOutUntilTheApplicationIsKilled)
{
    ASSERT_NO_FATAL_FAILURE(useUpReplies());
    noteHealing("by itself");
    killFaulty();
    noteHealing("when the application is killed");
    EXPECT_TRUE(isHealed);
}

TEST_F(StoppedCell, PendingRepliesRunOutUntilTheApplicationGoesOn)
{
    ASSERT_NO_FATAL_FAILURE(useUpReplies());
    faulty.signal(SIGCONT);
    noteHealing("when the application goes on");
    EXPECT_TRUE(isHealed);
}
