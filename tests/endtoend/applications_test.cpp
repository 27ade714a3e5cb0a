// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// The applications of the kit with the real host and the real plug-in.

#include "desktophost.h"
#include "examples.h"
#include "printers.h"
#include "waitfor.h"

#include <QtCore/QRegularExpression>
#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <csignal>
#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

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
        ASSERT_TRUE(host.waitForTable({address + "=incoming"})) << output();
        ASSERT_TRUE(application.waitForOutput("call1 audio-state")) << output();
        ASSERT_TRUE(application.waitForOutput("call1 shown 3 incoming")) << output();
    }

    std::string output() { return application.lines().join('\n').toStdString(); }

    // What the application says of its call from the given line on, to the call's end.
    QStringList linesToTheEnd(const QString &first)
    {
        EXPECT_TRUE(application.waitForOutput("call1 removed")) << output();
        const QStringList lines = application.lines().filter(QRegularExpression("^call1 "));
        const int begin = lines.indexOf(first);
        EXPECT_GE(begin, 0) << output();
        return lines.mid(begin);
    }

    // Calls a method of the application's call, as a host that is late would; the name of the error.
    QString callDirectly(const QString &method, const QVariantList &arguments)
    {
        const QString owner = application.lines().constFirst().section(' ', 1);
        QDBusMessage call = QDBusMessage::createMethodCall(owner, GetParam().callPath(), "zelkovar.Call.Call1", method);
        call.setArguments(arguments);
        return QDBusConnection::sessionBus().call(call, QDBus::Block, waitLimitMs).errorName();
    }

    Program application;
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
    EXPECT_THAT(linesToTheEnd("call1 command accept"),
        ElementsAre("call1 command accept", "call1 status 5 active", "call1 command hold on", "call1 status 7 held",
            "call1 command hold off", "call1 status 5 active", "call1 command reject 1", "call1 status 1 disconnected",
            "call1 removed"));
}

TEST_P(EveryApplication, HearsTonesMuteAndDevices)
{
    ASSERT_NO_FATAL_FAILURE(bringUp());
    EXPECT_EQ(host.command("Answer"), QString());
    EXPECT_TRUE(host.waitForStatus("active"));
    EXPECT_EQ(host.command("SendDtmf", {QStringLiteral("12#")}), QString());
    EXPECT_TRUE(application.waitForOutput("call1 command tones \"12#\""));

    const QString selected = QStringLiteral(" input=\"microphone\" output=\"earpiece\"");
    EXPECT_EQ(host.manage("Audio1", "SetMicrophoneMuted", {true}), QString());
    EXPECT_TRUE(application.waitForOutput("call1 audio-route muted=yes" + selected)) << output();
    EXPECT_EQ(host.manage("Audio1", "SetMicrophoneMuted", {false}), QString());
    EXPECT_TRUE(application.waitForOutput("call1 audio-route muted=no" + selected)) << output();

    EXPECT_EQ(host.manage("FakeAudio1", "AddDevice", {earbuds()}), QString());
    EXPECT_TRUE(application.waitForOutput("call1 audio-state muted=no" + selected
        + " devices=5 \"microphone\" \"earpiece\" \"speaker\" \"headset\" \"earbuds\""))
        << output();
    EXPECT_EQ(host.manage("Audio1", "SelectOutputDevice", {QStringLiteral("earbuds")}), QString());
    EXPECT_TRUE(application.waitForOutput("call1 audio-route muted=no input=\"microphone\" output=\"earbuds\""));
}

TEST_P(EveryApplication, IsRejectedWhileItRings)
{
    ASSERT_NO_FATAL_FAILURE(bringUp());
    EXPECT_EQ(host.command("Hangup"), QString());
    EXPECT_TRUE(host.waitForTable({}));
    EXPECT_THAT(linesToTheEnd("call1 command reject 1"),
        ElementsAre("call1 command reject 1", "call1 status 1 disconnected", "call1 removed"));
}

TEST_P(EveryApplication, HangsUpFromTheFarEnd)
{
    ASSERT_NO_FATAL_FAILURE(bringUp());
    application.type(GetParam().hangUp());
    EXPECT_TRUE(host.waitForTable({}));
}

TEST_P(EveryApplication, IsNotTroubledByCommandsAfterTheEnd)
{
    ASSERT_NO_FATAL_FAILURE(bringUp());
    application.type(GetParam().hangUp());
    ASSERT_TRUE(host.waitForTable({}));
    ASSERT_TRUE(application.waitForOutput("call1 removed"));
    EXPECT_NE(callDirectly("Reject", {1u}), QString());
    EXPECT_NE(callDirectly("SetHold", {true}), QString());
    const int before = application.lines().size();
    application.type(GetParam().hangUp());
    application.type("nonsense");
    EXPECT_TRUE(application.waitForError("unknown command \"nonsense\""));
    EXPECT_THAT(application.lines().mid(before).filter("call1 status"), IsEmpty());
    application.type("quit");
    EXPECT_EQ(application.waitForExit(), 0);
}

TEST_P(EveryApplication, QuitsWithSuccessAndTakesItsCallAlong)
{
    ASSERT_NO_FATAL_FAILURE(bringUp());
    application.type("quit");
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
    EXPECT_TRUE(host.waitForTable({address + "=active"})) << output();
    EXPECT_EQ(shownCall(host), ongoing(1, "active"));

    ASSERT_EQ(host.command("Hold", {true}), QString());
    ASSERT_TRUE(host.waitForStatus("held"));
    host.kill();
    ASSERT_TRUE(host.start());
    EXPECT_TRUE(host.waitForTable({address + "=held"})) << output();
    EXPECT_EQ(shownCall(host), ongoing(2, "held"));
}

TEST_P(EveryApplication, WaitsForAHostThatComesLater)
{
    ASSERT_EQ(host.stop(), 0);
    ASSERT_TRUE(startApplication());
    ASSERT_TRUE(application.waitForOutput("waiting for host org.tarnwickle.voicecall")) << output();
    ASSERT_TRUE(host.start());
    EXPECT_TRUE(host.waitForTable({address + "=incoming"})) << output();
}

TEST_P(EveryApplication, SaysWhatIsWrongWithItsOptions)
{
    for (const QStringList &options : {QStringList{"--explode"}, QStringList{"stray"}, QStringList{"--name"}}) {
        ASSERT_TRUE(application.start(GetParam().program(), options));
        EXPECT_EQ(application.waitForExit(), 2) << options.join(' ').toStdString();
        EXPECT_TRUE(application.errorOutput().contains(QString(options.first()).remove('-')))
            << application.errorOutput().toStdString();
        EXPECT_THAT(application.lines(), IsEmpty());
    }
    ASSERT_TRUE(application.start(GetParam().program(), {"--host", "not a name"}));
    EXPECT_EQ(application.waitForExit(), 2);
    EXPECT_FALSE(application.errorOutput().isEmpty());
}

INSTANTIATE_TEST_SUITE_P(OfTheKit, EveryApplication, testing::ValuesIn(simulatorAndExamples()),
    [](const auto &info) { return info.param.testName(); });

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
