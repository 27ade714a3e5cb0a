// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "baresipcontrol.h"

#include "fakebaresip.h"
#include "printers.h"
#include "waitfor.h"

#include <QtTest/QSignalSpy>
#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const Command selectCall{"callfind", "1", "setting current call"};
const Command hold{"hold", {}, {}};
const Command resume{"resume", {}, {}};

class BaresipControlTest : public testing::Test
{
protected:
    void SetUp() override
    {
        control.start();
        ASSERT_TRUE(waitFor([&] { return control.isConnected() && baresip.connections() == 1; }));
    }

    void run(const QVector<Command> &commands)
    {
        control.run({commands, [this](const CommandSequence::Result &result) { results.append(result); }});
    }

    bool waitForResults(int count)
    {
        return waitFor([&] { return results.size() >= count; });
    }

    FakeBaresip baresip;
    BaresipControl control{"127.0.0.1", baresip.port()};
    QVector<CommandSequence::Result> results;
};

} // namespace

TEST_F(BaresipControlTest, SendsOneCommandAtATimeAndKeepsSequencesTogether)
{
    run({selectCall, hold});
    run({resume});
    ASSERT_TRUE(baresip.waitForCommands(1));
    EXPECT_THAT(baresip.commands(), ElementsAre("callfind 1"));
    baresip.answer("setting current call: 1");
    ASSERT_TRUE(baresip.waitForCommands(2));
    baresip.answer("");
    ASSERT_TRUE(baresip.waitForCommands(3));
    EXPECT_THAT(baresip.commands(), ElementsAre("callfind 1", "hold", "resume"));
    ASSERT_EQ(results.size(), 1);
    EXPECT_TRUE(results.at(0).isComplete);
    EXPECT_FALSE(results.at(0).isDisturbed);
    EXPECT_EQ(results.at(0).replies.size(), 2);
}

TEST_F(BaresipControlTest, SendsWhatOnlyAsksTogether)
{
    control.run({{{"line", "1", "setting current call"}, {"callstat", {}, {}}},
        [this](const CommandSequence::Result &result) { results.append(result); }, CommandSequence::Pace::Together});
    run({resume});
    ASSERT_TRUE(baresip.waitForCommands(2));
    EXPECT_THAT(baresip.commands(), ElementsAre("line 1", "callstat"));
    baresip.answer("call not found", "1");
    baresip.answer("of another call", "2");
    ASSERT_TRUE(baresip.waitForCommands(3));
    EXPECT_EQ(baresip.commands().constLast(), "resume");
    ASSERT_EQ(results.size(), 1);
    EXPECT_EQ(results.at(0).replies.size(), 2);
    EXPECT_FALSE(results.at(0).isComplete);
}

TEST_F(BaresipControlTest, DoesNotGoOnWhenTheCallIsNotThere)
{
    run({selectCall, hold});
    run({resume});
    ASSERT_TRUE(baresip.waitForCommands(1));
    baresip.answer("call not found (id=1)");
    ASSERT_TRUE(baresip.waitForCommands(2));
    EXPECT_THAT(baresip.commands(), ElementsAre("callfind 1", "resume"));
    ASSERT_EQ(results.size(), 1);
    EXPECT_FALSE(results.at(0).isComplete);
}

TEST_F(BaresipControlTest, SelectsAnewWhenAnotherCallBeginsInBetween)
{
    run({selectCall, hold});
    ASSERT_TRUE(baresip.waitForCommands(1));
    baresip.tell("CALL_INCOMING");
    baresip.answer("setting current call: 1");
    ASSERT_TRUE(baresip.waitForCommands(2));
    EXPECT_THAT(baresip.commands(), ElementsAre("callfind 1", "callfind 1"));
    baresip.answer("setting current call: 1");
    ASSERT_TRUE(baresip.waitForCommands(3));
    EXPECT_EQ(baresip.commands().constLast(), "hold");
    baresip.tell("CALL_INCOMING");
    baresip.answer("");
    ASSERT_TRUE(waitForResults(1));
    EXPECT_TRUE(results.at(0).isComplete);
    EXPECT_TRUE(results.at(0).isDisturbed);
}

TEST_F(BaresipControlTest, GivesUpWhenCallsNeverStopToBegin)
{
    run({selectCall, hold});
    for (int round = 1; results.isEmpty(); ++round) {
        ASSERT_TRUE(baresip.waitForCommands(round));
        ASSERT_EQ(baresip.commands().constLast(), "callfind 1");
        baresip.tell("CALL_INCOMING");
        baresip.answer("setting current call: 1");
        ASSERT_TRUE(waitFor([&] { return baresip.commands().size() > round || !results.isEmpty(); }));
    }
    EXPECT_FALSE(results.at(0).isComplete);
}

TEST_F(BaresipControlTest, TakesNoAnswerThatItHasNotAskedFor)
{
    baresip.answer("nobody asked", "0");
    run({resume});
    ASSERT_TRUE(baresip.waitForCommands(1));
    baresip.answer("of another one", "x");
    baresip.answer("");
    ASSERT_TRUE(waitForResults(1));
    EXPECT_EQ(results.at(0).replies.at(0).text, "");
    baresip.answer("once more");
    run({hold});
    ASSERT_TRUE(baresip.waitForCommands(2));
    baresip.answer("ok");
    ASSERT_TRUE(waitForResults(2));
    EXPECT_EQ(results.at(1).replies.at(0).text, "ok");
}

TEST_F(BaresipControlTest, ConnectsAgainAndForgetsWhatWasOnItsWay)
{
    QSignalSpy lost(&control, &BaresipControl::disconnected);
    run({selectCall, hold});
    ASSERT_TRUE(baresip.waitForCommands(1));
    baresip.hangUp();
    ASSERT_TRUE(waitFor([&] { return baresip.connections() == 2 && control.isConnected(); }));
    EXPECT_EQ(lost.size(), 1);
    run({resume});
    ASSERT_TRUE(baresip.waitForCommands(2));
    EXPECT_EQ(baresip.commands().constLast(), "resume");
    baresip.answer("");
    ASSERT_TRUE(waitForResults(1));
    EXPECT_EQ(results.size(), 1);
}

TEST_F(BaresipControlTest, LeavesABaresipThatDoesNotAnswer)
{
    QSignalSpy lost(&control, &BaresipControl::disconnected);
    run({resume});
    ASSERT_TRUE(waitFor([&] { return baresip.connections() == 2; }));
    EXPECT_EQ(lost.at(0).at(0).toString(), "it does not answer");
    EXPECT_THAT(results, IsEmpty());
}

TEST_F(BaresipControlTest, WithoutAConnectionNothingIsRun)
{
    baresip.hangUp();
    ASSERT_TRUE(waitFor([&] { return !control.isConnected(); }));
    run({resume});
    ASSERT_TRUE(waitFor([&] { return control.isConnected(); }));
    run({hold});
    ASSERT_TRUE(baresip.waitForCommands(1));
    EXPECT_THAT(baresip.commands(), ElementsAre("hold"));
}

TEST_F(BaresipControlTest, PassesEventsOn)
{
    QSignalSpy events(&control, &BaresipControl::eventReceived);
    baresip.tell("CALL_ESTABLISHED");
    ASSERT_TRUE(waitFor([&] { return events.size() == 1; }));
    EXPECT_EQ(events.at(0).at(0).toJsonObject().value("type").toString(), "CALL_ESTABLISHED");
}

TEST_F(BaresipControlTest, ReadsNamesInWhateverEncodingTheyCome)
{
    QSignalSpy events(&control, &BaresipControl::eventReceived);
    baresip.send(NetstringReader::frame("{\"event\":true,\"type\":\"X\",\"peerdisplayname\":\"J\xfcrgen\"}"));
    ASSERT_TRUE(waitFor([&] { return events.size() == 1; }));
    EXPECT_EQ(events.at(0).at(0).toJsonObject().value("peerdisplayname").toString(), QStringLiteral("J\ufffdrgen"));
}

class HostileMessage : public BaresipControlTest, public testing::WithParamInterface<const char *>
{
};

TEST_P(HostileMessage, IsIgnored)
{
    QSignalSpy events(&control, &BaresipControl::eventReceived);
    baresip.send(NetstringReader::frame(GetParam()));
    baresip.tell("CALL_CLOSED");
    ASSERT_TRUE(waitFor([&] { return !events.isEmpty(); }));
    EXPECT_EQ(events.size(), 1);
    EXPECT_EQ(baresip.connections(), 1);
}

INSTANTIATE_TEST_SUITE_P(OfManyKinds, HostileMessage,
    testing::Values("", "hello", "{", "[]", "null", "[{\"event\":true}]", "{\"event\":\"true\"}", "{\"event\":{}}",
        "{\"response\":true}", "{\"response\":true,\"token\":{}}", "{\"event\":true,", "\"\\ud800\""));

TEST_F(BaresipControlTest, LeavesWhoeverSendsNoNetstrings)
{
    QSignalSpy lost(&control, &BaresipControl::disconnected);
    baresip.send("HTTP/1.1 400 Bad Request\r\n");
    ASSERT_TRUE(waitFor([&] { return baresip.connections() == 2; }));
    EXPECT_EQ(lost.at(0).at(0).toString(), "what it sends are no netstrings; is this baresip's ctrl_tcp?");
}
