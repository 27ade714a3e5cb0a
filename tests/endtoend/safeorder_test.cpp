// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// The order in which the examples tell a host of their call, with a host that makes it hard for them.

#include "examples.h"
#include "fakehost.h"
#include "printers.h"
#include "privatebus.h"
#include "program.h"
#include "waitfor.h"

#include <QtDBus/QDBusConnectionInterface>
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
        ASSERT_TRUE(waitFor([&] { return !host.calls().isEmpty(); })); // and it has told so
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
    ASSERT_TRUE(waitFor([&] { return !host.calls().isEmpty(); }));
    ASSERT_TRUE(settle());
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
    stranger.setApplication(host.application());
    stranger.broadcast(path, before);
    ASSERT_TRUE(stranger.settle(manager));
    host.broadcast(path, before, ":1.9999");
    host.broadcast(path + "0", before);
    host.broadcast(path, {{"zelkovar.Call.DTMF1", {}}});
    InterfaceMap current = before;
    current[callInterface].insert("Status", 5u);
    host.broadcast(path, current);
    ASSERT_TRUE(settle());
    EXPECT_THAT(host.wire(), IsEmpty());

    host.broadcast(path, before);
    ASSERT_TRUE(settle());
    EXPECT_THAT(host.wire(), ElementsAre(changed.arg(5)));
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

TEST_P(SafeOrder, DoesTheSameWhenItIsInterrupted)
{
    bringUp();
    application.signal(SIGINT);
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
    ASSERT_TRUE(next.waitForWire("GetManagedObjects " + manager));
    ASSERT_TRUE(next.settle(manager));
    EXPECT_THAT(next.wire().mid(next.wire().indexOf("RegisterCallManager " + manager)),
        ElementsAre("RegisterCallManager " + manager, QStringLiteral("GetManagedObjects %1: %2=5").arg(manager, path)));
}

TEST_P(SafeOrder, TriesTheNextHostWhenOneRefuses)
{
    host.refuseWith("org.example.Error.NotToday");
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(start());
    ASSERT_TRUE(host.waitForWire("RegisterCallManager " + manager));
    ASSERT_TRUE(settle());
    host.dropName();
    FakeHost next;
    ASSERT_TRUE(next.takeName());
    EXPECT_TRUE(waitFor([&] { return next.calls().contains(QDBusObjectPath(path)); }));
}

TEST_P(SafeOrder, EndsWithAnErrorWithoutASessionBus)
{
    ASSERT_TRUE(start({"DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent"}));
    EXPECT_NE(application.waitForExit(), 0);
    EXPECT_FALSE(application.isRunning());
    EXPECT_FALSE(application.errorOutput().isEmpty());
}

TEST_P(SafeOrder, EndsWithAnErrorWhenTheSessionBusGoes)
{
    PrivateBus bus;
    const QString address = QString::fromUtf8(bus.address());
    ASSERT_TRUE(start({"DBUS_SESSION_BUS_ADDRESS=" + address}));
    const QDBusConnection observer = QDBusConnection::connectToBus(address, "observer");
    EXPECT_TRUE(waitFor([&] {
        return observer.interface()->registeredServiceNames().value().filter(QStringLiteral(":1.")).size() > 1;
    }));
    QDBusConnection::disconnectFromBus("observer");
    bus.daemon().signal(SIGKILL);
    EXPECT_NE(application.waitForExit(), 0);
    EXPECT_FALSE(application.isRunning());
}

INSTANTIATE_TEST_SUITE_P(
    OfTheExamples, SafeOrder, testing::ValuesIn(examples()), [](const auto &info) { return info.param.testName(); });
