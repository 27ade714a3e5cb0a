// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "hostprogram.h"
#include "privatebus.h"
#include "terminal.h"

#include <QtCore/QFile>
#include <csignal>
#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

static std::string text(const QString &string) { return string.toStdString(); }

static std::vector<std::string> texts(const QStringList &strings)
{
    std::vector<std::string> result;
    for (const QString &string : strings)
        result.push_back(text(string));
    return result;
}

class Watch : public testing::Test
{
protected:
    void SetUp() override { startHost(); }

    void startHost()
    {
        ASSERT_TRUE(host.start());
        host.plugin(QStringLiteral("AddProvider"), QStringLiteral("'fake/1'"));
    }

    void addCall(const char *id, const char *state = "")
    {
        host.addCall(QStringLiteral("fake/1"),
            QStringLiteral("{'HandlerId': <'%1'>%2}").arg(QLatin1String(id), QString::fromUtf8(state)));
    }

    void changeCall(const char *id, const char *changes)
    {
        host.plugin(QStringLiteral("ChangeCall"),
            QStringLiteral("'%1', @a{sv} {%2}, 'statusChanged'").arg(QLatin1String(id), QString::fromUtf8(changes)));
    }

    void removeCall(const char *id)
    {
        host.plugin(QStringLiteral("RemoveCall"), QStringLiteral("'%1'").arg(QLatin1String(id)));
    }

    void audio(const char *interfaceAndMember, const char *arguments)
    {
        host.ask(HostProgram::root(), QLatin1String(interfaceAndMember), QString::fromUtf8(arguments));
    }

    HostProgram host;
};

// --- Lines

class WatchLines : public Watch
{
protected:
    void watchHost()
    {
        ASSERT_TRUE(watch.start(QStringLiteral(CALLCTL), {QStringLiteral("watch")}));
        ASSERT_TRUE(watch.waitForOutput(QStringLiteral("host ready")));
        seen = watch.lines().size();
    }

    // The next so many lines.
    std::vector<std::string> next(int count)
    {
        EXPECT_TRUE(watch.waitForOutput(QString(), seen + count - 1)) << text(watch.lines().join(QLatin1Char('\n')));
        const QStringList lines = watch.lines().mid(seen, count);
        seen += count;
        return texts(lines);
    }

    Program watch;
    int seen = 0;
};

TEST_F(WatchLines, BeginWithAllThereIsAndThenReady)
{
    addCall("c1", ", 'Status': <5>, 'Incoming': <true>, 'LineId': <'Anna B'>, 'Uri': <'sip:a'>, 'AppId': <'app'>");
    watchHost();
    EXPECT_THAT(texts(watch.lines()),
        ElementsAre("provider fake/1 added type=fake",
            "device microphone added type=microphone input=yes output=no name=\"Microphone\"",
            "device earpiece added type=earpiece input=no output=yes name=\"Earpiece\"",
            "device speaker added type=speaker input=no output=yes name=\"Speaker\"",
            "device headset added type=headset input=yes output=yes name=\"Wired headset\"",
            "audio changed input=microphone output=earpiece muted=no",
            "call c1 added status=incoming direction=incoming name=\"Anna B\" address=\"sip:a\" app=\"app\" duration=0"
            " provider=fake/1 ongoing=no remote-held=no holdable=no dtmf=no supports-multiparty=no multiparty=no"
            " emergency=no forwarded=no",
            "host ready"));
}

TEST_F(WatchLines, FollowACallFromItsBeginningToItsEnd)
{
    watchHost();
    addCall("c1", ", 'Status': <3>");
    EXPECT_THAT(next(1),
        ElementsAre("call c1 added status=dialing direction=outgoing name=\"\" address=\"\" app=\"\" duration=0"
                    " provider=fake/1 ongoing=no remote-held=no holdable=no dtmf=no supports-multiparty=no"
                    " multiparty=no emergency=no forwarded=no"));
    changeCall("c1", "'Status': <1>");
    EXPECT_THAT(next(1), ElementsAre("call c1 changed status=active ongoing=yes"));
    changeCall("c1", "'Duration': <1>");
    EXPECT_THAT(next(1), ElementsAre("call c1 changed duration=1"));
    changeCall("c1",
        "'LineId': <'Bo'>, 'Uri': <'tel:1'>, 'AppId': <'a'>, 'RemoteHeld': <true>, 'Holdable': <true>,"
        " 'SupportsDtmf': <true>, 'SupportsMultiparty': <true>, 'Multiparty': <true>,"
        " 'Emergency': <true>, 'Forwarded': <true>, 'Incoming': <true>");
    EXPECT_THAT(next(1),
        ElementsAre("call c1 changed direction=incoming name=\"Bo\" address=\"tel:1\" app=\"a\" remote-held=yes"
                    " holdable=yes dtmf=yes supports-multiparty=yes multiparty=yes emergency=yes forwarded=yes"));
    removeCall("c1");
    EXPECT_THAT(next(1), ElementsAre("call c1 removed"));
}

TEST_F(WatchLines, FollowTheAudio)
{
    watchHost();
    audio("Audio1.SetMicrophoneMuted", "true");
    audio("Audio1.SelectInputDevice", "'headset'");
    audio("Audio1.SelectOutputDevice", "'speaker'");
    EXPECT_THAT(
        next(3), ElementsAre("audio changed muted=yes", "audio changed input=headset", "audio changed output=speaker"));
    audio("FakeAudio1.RemoveDevice", "'headset'");
    EXPECT_THAT(next(2), ElementsAre("device headset removed", "audio changed input=microphone"));
    audio("FakeAudio1.RemoveDevice", "'microphone'");
    EXPECT_THAT(next(2), ElementsAre("device microphone removed", "audio changed input=\"\""));
    audio("FakeAudio1.AddDevice", "('my ear', 7, false, true, 'x', @a{sv} {})");
    EXPECT_THAT(next(1), ElementsAre("device \"my ear\" added type=unknown input=no output=yes name=\"x\""));
}

TEST_F(WatchLines, FollowTheProviders)
{
    watchHost();
    host.plugin(QStringLiteral("AddProvider"), QStringLiteral("'ringlet/:1.7@/a/b'"));
    EXPECT_THAT(next(1), ElementsAre("provider ringlet/:1.7@/a/b added type=fake"));
    host.plugin(QStringLiteral("RemoveProvider"), QStringLiteral("'fake/1'"));
    EXPECT_THAT(next(1), ElementsAre("provider fake/1 removed"));
}

TEST_F(WatchLines, NeverBreakNorActOnATerminalWhateverANameHolds)
{
    watchHost();
    addCall("c1", ", 'LineId': <'a\\n\\u001b[2J\"b\\\\ \\u009b'>");
    EXPECT_THAT(next(1).front(), HasSubstr("name=\"a\\n\\u001b[2J\\\"b\\\\ \\u009b\" address="));
}

TEST_F(WatchLines, TellThatTheHostWentAndThatItIsBack)
{
    addCall("c1");
    watchHost();
    EXPECT_EQ(host.end(), 0);
    EXPECT_TRUE(watch.waitForOutput(QStringLiteral("host gone"), seen));
    const QStringList lines = watch.lines().mid(seen);
    EXPECT_TRUE(lines.contains(QStringLiteral("call c1 removed")));
    EXPECT_TRUE(lines.contains(QStringLiteral("provider fake/1 removed")));
    EXPECT_EQ(text(lines.last()), "host gone");
    seen = watch.lines().size();

    startHost();
    EXPECT_TRUE(watch.waitForOutput(QStringLiteral("host ready"), seen));
    addCall("c1", ", 'Status': <5>");
    EXPECT_TRUE(watch.waitForOutput(QStringLiteral("call c1 added status=incoming"), seen));
}

TEST_F(WatchLines, EndWithSuccessOnSignal)
{
    for (const int number : {SIGINT, SIGTERM}) {
        watchHost();
        watch.signal(number);
        EXPECT_EQ(watch.waitForExit(), 0);
        EXPECT_EQ(text(watch.errorOutput()), "");
    }
}

TEST(WatchWithoutABus, EndsWithAnErrorWhenTheBusGoes)
{
    PrivateBus bus;
    const QStringList environment = {QStringLiteral("DBUS_SESSION_BUS_ADDRESS=") + QString::fromUtf8(bus.address())};
    Program host;
    ASSERT_TRUE(
        host.start(QStringLiteral(VOICECALLD), {QStringLiteral("--plugin"), QStringLiteral(FAKE_PLUGIN)}, environment));
    ASSERT_TRUE(host.waitForOutput(QStringLiteral("ready")));
    Program watch;
    ASSERT_TRUE(watch.start(QStringLiteral(CALLCTL), {QStringLiteral("watch")}, environment));
    ASSERT_TRUE(watch.waitForOutput(QStringLiteral("host ready")));
    host.setMayEnd();
    bus.daemon().signal(SIGKILL);
    EXPECT_EQ(watch.waitForExit(), 3);
    EXPECT_EQ(text(watch.errorOutput()), "callctl: the session bus is gone\n");
}

// --- Screen

class WatchScreen : public Watch
{
protected:
    static void expectScreen(Terminal &terminal, const QStringList &lines)
    {
        EXPECT_EQ(texts(terminal.waitForScreen(lines)), texts(lines));
    }

    const QString audioLine = QStringLiteral("Audio: input microphone, output earpiece, microphone open");
};

TEST_F(WatchScreen, KeepsOneTableUpToDateInItsPlace)
{
    Terminal terminal(CALLCTL, "watch", 100, 24);
    expectScreen(terminal, {QStringLiteral("No calls."), audioLine});
    addCall("c1", ", 'Status': <5>, 'Incoming': <true>, 'LineId': <'Anna'>, 'Uri': <'sip:a'>, 'AppId': <'app'>");
    const QString head = QStringLiteral("ID  STATUS    DIRECTION  NAME  ADDRESS  APPLICATION  DURATION");
    expectScreen(
        terminal, {head, QStringLiteral("c1  incoming  incoming   Anna  sip:a    app          0:00"), audioLine});
    addCall("c2", ", 'Status': <2>, 'Duration': <9>");
    expectScreen(terminal,
        {head, QStringLiteral("c1  incoming  incoming   Anna  sip:a    app          0:00"),
            QStringLiteral("c2  held      outgoing                               0:09"), audioLine});
    removeCall("c1");
    removeCall("c2");
    audio("Audio1.SetMicrophoneMuted", "true");
    expectScreen(terminal,
        {QStringLiteral("No calls."), QStringLiteral("Audio: input microphone, output earpiece, microphone muted")});
    terminal.interrupt();
    EXPECT_EQ(terminal.waitForExit(), 0);
}

TEST_F(WatchScreen, CutsLongTextsToTheTerminalAndFollowsItsSize)
{
    addCall("c1", ", 'Status': <1>, 'LineId': <'A very long name indeed'>, 'Uri': <'sip:short'>");
    Terminal terminal(CALLCTL, "watch", 68, 24);
    expectScreen(terminal,
        {QStringLiteral("ID  STATUS  DIRECTION  NAME         ADDRESS    APPLICATION  DURATION"),
            QStringLiteral("c1  active  outgoing   A very lon…  sip:short               0:00"), audioLine});
    terminal.resize(100, 24);
    expectScreen(terminal,
        {QStringLiteral("ID  STATUS  DIRECTION  NAME                     ADDRESS    APPLICATION  DURATION"),
            QStringLiteral("c1  active  outgoing   A very long name indeed  sip:short               0:00"), audioLine});
}

TEST_F(WatchScreen, LeavesOutWhatDoesNotFitInHeight)
{
    for (const char *id : {"c1", "c2", "c3", "c4"})
        addCall(id);
    Terminal terminal(CALLCTL, "watch", 100, 6);
    const QString head = QStringLiteral("ID  STATUS  DIRECTION  NAME  ADDRESS  APPLICATION  DURATION");
    const QString row = QStringLiteral("%1  null    outgoing                               0:00");
    expectScreen(terminal,
        {head, row.arg(QStringLiteral("c1")), row.arg(QStringLiteral("c2")), QStringLiteral("... and 2 more"),
            audioLine});
}

TEST_F(WatchScreen, SaysThatTheHostIsGoneAndShowsItAgain)
{
    Terminal terminal(CALLCTL, "watch", 100, 24);
    expectScreen(terminal, {QStringLiteral("No calls."), audioLine});
    EXPECT_EQ(host.end(), 0);
    expectScreen(terminal, {QStringLiteral("voicecalld is gone; waiting for it to come back")});
    startHost();
    expectScreen(terminal, {QStringLiteral("No calls."), audioLine});
}

TEST_F(WatchScreen, ANameCannotSendSequencesToTheTerminal)
{
    Terminal terminal(CALLCTL, "watch", 100, 24);
    expectScreen(terminal, {QStringLiteral("No calls."), audioLine});
    addCall("c1", ", 'LineId': <'x\\u001b]0;title\\u0007\\u001b[31m'>");
    const QString head = QStringLiteral("ID  STATUS  DIRECTION  NAME              ADDRESS  APPLICATION  DURATION");
    expectScreen(terminal,
        {head, QStringLiteral("c1  null    outgoing   x\ufffd]0;title\ufffd\ufffd[31m                        0:00"),
            audioLine});
    EXPECT_THAT(terminal.raw().toStdString(), Not(HasSubstr("\033]")));
    EXPECT_THAT(terminal.raw().toStdString(), Not(HasSubstr("\007")));
}
