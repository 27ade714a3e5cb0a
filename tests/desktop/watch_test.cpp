// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "desktop/callctl/hostmonitor.h"
#include "desktop/callctl/watchlines.h"
#include "hostprogram.h"
#include "privatebus.h"
#include "stubhost.h"
#include "terminal.h"
#include "waitfor.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QTemporaryDir>
#include <QtTest/QSignalSpy>
#include <csignal>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

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

class WatchTest : public testing::Test
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

class LinesOfWatch : public WatchTest
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

TEST_F(LinesOfWatch, BeginWithAllThereIsAndThenReady)
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

TEST_F(LinesOfWatch, FollowACallFromItsBeginningToItsEnd)
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

TEST_F(LinesOfWatch, FollowTheAudio)
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

TEST_F(LinesOfWatch, FollowTheProviders)
{
    watchHost();
    host.plugin(QStringLiteral("AddProvider"), QStringLiteral("'ringlet/:1.7@/a/b'"));
    EXPECT_THAT(next(1), ElementsAre("provider ringlet/:1.7@/a/b added type=fake"));
    host.plugin(QStringLiteral("RemoveProvider"), QStringLiteral("'fake/1'"));
    EXPECT_THAT(next(1), ElementsAre("provider fake/1 removed"));
}

TEST_F(LinesOfWatch, NeverBreakNorActOnATerminalWhateverANameHolds)
{
    watchHost();
    addCall("c1", ", 'LineId': <'a\\n\\u001b[2J\"b\\\\ \\u009b'>");
    EXPECT_THAT(next(1).front(), HasSubstr("name=\"a\\n\\u001b[2J\\\"b\\\\ \\u009b\" address="));
}

TEST_F(LinesOfWatch, TellThatTheHostWentAndThatItIsBack)
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

TEST_F(LinesOfWatch, EndWithSuccessOnSignal)
{
    for (const int number : {SIGINT, SIGTERM}) {
        watchHost();
        watch.signal(number);
        EXPECT_EQ(watch.waitForExit(), 0);
        EXPECT_EQ(text(watch.errorOutput()), "");
    }
}

// A pipe that holds little and is not read.
class StuckPipe
{
public:
    StuckPipe() : m_path(m_folder.filePath(QStringLiteral("pipe")))
    {
        mkfifo(qPrintable(m_path), 0600);
        m_descriptor = open(qPrintable(m_path), O_RDWR | O_CLOEXEC);
        fcntl(m_descriptor, F_SETPIPE_SZ, capacity);
    }
    ~StuckPipe() { close(m_descriptor); }
    StuckPipe(const StuckPipe &) = delete;
    StuckPipe &operator=(const StuckPipe &) = delete;

    bool waitUntilFull() const
    {
        return waitFor([this] {
            int count = 0;
            return ioctl(m_descriptor, FIONREAD, &count) == 0 && count == capacity;
        });
    }

    QString path() const { return m_path; }

private:
    static constexpr int capacity = 4096;
    QTemporaryDir m_folder;
    QString m_path;
    int m_descriptor;
};

TEST_F(LinesOfWatch, EndOnSignalThoughNobodyReadsThem)
{
    for (int i = 1; i <= 30; ++i)
        addCall(qPrintable(QStringLiteral("c%1").arg(i)));
    for (const int number : {SIGINT, SIGTERM}) {
        const StuckPipe pipe;
        ASSERT_TRUE(watch.start(QStringLiteral("/bin/sh"),
            {QStringLiteral("-c"), QStringLiteral("exec \"$0\" watch >\"$1\""), QStringLiteral(CALLCTL), pipe.path()}));
        ASSERT_TRUE(pipe.waitUntilFull());
        watch.signal(number);
        EXPECT_EQ(watch.waitForExit(), 0);
    }
}

TEST(WatchWithoutAHost, WaitsForIt)
{
    Program watch;
    ASSERT_TRUE(watch.start(QStringLiteral(CALLCTL), {QStringLiteral("watch")}));
    ASSERT_TRUE(watch.waitForError(QStringLiteral("start it with 'voicecalld'; waiting for it")));
    const StubHost host(StubHost::Mood::Answers);
    EXPECT_TRUE(watch.waitForOutput(QStringLiteral("host ready")));
}

TEST(WatchWithoutAHost, WaitsForOneThatIsSlow)
{
    StubHost host(StubHost::Mood::IsSilent);
    Program watch;
    ASSERT_TRUE(watch.start(QStringLiteral(CALLCTL), {QStringLiteral("watch")}));
    ASSERT_TRUE(watch.waitForError(QStringLiteral("voicecalld is running, but does not answer; waiting for it")));
    host.setMood(StubHost::Mood::Answers);
    EXPECT_TRUE(watch.waitForOutput(QStringLiteral("host ready")));
}

TEST(WatchWithoutAHost, AsksOneAgainThatRefuses)
{
    StubHost host(StubHost::Mood::Refuses);
    Program watch;
    ASSERT_TRUE(watch.start(QStringLiteral(CALLCTL), {QStringLiteral("watch")}));
    ASSERT_TRUE(watch.waitForError(QStringLiteral("voicecalld does not answer as it should: not now")));
    host.setMood(StubHost::Mood::Answers);
    EXPECT_TRUE(watch.waitForOutput(QStringLiteral("host ready")));
}

TEST(WatchWithoutAHost, FollowsOneThatGoesBeforeItHasAnswered)
{
    auto host = std::make_unique<StubHost>(StubHost::Mood::IsSilent);
    Program watch;
    ASSERT_TRUE(watch.start(QStringLiteral(CALLCTL), {QStringLiteral("watch")}));
    ASSERT_TRUE(waitFor([&] { return host->questionCount() == 3; }));
    host.reset();
    ASSERT_TRUE(watch.waitForError(QStringLiteral("voicecalld has left the bus while it was asked; waiting for it")));
    const StubHost next(StubHost::Mood::Answers);
    EXPECT_TRUE(watch.waitForOutput(QStringLiteral("host ready")));
}

// --- Providers, as several hosts tell them

class ProvidersOfWatch : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(watch.start(QStringLiteral(CALLCTL), {QStringLiteral("watch")}));
        ASSERT_TRUE(watch.waitForOutput(QStringLiteral("host ready")));
        seen = watch.lines().size();
    }

    void invalidate()
    {
        host.emitSignal(QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("PropertiesChanged"),
            {manager, QVariantMap(), QStringList(QStringLiteral("Providers"))});
    }

    void tell(const char *member, const QVariantList &arguments)
    {
        host.emitSignal(manager, QLatin1String(member), arguments);
    }

    // The next lines, up to and with one that contains the text.
    std::vector<std::string> until(const char *last)
    {
        EXPECT_TRUE(watch.waitForOutput(QString::fromUtf8(last), seen));
        const QStringList lines = watch.lines().mid(seen);
        seen += lines.size();
        return texts(lines);
    }

    const QString manager = QStringLiteral("org.tarnwickle.voicecall.Manager1");
    StubHost host{StubHost::Mood::Answers};
    Program watch;
    int seen = 0;
};

TEST_F(ProvidersOfWatch, AreTakenFromTheSignalsInEitherOrderAndNotAskedFor)
{
    tell("ProviderAdded", {QStringLiteral("a"), QStringLiteral("one")});
    invalidate();
    EXPECT_THAT(until("provider a"), ElementsAre("provider a added type=one"));
    invalidate();
    tell("ProviderAdded", {QStringLiteral("b"), QStringLiteral("two")});
    EXPECT_THAT(until("provider b"), ElementsAre("provider b added type=two"));
    invalidate();
    tell("ProviderRemoved", {QStringLiteral("a")});
    EXPECT_THAT(until("provider a"), ElementsAre("provider a removed"));
    EXPECT_EQ(host.questionCount(), 3);
}

TEST_F(ProvidersOfWatch, AreAskedForWhereAHostSaysNoMoreThanThatTheyChanged)
{
    host.providers = QStringList({QStringLiteral("a"), QStringLiteral("b")});
    invalidate();
    EXPECT_THAT(until("provider b"), ElementsAre("provider a added type=stub", "provider b added type=stub"));
    host.providers = QStringList(QStringLiteral("b"));
    invalidate();
    EXPECT_THAT(until("provider a"), ElementsAre("provider a removed"));
    EXPECT_EQ(host.questionCount(), 5);
}

// 2,000 registrations while it is stopped cost one small signal each, and all of them are told.
TEST_F(ProvidersOfWatch, AreAllToldByOneThatWasStopped)
{
    watch.signal(SIGSTOP);
    for (int i = 0; i < 2000; ++i)
        tell("ProviderAdded", {QString::number(i), QStringLiteral("stub")});
    watch.signal(SIGCONT);
    EXPECT_EQ(until("provider 1999 added").size(), 2000u);
    EXPECT_EQ(host.questionCount(), 3);
}

// --- What it costs

static HostState manyCalls(int count)
{
    HostState state;
    state.isPresent = true;
    for (int i = 1; i <= count; ++i)
        state.calls[{HostProgram::call(QStringLiteral("c%1").arg(i))}].properties
            = {{QStringLiteral("HandlerId"), QStringLiteral("c%1").arg(i)}, {QStringLiteral("Duration"), 0}};
    return state;
}

TEST(CostOfWatch, OnlyTheCallThatChangedIsComparedForItsLine)
{
    HostState state = manyCalls(1000);
    WatchLines lines;
    lines.noteReady(state);
    lines.take(state);
    // The other changes are there as well, and would be found if any call but the third were looked at.
    for (CallInfo &call : state.calls)
        call.properties[QStringLiteral("Duration")] = 1;
    lines.noteCall(state, HostProgram::call(QStringLiteral("c3")));
    EXPECT_EQ(lines.take(state).toStdString(), "call c3 changed duration=1\n");
}

TEST(CostOfWatch, WhatIsNotReadDoesNotGrowWithoutEnd)
{
    HostState state = manyCalls(1);
    const QString path = state.calls.firstKey().path;
    WatchLines lines;
    lines.noteReady(state);
    lines.take(state);
    for (int i = 1; i <= 100000; ++i) {
        state.calls.first().properties[QStringLiteral("Duration")] = i;
        lines.noteCall(state, path);
    }
    const QByteArray bytes = lines.take(state);
    EXPECT_LT(bytes.size(), 70000);
    EXPECT_TRUE(bytes.endsWith("\ncall c1 changed duration=100000\n"));
}

TEST(CostOfWatch, AHostThatWentAndCameBackUnreadIsToldToHaveGone)
{
    HostState state = manyCalls(2000);
    WatchLines lines;
    lines.noteReady(state);
    lines.noteGone();
    state = manyCalls(1);
    lines.noteReady(state);
    const QByteArray first = lines.take(state);
    const QByteArray all = first + lines.take(state) + lines.take(state);
    EXPECT_EQ(all.count(" added"), 2001);
    EXPECT_EQ(all.count(" removed"), 2000);
    EXPECT_EQ(all.count("host gone\n"), 1);
    EXPECT_TRUE(all.endsWith("host ready\n"));
}

TEST_F(WatchTest, OneMessageOfTheHostIsOneChangeOfOneCall)
{
    for (int i = 1; i <= 20; ++i)
        addCall(qPrintable(QStringLiteral("c%1").arg(i)));
    HostMonitor monitor(QDBusConnection::sessionBus());
    QSignalSpy ready(&monitor, &HostMonitor::ready);
    QSignalSpy changes(&monitor, &HostMonitor::callChanged);
    monitor.start();
    ASSERT_TRUE(waitFor([&] { return !ready.isEmpty(); }));
    changeCall("c7", "'Duration': <1>");
    changeCall("c8", "'Duration': <1>");
    ASSERT_TRUE(waitFor([&] { return changes.size() >= 2; }));
    EXPECT_EQ(text(changes.at(0).at(0).toString()), text(HostProgram::call(QStringLiteral("c7"))));
    EXPECT_EQ(text(changes.at(1).at(0).toString()), text(HostProgram::call(QStringLiteral("c8"))));
    EXPECT_EQ(changes.size(), 2);
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

class ScreenOfWatch : public WatchTest
{
protected:
    static void expectScreen(Terminal &terminal, const QStringList &lines)
    {
        EXPECT_EQ(texts(terminal.waitForScreen(lines)), texts(lines));
    }

    const QString audioLine = QStringLiteral("Audio: input microphone, output earpiece, microphone open");
};

TEST_F(ScreenOfWatch, KeepsOneTableUpToDateInItsPlace)
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

TEST_F(ScreenOfWatch, CutsLongTextsToTheTerminalAndFollowsItsSize)
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

TEST_F(ScreenOfWatch, LeavesOutWhatDoesNotFitInHeight)
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

TEST_F(ScreenOfWatch, WritesWhatIsSeenToChangeAndNoMore)
{
    for (int i = 1; i <= 30; ++i)
        addCall(qPrintable(QStringLiteral("c%1").arg(i)), ", 'LineId': <'Somebody'>");
    Terminal terminal(CALLCTL, "watch", 100, 24);
    ASSERT_TRUE(waitFor([&] { return terminal.raw().contains("microphone open"); }));
    const int before = terminal.raw().size();
    // One below the screen first: it writes nothing.
    changeCall("c30", "'Duration': <77>");
    changeCall("c5", "'Duration': <61>");
    ASSERT_TRUE(waitFor([&] { return terminal.raw().contains("1:01"); }));
    audio("Audio1.SetMicrophoneMuted", "true");
    ASSERT_TRUE(waitFor([&] { return terminal.raw().contains("microphone muted"); }));
    const QByteArray written = terminal.raw().mid(before);
    EXPECT_EQ(written.count("Somebody"), 1) << written.toStdString();
    EXPECT_EQ(written.count("\033[2K"), 2) << written.toStdString();
}

TEST_F(ScreenOfWatch, DrawsAtMostTenTimesASecond)
{
    addCall("c1");
    Terminal terminal(CALLCTL, "watch", 100, 24);
    ASSERT_TRUE(waitFor([&] { return terminal.raw().contains("microphone open"); }));
    QElapsedTimer clock;
    clock.start();
    for (int i = 1; i <= 200; ++i)
        changeCall("c1", qPrintable(QStringLiteral("'Duration': <%1>").arg(i)));
    ASSERT_TRUE(waitFor([&] { return terminal.raw().contains("3:20"); }));
    // Each table that is drawn begins with going up; one more at the beginning and at the end.
    EXPECT_LE(terminal.raw().count("\033[3A"), clock.elapsed() / 100 + 2);
}

TEST_F(ScreenOfWatch, SaysThatTheHostIsGoneAndShowsItAgain)
{
    Terminal terminal(CALLCTL, "watch", 100, 24);
    expectScreen(terminal, {QStringLiteral("No calls."), audioLine});
    EXPECT_EQ(host.end(), 0);
    expectScreen(terminal, {QStringLiteral("voicecalld is gone; waiting for it to come back")});
    startHost();
    expectScreen(terminal, {QStringLiteral("No calls."), audioLine});
}

TEST_F(ScreenOfWatch, ANameCannotSendSequencesToTheTerminal)
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
