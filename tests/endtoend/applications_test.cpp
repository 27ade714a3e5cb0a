// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// The applications of the kit with the real host and the real plug-in.

#include "desktophost.h"
#include "examples.h"
#include "printers.h"
#include "scriptedapplication.h"
#include "waitfor.h"

#include <QtCore/QRegularExpression>
#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <array>
#include <csignal>
#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::StartsWith;

namespace {

const QString callInterface = QStringLiteral("zelkovar.Call.Call1");
const QString objectManager = QStringLiteral("org.freedesktop.DBus.ObjectManager");
const QString address = QStringLiteral("sip:ada@example.org");
// Letters of one, two, three and four bytes.
const QString caller = QStringLiteral("Ada \"Zoë\" Ω 你好 🔔");

class Applications : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(host.start()) << host.program().errorOutput().toStdString(); }

    void TearDown() override { EXPECT_EQ(host.stop(), 0) << host.program().errorOutput().toStdString(); }

    DesktopHost host;
};

class EveryApplication : public Applications, public testing::WithParamInterface<Example>
{
protected:
    bool startApplication() { return application.start(GetParam().program(), GetParam().options(address, caller)); }

    void bringUp()
    {
        ASSERT_TRUE(startApplication());
        ASSERT_TRUE(host.waitForTable({address + "=incoming"})) << application.errorOutput().toStdString();
    }

    Program application;
};

// The same without the simulator.
class EveryExample : public EveryApplication
{
};

// Every property of the only call but those that are another for every application, and the seconds it runs.
QVariantMap shownCall(const DesktopHost &host)
{
    QVariantMap call = host.call();
    for (const char *name : {"HandlerId", "ProviderId", "AppId"})
        EXPECT_EQ(call.remove(name), 1) << name;
    if (call.value("Ongoing").toBool()) {
        EXPECT_EQ(call.remove("Duration"), 1);
    }
    return call;
}

// A device for the host, as it goes over the bus.
QVariant earbuds()
{
    QDBusArgument device;
    device.beginStructure();
    device << QStringLiteral("earbuds") << 0 << true << true << QStringLiteral("Earbuds") << QVariantMap();
    device.endStructure();
    return QVariant::fromValue(device);
}

const QVariantMap ringing = {{"ProviderType", "ringlet"}, {"LineId", caller}, {"Uri", address}, {"Incoming", true},
    {"Status", 5}, {"StatusText", "incoming"}, {"Duration", 0}, {"Ongoing", false}, {"RemoteHeld", false},
    {"Holdable", true}, {"SupportsDtmf", true}, {"SupportsMultiparty", false}, {"Multiparty", false},
    {"Emergency", false}, {"Forwarded", false}};

QVariantMap ongoing(int status, const char *text)
{
    QVariantMap call = ringing;
    call.remove("Duration");
    call["Status"] = status;
    call["StatusText"] = text;
    call["Ongoing"] = true;
    call["RemoteHeld"] = text == QLatin1String("held");
    return call;
}

} // namespace

TEST_P(EveryApplication, IsShownAlikeInEveryStatus)
{
    ASSERT_NO_FATAL_FAILURE(bringUp());
    EXPECT_EQ(shownCall(host), ringing);
    EXPECT_EQ(host.command("Answer"), QString());
    EXPECT_TRUE(host.waitForStatus("active"));
    EXPECT_EQ(shownCall(host), ongoing(1, "active"));
    EXPECT_EQ(host.command("Hold", {true}), QString());
    EXPECT_TRUE(host.waitForStatus("held"));
    EXPECT_EQ(shownCall(host), ongoing(2, "held"));
    EXPECT_EQ(host.command("Hold", {false}), QString());
    EXPECT_TRUE(host.waitForStatus("active"));
    EXPECT_EQ(shownCall(host), ongoing(1, "active"));
    EXPECT_EQ(host.command("Hangup"), QString());
    EXPECT_TRUE(host.waitForTable({}));
}

TEST_P(EveryExample, PrintsALineForEveryCommand)
{
    ASSERT_NO_FATAL_FAILURE(bringUp());
    EXPECT_EQ(host.command("Answer"), QString());
    EXPECT_TRUE(host.waitForStatus("active"));
    EXPECT_EQ(host.command("SendDtmf", {QStringLiteral("12#")}), QString());
    EXPECT_EQ(host.manage("Audio1", "SetMicrophoneMuted", {true}), QString());
    EXPECT_EQ(host.manage("FakeAudio1", "AddDevice", {earbuds()}), QString());
    EXPECT_EQ(host.manage("Audio1", "SelectOutputDevice", {QStringLiteral("earbuds")}), QString());
    EXPECT_EQ(host.command("Hold", {true}), QString());
    EXPECT_TRUE(host.waitForStatus("held"));
    EXPECT_EQ(host.command("Hangup"), QString());
    ASSERT_TRUE(application.waitForOutput("Reject"));

    // Every language prints values in its own way.
    std::vector<std::string> lines;
    for (const QString &line : application.lines())
        lines.push_back(line.toStdString());
    EXPECT_THAT(lines,
        ElementsAre(MatchesRegex("UpdateAudioRouteState.*earpiece.*speaker.*headset.*microphone.*earpiece.*"),
            StartsWith("Accept"), MatchesRegex("SendDTMF.*12#.*"),
            MatchesRegex("UpdateAudioRoute[^S].*microphone.*earpiece.*"),
            MatchesRegex("UpdateAudioRouteState.*earbuds.*microphone.*earpiece.*"),
            MatchesRegex("UpdateAudioRoute[^S].*microphone.*earbuds.*"), StartsWith("SetHold"), StartsWith("Reject")));
}

TEST_P(EveryApplication, IsRejectedWhileItRings)
{
    ASSERT_NO_FATAL_FAILURE(bringUp());
    EXPECT_EQ(host.command("Hangup"), QString());
    EXPECT_TRUE(host.waitForTable({}));
}

TEST_P(EveryApplication, IsNotTroubledByCommandsAfterTheEnd)
{
    ASSERT_NO_FATAL_FAILURE(bringUp());
    ASSERT_EQ(host.command("Hangup"), QString());
    ASSERT_TRUE(host.waitForTable({}));
    ScriptedApplication late;
    const QString owner = registeredApplication(DesktopHost::name());
    const QString unknown = QStringLiteral("org.freedesktop.DBus.Error.Unknown");
    EXPECT_TRUE(late.call(owner, GetParam().callPath(), callInterface, "Reject", "uint32 1").startsWith(unknown));
    EXPECT_TRUE(late.call(owner, GetParam().callPath(), callInterface, "SetHold", "true").startsWith(unknown));
    application.signal(SIGINT);
    EXPECT_EQ(application.waitForExit(), 0);
}

// Anybody on the bus can call methods of anybody: also without waiting for a reply, and without an interface.
TEST_P(EveryExample, ObeysTheHostAlone)
{
    static const std::array<const char *, 3> commands[] = {
        {"zelkovar.Call.Call1", "Accept", ""},
        {"zelkovar.Call.Call1", "Reject", "uint32 1"},
        {"zelkovar.Call.Call1", "SetHold", "true"},
        {"zelkovar.Call.DTMF1", "SendDTMF", "'12#'"},
        {"zelkovar.Call.AudioControl1", "UpdateAudioRoute", "true, 'headset', 'headset'"},
        {"zelkovar.Call.AudioControl1", "UpdateAudioRouteState", "@a(sibbsa{sv}) [], true, 'headset', 'headset'"},
    };
    ASSERT_NO_FATAL_FAILURE(bringUp());
    ASSERT_TRUE(application.waitForOutput("UpdateAudioRouteState"));
    const QString owner = registeredApplication(DesktopHost::name());
    const QString path = GetParam().callPath();
    ScriptedApplication stranger;
    for (const auto &[interface, member, arguments] : commands) {
        stranger.send(owner, path, interface, member, arguments);
        stranger.send(owner, path, QString(), member, arguments);
        EXPECT_EQ(stranger.call(owner, path, interface, member, arguments), "org.freedesktop.DBus.Error.AccessDenied")
            << member;
    }
    const QString objects = stranger.call(owner, GetParam().manager(), objectManager, "GetManagedObjects");
    EXPECT_TRUE(objects.contains("'Status': <uint32 3>")) << objects.toStdString();
    EXPECT_EQ(host.table(), QStringList(address + "=incoming"));
    EXPECT_EQ(application.lines().size(), 1) << application.lines().join('\n').toStdString();
}

TEST_P(EveryApplication, HangsUpFromTheFarEndWhenItIsInterrupted)
{
    ASSERT_NO_FATAL_FAILURE(bringUp());
    application.signal(SIGINT);
    EXPECT_EQ(application.waitForExit(), 0);
    EXPECT_TRUE(host.waitForTable({}));
    EXPECT_TRUE(waitFor([&] { return host.providers().isEmpty(); }));
}

TEST_P(EveryApplication, KilledTakesItsCallAlong)
{
    ASSERT_NO_FATAL_FAILURE(bringUp());
    application.signal(SIGKILL);
    EXPECT_TRUE(host.waitForTable({}));
    EXPECT_TRUE(host.providers().isEmpty());
}

TEST_P(EveryApplication, ComesBackWithItsStatusWhenTheHostIsRestarted)
{
    ASSERT_NO_FATAL_FAILURE(bringUp());
    ASSERT_EQ(host.command("Answer"), QString());
    ASSERT_TRUE(host.waitForStatus("active"));
    host.kill();
    ASSERT_TRUE(host.start());
    EXPECT_TRUE(host.waitForTable({address + "=active"})) << application.errorOutput().toStdString();
    EXPECT_EQ(shownCall(host), ongoing(1, "active"));

    ASSERT_EQ(host.command("Hold", {true}), QString());
    ASSERT_TRUE(host.waitForStatus("held"));
    host.kill();
    ASSERT_TRUE(host.start());
    EXPECT_TRUE(host.waitForTable({address + "=held"})) << application.errorOutput().toStdString();
    EXPECT_EQ(shownCall(host), ongoing(2, "held"));
}

TEST_P(EveryApplication, WaitsForAHostThatComesLater)
{
    ASSERT_EQ(host.stop(), 0);
    ScriptedApplication monitor;
    monitor.becomeMonitor();
    ASSERT_TRUE(startApplication());
    ASSERT_TRUE(waitFor([&] { return !monitor.traffic().filter("NameHasNoOwner").isEmpty(); }));
    ASSERT_TRUE(host.start());
    EXPECT_TRUE(host.waitForTable({address + "=incoming"})) << application.errorOutput().toStdString();
}

INSTANTIATE_TEST_SUITE_P(OfTheKit, EveryApplication, testing::ValuesIn(simulatorAndExamples()),
    [](const auto &info) { return info.param.testName(); });

INSTANTIATE_TEST_SUITE_P(
    OfTheKit, EveryExample, testing::ValuesIn(examples()), [](const auto &info) { return info.param.testName(); });

// The host subscribes to the call's signals only after it has heard of the call: a status that is sent
// right behind the announcement is lost, and the application has to send it again.
TEST_F(Applications, AStatusThatChangesInTheSameWriteAsTheAnnouncementReachesTheHost)
{
    Program application;
    ASSERT_TRUE(application.start(
        QStringLiteral(RINGLET_SIM), {"--script", QStringLiteral(SCRIPTS "/immediateanswer.script"), "--stay"}));
    EXPECT_TRUE(host.waitForTable({"sip:ada@example.org=active"}));
    EXPECT_TRUE(application.waitForOutput("ada shown 3 incoming")) << application.lines().join('\n').toStdString();
    EXPECT_TRUE(application.waitForOutput("ada status 5 active again"));
}
