// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// An application is killed, or stopped, at every step of a call.

#include "faultcell.h"

#include "printers.h"

#include <csignal>

namespace {

class DepartureCell;

/** A step of a call, and how an application gets there. */
struct Step
{
    const char *name;
    void (*reach)(DepartureCell &cell);
};

void PrintTo(const Step &step, std::ostream *stream) { *stream << step.name; }

class DepartureCell : public FaultCell, public testing::WithParamInterface<Step>
{
public:
    void beActive()
    {
        ASSERT_NO_FATAL_FAILURE(bringUpFaulty());
        ASSERT_NO_FATAL_FAILURE(tell("status /bad/1 5"));
        ASSERT_NO_FATAL_FAILURE(waitForFaultyStatus("active"));
    }

    /** The host's command has arrived, and is not answered. */
    void beCommanded(const QString &method, const QVariantList &arguments, const QString &command)
    {
        ASSERT_NO_FATAL_FAILURE(beActive());
        ASSERT_NO_FATAL_FAILURE(tell("commands hold"));
        commandFaulty(method, arguments);
        ASSERT_TRUE(faulty.waitForOutput("command " + command));
    }

    using FaultCell::bringUpFaulty;
    using FaultCell::commandFaulty;
    using FaultCell::faulty;
    using FaultCell::tell;
    using FaultCell::tellAndAwait;
    using FaultCell::waitForFaultyStatus;

protected:
    /** All that a user can do to a call, for an application that does not listen. */
    void commandInVain()
    {
        const QStringList table = host.table();
        if (table.filter("faulty:/bad/1=").isEmpty())
            return;
        commandFaulty("Answer");
        commandFaulty("Hold", {true});
        commandFaulty("Hold", {false});
        commandFaulty("SendDtmf", {"0123456789*#"});
        commandFaulty("Hangup");
        EXPECT_EQ(host.table(), table);
    }

    void toggleMute()
    {
        EXPECT_EQ(host.manage("Audio1", "SetMicrophoneMuted", {true}), QString());
        EXPECT_EQ(host.manage("Audio1", "SetMicrophoneMuted", {false}), QString());
    }
};

const Step steps[] = {
    {"connected", [](DepartureCell &) {}},
    // The registration is sent, and nothing is read any more.
    {"registering", [](DepartureCell &cell) { cell.faulty.type("register /bad"); }},
    {"asked",
        [](DepartureCell &cell) {
            cell.tell("snapshot hold");
            cell.tellAndAwait("register /bad", "asked");
        }},
    {"registered", [](DepartureCell &cell) { cell.tellAndAwait("register /bad", "registered /bad"); }},
    {"announcing",
        [](DepartureCell &cell) {
            cell.tellAndAwait("register /bad", "registered /bad");
            cell.faulty.type("announce /bad/1 3");
        }},
    {"incoming", [](DepartureCell &cell) { cell.bringUpFaulty(); }},
    {"dialing", [](DepartureCell &cell) { cell.bringUpFaulty(2, "dialing"); }},
    {"answered",
        [](DepartureCell &cell) {
            cell.bringUpFaulty();
            cell.tell("commands hold");
            cell.commandFaulty("Answer");
            EXPECT_TRUE(cell.faulty.waitForOutput("command Accept"));
        }},
    {"active", [](DepartureCell &cell) { cell.beActive(); }},
    {"tones", [](DepartureCell &cell) { cell.beCommanded("SendDtmf", {"123"}, "SendDTMF"); }},
    {"holding", [](DepartureCell &cell) { cell.beCommanded("Hold", {true}, "SetHold"); }},
    {"held", [](DepartureCell &cell) { cell.bringUpFaulty(7, "held"); }},
    {"hangingUp", [](DepartureCell &cell) { cell.beCommanded("Hangup", {}, "Reject"); }},
    {"disconnected",
        [](DepartureCell &cell) {
            cell.beActive();
            cell.tell("status /bad/1 0");
            cell.waitForFaultyStatus("disconnected");
        }},
    {"withdrawing",
        [](DepartureCell &cell) {
            cell.beActive();
            cell.faulty.type("withdraw /bad/1");
        }},
};

} // namespace

TEST_P(DepartureCell, Killed)
{
    ASSERT_NO_FATAL_FAILURE(GetParam().reach(*this));
    beginDeparture();
    faulty.setMayEnd();
    ASSERT_NO_FATAL_FAILURE(tellLast("die"));
    honest.makeCall();
}

TEST_P(DepartureCell, StoppedAndThenKilled)
{
    ASSERT_NO_FATAL_FAILURE(GetParam().reach(*this));
    ASSERT_NO_FATAL_FAILURE(tellLast("stop"));
    honest.makeCall();
    commandInVain();
    toggleMute();
    honest.exchange();
    killFaulty();
}

TEST_P(DepartureCell, StoppedAndContinued)
{
    ASSERT_NO_FATAL_FAILURE(GetParam().reach(*this));
    ASSERT_NO_FATAL_FAILURE(tellLast("stop"));
    honest.makeCall();
    commandInVain();
    toggleMute();
    faulty.signal(SIGCONT);
    ASSERT_TRUE(faulty.waitForOutput("done stop"));
    // It goes on where it was, and can carry a call.
    tell("snapshot now");
    tell("commands now");
    tellAndAwait("register /bad", "registered /bad");
    tell("announce /bad/2 3");
    waitForFaultyStatus("incoming", "/bad/2");
    honest.exchange();
}

INSTANTIATE_TEST_SUITE_P(
    Application, DepartureCell, testing::ValuesIn(steps), [](const auto &info) { return info.param.name; });
