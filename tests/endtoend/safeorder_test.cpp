// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// The order in which the examples tell a host of their call, with a host that makes it hard for them.

#include "examples.h"
#include "fakehost.h"
#include "printers.h"
#include "privatebus.h"
#include "program.h"
#include "waitfor.h"

#include <csignal>
#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const QString callInterface = QStringLiteral("zelkovar.Call.Call1");

MATCHER_P(StartsWithText, start, "") { return arg.startsWith(start); }

class SafeOrder : public testing::TestWithParam<Example>
{
protected:
    bool start(const QStringList &environment = {})
    {
        return application.start(GetParam().program(), GetParam().options("sip:ada@example.org", "Ada"), environment);
    }

    // The call is there, and the host knows it.
    void bringUp()
    {
        ASSERT_TRUE(host.takeName());
        ASSERT_TRUE(start());
        ASSERT_TRUE(application.waitForOutput("call1 shown 3 incoming"));
        ASSERT_TRUE(settle());
        host.forgetWire();
    }

    bool settle() const { return host.settle(manager); }

    void command(const QString &member, const QVariantList &arguments = {})
    {
        EXPECT_EQ(host.call(path, callInterface, member, arguments).type(), QDBusMessage::ReplyMessage);
    }

    InterfaceMap reported() const { return host.calls().value(QDBusObjectPath(path)); }

    FakeHost host;
    Program application;
    const QString manager = GetParam().manager();
    const QString path = GetParam().callPath();
    const QString changed = QStringLiteral("StatusChanged %1 %2").arg(path);
    const QString removed = QStringLiteral("InterfacesRemoved ") + path;
};

} // namespace

// A call that exists before the registration is in the answer to GetManagedObjects; any other is announced when
// the registration is answered, and not before.
TEST_P(SafeOrder, ReportsTheCallOnceAndAnnouncesNoneDuringTheRegistration)
{
    host.holdAnswers();
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(start());
    const QString snapshot = QStringLiteral("GetManagedObjects %1:").arg(manager);
    ASSERT_TRUE(host.waitForWire(snapshot));
    ASSERT_TRUE(settle());
    const QStringList heard = host.wire().mid(host.wire().indexOf("RegisterCallManager " + manager));
    ASSERT_EQ(heard.size(), 2) << heard.join('\n').toStdString();
    const bool existed = heard.contains(snapshot + ' ' + path + "=3");
    EXPECT_TRUE(existed || heard.contains(snapshot));

    host.forgetWire();
    host.answerRegistrations();
    ASSERT_TRUE(application.waitForOutput("call1 shown 3 incoming"));
    EXPECT_EQ(host.wire(), existed ? QStringList() : QStringList("InterfacesAdded " + path + " 3"));
}

TEST_P(SafeOrder, SendsTheStatusAgainWhenTheHostShowsAnOlderOne)
{
    host.keepQuiet();
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitFor([&] { return !host.calls().isEmpty(); }));
    command("Accept");
    ASSERT_TRUE(settle());
    host.forgetWire();

    host.broadcast(path, reported());
    EXPECT_TRUE(application.waitForOutput("call1 shown 3 incoming"));
    EXPECT_TRUE(application.waitForOutput("call1 status 5 active again"));
    ASSERT_TRUE(settle());
    EXPECT_THAT(host.wire(), ElementsAre(changed.arg(5)));
}

TEST_P(SafeOrder, HeedsNoBroadcastButTheHostsOwnOfThisCall)
{
    bringUp();
    const InterfaceMap before = reported();
    command("Accept");
    ASSERT_TRUE(settle());
    host.forgetWire();

    FakeHost stranger;
    stranger.broadcast(path, before, host.application());
    host.broadcast(path, before, ":1.9999");
    host.broadcast(path + "0", before);
    host.broadcast(path, {{"zelkovar.Call.DTMF1", {}}});
    host.broadcast(path, {{callInterface, {{"Status", "3"}}}});
    InterfaceMap current = before;
    current[callInterface].insert("Status", 5u);
    host.broadcast(path, current);
    // The last one counts, and comes behind all the others.
    ASSERT_TRUE(application.waitForOutput("call1 shown 5 active"));
    ASSERT_TRUE(settle());
    EXPECT_THAT(host.wire(), IsEmpty());
    EXPECT_EQ(application.lines().filter("call1 shown").size(), 2);
}

TEST_P(SafeOrder, SendsNothingWhenNothingHasChanged)
{
    bringUp();
    command("SetHold", {true});
    host.call(path, "zelkovar.Call.AudioControl1", "UpdateAudioRoute", {true, "microphone", "earpiece"});
    host.broadcast(path, reported());
    ASSERT_TRUE(settle());
    EXPECT_THAT(host.wire(), IsEmpty());

    command("Accept");
    command("Accept");
    command("SetHold", {false});
    ASSERT_TRUE(settle());
    EXPECT_THAT(host.wire(), ElementsAre(changed.arg(5)));
}

TEST_P(SafeOrder, SendsTheFinalStatusBeforeTheInterfacesGo)
{
    bringUp();
    command("Reject", {1u});
    ASSERT_TRUE(settle());
    EXPECT_THAT(host.wire(), ElementsAre(changed.arg(1), StartsWithText(removed)));
    EXPECT_TRUE(host.managedObjects(manager).isEmpty());
}

TEST_P(SafeOrder, DoesTheSameWhenItIsStopped)
{
    bringUp();
    application.signal(SIGTERM);
    EXPECT_EQ(application.waitForExit(), 0);
    ASSERT_TRUE(host.waitForWire(removed));
    EXPECT_THAT(host.wire(), ElementsAre(changed.arg(1), StartsWithText(removed)));
}

TEST_P(SafeOrder, RegistersWithEveryHostThatTakesTheNameAndAnnouncesTheCallOnce)
{
    bringUp();
    command("Accept");
    host.dropName();
    FakeHost next;
    ASSERT_TRUE(next.takeName());
    ASSERT_TRUE(application.waitForOutput("call1 shown 5 active"));
    ASSERT_TRUE(next.settle(manager));
    EXPECT_THAT(next.wire().mid(next.wire().indexOf("RegisterCallManager " + manager)),
        ElementsAre("RegisterCallManager " + manager, QStringLiteral("GetManagedObjects %1: %2=5").arg(manager, path)));
}

TEST_P(SafeOrder, SaysThatTheHostRefusedAndStays)
{
    host.refuseWith("org.example.Error.NotToday");
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(start());
    EXPECT_TRUE(application.waitForOutput("refused " + manager + " org.example.Error.NotToday \"not \\\"today\\\"\""))
        << application.lines().join('\n').toStdString();
    EXPECT_TRUE(application.isRunning());
}

TEST_P(SafeOrder, EndsWithAnErrorWithoutASessionBus)
{
    ASSERT_TRUE(start({"DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent"}));
    EXPECT_EQ(application.waitForExit(), 3);
    EXPECT_FALSE(application.errorOutput().isEmpty());
}

TEST_P(SafeOrder, EndsWithAnErrorWhenTheSessionBusGoes)
{
    PrivateBus bus;
    ASSERT_TRUE(start({"DBUS_SESSION_BUS_ADDRESS=" + QString::fromUtf8(bus.address())}));
    ASSERT_TRUE(application.waitForOutput("waiting for host"));
    bus.daemon().signal(SIGKILL);
    EXPECT_EQ(application.waitForExit(), 3);
    EXPECT_TRUE(application.errorOutput().contains("the session bus has gone"));
}

INSTANTIATE_TEST_SUITE_P(
    OfTheExamples, SafeOrder, testing::ValuesIn(examples()), [](const auto &info) { return info.param.testName(); });
