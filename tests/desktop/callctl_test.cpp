// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "hostprogram.h"
#include "stubhost.h"
#include "waitfor.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtDBus/QDBusConnection>
#include <csignal>
#include <gmock/gmock.h>
#include <memory>

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

static std::string text(const QString &string) { return string.toStdString(); }

// One run of callctl, from start to end. Arguments are separated by spaces.
struct Execution
{
    explicit Execution(const QString &arguments, const QStringList &environment = {})
        : Execution(QStringLiteral(CALLCTL), arguments.split(QLatin1Char(' '), Qt::SkipEmptyParts), environment)
    {
    }

    Execution(const QString &file, const QStringList &arguments, const QStringList &environment)
    {
        Program program;
        program.start(file, arguments, environment);
        exitCode = program.waitForExit();
        lines = program.lines();
        error = text(program.errorOutput());
    }

    std::vector<std::string> output() const
    {
        std::vector<std::string> result;
        for (const QString &line : lines)
            result.push_back(text(line));
        return result;
    }

    QJsonDocument json() const { return QJsonDocument::fromJson(lines.join(QLatin1Char('\n')).toUtf8()); }

    int exitCode;
    QStringList lines;
    std::string error;
};

static Execution callctl(const char *arguments) { return Execution(QString::fromUtf8(arguments)); }

class Callctl : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(host.start());
        ASSERT_EQ(text(host.plugin(QStringLiteral("AddProvider"), QStringLiteral("'fake/1'"))), "()");
    }

    void TearDown() override { EXPECT_EQ(host.end(), 0) << text(host.program().errorOutput()); }

    // Ids are given by the test, so that they can be written out.
    void addCall(const char *id, const QString &state = {})
    {
        host.addCall(QStringLiteral("fake/1"), QStringLiteral("{'HandlerId': <'%1'>%2}").arg(QLatin1String(id), state));
    }

    void expectDone(const char *arguments)
    {
        const Execution run = callctl(arguments);
        EXPECT_EQ(run.exitCode, 0) << run.error;
        EXPECT_THAT(run.output(), IsEmpty());
        EXPECT_EQ(run.error, "");
    }

    void expectError(const char *arguments, int exitCode, const std::string &error)
    {
        const Execution run = callctl(arguments);
        EXPECT_EQ(run.exitCode, exitCode);
        EXPECT_EQ(run.error, "callctl: " + error + "\n");
        EXPECT_THAT(run.output(), IsEmpty());
    }

    std::string notes() { return text(host.pluginNotes()); }

    HostProgram host;
};

// --- Lists

TEST_F(Callctl, ListsCallsAsATable)
{
    addCall("c1",
        ", 'Status': <1>, 'Incoming': <true>, 'LineId': <'Anna'>, 'Uri': <'sip:anna@example.org'>,"
        " 'AppId': <'org.example.Talk'>, 'Duration': <65>");
    addCall("c2", ", 'Status': <3>, 'LineId': <'Bert'>, 'Duration': <3600>");
    const Execution run = callctl("calls");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_THAT(run.output(),
        ElementsAre("ID  STATUS   DIRECTION  NAME  ADDRESS               APPLICATION       DURATION",
            "c1  active   incoming   Anna  sip:anna@example.org  org.example.Talk  1:05",
            "c2  dialing  outgoing   Bert                                          1:00:00"));
}

TEST_F(Callctl, CallsStandInTheOrderInWhichTheyCame)
{
    addCall("c10");
    addCall("c9");
    const QStringList lines = callctl("calls").lines;
    ASSERT_EQ(lines.size(), 3);
    EXPECT_TRUE(lines.at(1).startsWith(QLatin1String("c9 ")));
    EXPECT_TRUE(lines.at(2).startsWith(QLatin1String("c10 ")));
}

TEST_F(Callctl, SaysThatThereAreNoCalls) { EXPECT_THAT(callctl("calls").output(), ElementsAre("No calls.")); }

TEST_F(Callctl, ListsCallsAsJson)
{
    addCall("c1",
        ", 'Status': <5>, 'Incoming': <true>, 'LineId': <'Anna'>, 'Uri': <'sip:a'>, 'AppId': <'app'>,"
        " 'Duration': <2>, 'Holdable': <true>, 'SupportsDtmf': <true>");
    const QJsonArray calls = callctl("--json calls").json().array();
    ASSERT_EQ(calls.size(), 1);
    const QJsonObject expected = {{QStringLiteral("id"), QStringLiteral("c1")},
        {QStringLiteral("status"), QStringLiteral("incoming")},
        {QStringLiteral("direction"), QStringLiteral("incoming")}, {QStringLiteral("name"), QStringLiteral("Anna")},
        {QStringLiteral("address"), QStringLiteral("sip:a")}, {QStringLiteral("application"), QStringLiteral("app")},
        {QStringLiteral("provider"), QStringLiteral("fake/1")}, {QStringLiteral("duration"), 2},
        {QStringLiteral("ongoing"), false}, {QStringLiteral("remoteHeld"), false}, {QStringLiteral("holdable"), true},
        {QStringLiteral("supportsDtmf"), true}, {QStringLiteral("supportsMultiparty"), false},
        {QStringLiteral("multiparty"), false}, {QStringLiteral("emergency"), false},
        {QStringLiteral("forwarded"), false}};
    EXPECT_EQ(calls.at(0).toObject(), expected);
}

TEST_F(Callctl, NoCallsAreAnEmptyJsonArray)
{
    const QJsonDocument json = callctl("calls --json").json();
    EXPECT_TRUE(json.isArray());
    EXPECT_TRUE(json.array().isEmpty());
}

TEST_F(Callctl, ListsProviders)
{
    EXPECT_THAT(callctl("providers").output(), ElementsAre("ID      TYPE", "fake/1  fake"));
    const QJsonArray json = callctl("providers --json").json().array();
    ASSERT_EQ(json.size(), 1);
    EXPECT_EQ(text(json.at(0).toObject().value(QStringLiteral("id")).toString()), "fake/1");
    EXPECT_EQ(text(json.at(0).toObject().value(QStringLiteral("type")).toString()), "fake");
}

TEST_F(Callctl, ListsDevicesAndTheSelection)
{
    EXPECT_THAT(callctl("devices").output(),
        ElementsAre("ID          TYPE        DIRECTION     NAME           SELECTED",
            "microphone  microphone  input         Microphone     input",
            "earpiece    earpiece    output        Earpiece       output",
            "speaker     speaker     output        Speaker", "headset     headset     input+output  Wired headset",
            "Audio: input microphone, output earpiece, microphone open"));
    const QJsonObject json = callctl("devices --json").json().object();
    EXPECT_EQ(json.value(QStringLiteral("devices")).toArray().size(), 4);
    EXPECT_EQ(text(json.value(QStringLiteral("input")).toString()), "microphone");
    EXPECT_EQ(text(json.value(QStringLiteral("output")).toString()), "earpiece");
    EXPECT_TRUE(json.value(QStringLiteral("muted")).isBool());
}

// --- Names as applications give them

TEST_F(Callctl, WhatCouldActOnTheTerminalIsNotPrintedRaw)
{
    // Escape, bell, the 8-bit form of the control sequence introducer, a mark that turns the writing direction.
    addCall("c1", ", 'LineId': <'a\\u001b[2Jb\\u0007c\\u009bd\\u202ee'>");
    const std::string replacement = "\xEF\xBF\xBD";
    const Execution run = callctl("calls");
    EXPECT_THAT(run.output().at(1),
        HasSubstr("a" + replacement + "[2Jb" + replacement + "c" + replacement + "d" + replacement + "e"));
    const std::string json = text(callctl("calls --json").lines.join(QString()));
    EXPECT_THAT(json, HasSubstr("\"a\\u001b[2Jb\\u0007c\\u009bd\\u202ee\""));
    addCall("c2");
    EXPECT_THAT(callctl("answer").error, AllOf(HasSubstr("a" + replacement), Not(HasSubstr("\033"))));
}

TEST_F(Callctl, ColumnsStayInLineWithWideAndCombiningCharacters)
{
    addCall("c1", ", 'LineId': <'\u5f20\u4f1f'>, 'Uri': <'x'>");
    addCall("c2", ", 'LineId': <'Zoe\u0308'>, 'Uri': <'y'>");
    const std::vector<std::string> lines = callctl("calls").output();
    EXPECT_THAT(lines.at(1), HasSubstr("\u5f20\u4f1f  x"));
    EXPECT_THAT(lines.at(2), HasSubstr("Zoe\u0308   y"));
}

TEST_F(Callctl, WritesTheSameInAnyLocale)
{
    addCall("c1", ", 'LineId': <'J\u00f6rg \u5f20'>");
    EXPECT_EQ(Execution(QStringLiteral("calls"), {QStringLiteral("LC_ALL=C")}).lines,
        Execution(QStringLiteral("calls"), {QStringLiteral("LC_ALL=C.UTF-8")}).lines);
}

TEST_F(Callctl, ANameCannotHideInOneColumnNorTurnTheLine)
{
    addCall("c1",
        ", 'LineId': <'" + QString(200000, QChar(0x0301))
            + "'>, 'Uri': <'a\\u2066\\u202e1\\u2069'>, 'AppId': <'\u05d0'>");
    const QStringList lines = callctl("calls").lines;
    EXPECT_LT(lines.at(1).size(), 100);
    EXPECT_THAT(text(lines.at(1)), HasSubstr("a\ufffd\ufffd1\ufffd"));
    EXPECT_THAT(text(lines.at(1)), HasSubstr("\u05d0\u200e "));
}

// --- Output

static Execution intoFullDevice(const QStringList &arguments)
{
    const QStringList command
        = {QStringLiteral("-c"), QStringLiteral("exec \"$0\" \"$@\" >/dev/full"), QStringLiteral(CALLCTL)};
    return Execution(QStringLiteral("/bin/sh"), command + arguments, {});
}

TEST_F(Callctl, FailsWhereItsOutputCannotBeWritten)
{
    for (const char *command : {"calls", "calls --json", "providers", "devices", "watch", "--help", "--version"}) {
        const Execution run = intoFullDevice(QString::fromUtf8(command).split(QLatin1Char(' ')));
        EXPECT_EQ(run.exitCode, 1) << command;
        EXPECT_EQ(run.error, "callctl: cannot write to standard output: No space left on device\n") << command;
    }
}

// --- Commands

TEST_F(Callctl, DrivesTheCallOfAnId)
{
    addCall("c1");
    addCall("c2");
    expectDone("answer c2");
    expectDone("hold c2 on");
    expectDone("hold c2 off");
    expectDone("dtmf c2 12#");
    expectDone("hangup c1");
    EXPECT_EQ(notes(), "(['c2 answer', 'c2 hold true', 'c2 hold false', 'c2 dtmf 12#', 'c1 hangup'],)");
}

TEST_F(Callctl, DrivesTheOnlyCallWithoutAnId)
{
    addCall("c1");
    expectDone("answer");
    expectDone("hold on");
    expectDone("dtmf 5");
    expectDone("hangup");
    EXPECT_EQ(notes(), "(['c1 answer', 'c1 hold true', 'c1 dtmf 5', 'c1 hangup'],)");
}

TEST_F(Callctl, FindsACallWhoseIdIsEscapedInItsPath)
{
    addCall("a-b");
    expectDone("answer a-b");
    EXPECT_EQ(notes(), "(['a-b answer'],)");
}

TEST_F(Callctl, WithSeveralCallsAnIdIsNeeded)
{
    addCall("c1", ", 'Status': <5>, 'LineId': <'Anna'>");
    addCall("c2", ", 'Status': <1>");
    expectError("answer", 4, "there are several calls, name one by its id: c1 (incoming, Anna), c2 (active)");
    EXPECT_EQ(notes(), "([],)");
}

TEST_F(Callctl, AnUnknownIdListsThoseThereAre)
{
    addCall("c1", ", 'Status': <5>, 'LineId': <'Anna'>");
    expectError("hangup c7", 4, "no call has the id 'c7'; there are: c1 (incoming, Anna)");
}

TEST_F(Callctl, WithoutCallsThereIsNothingToDrive) { expectError("hangup", 4, "there is no call"); }

TEST_F(Callctl, HoldTakesOnOrOff)
{
    addCall("c1");
    expectError("hold maybe", 2, "'on' or 'off' is needed, not 'maybe'");
    expectError("mute loud", 2, "'on' or 'off' is needed, not 'loud'");
}

TEST_F(Callctl, DialsWithAProvider) { expectDone("dial fake/1 123"); }

TEST_F(Callctl, ARefusedDialGivesTheProvidersReason)
{
    expectError("dial fake/1 home", 1, "cannot dial 'home'");
    expectError("dial x 1", 1, "No provider has the id 'x'; there are: fake/1");
}

TEST_F(Callctl, WordsBehindTwoDashesAreNoOptions) { expectError("dial -- fake/1 -1", 1, "cannot dial '-1'"); }

TEST_F(Callctl, SetsMuteAndDevices)
{
    expectDone("mute on");
    expectDone("input headset");
    expectDone("output speaker");
    EXPECT_EQ(callctl("devices").output().back(), "Audio: input headset, output speaker, microphone muted");
    expectDone("mute off");
    EXPECT_EQ(callctl("devices").output().back(), "Audio: input headset, output speaker, microphone open");
}

TEST_F(Callctl, AnUnknownDeviceListsThoseThatFit)
{
    expectError("input speaker", 1, "No input device has the id 'speaker'; there are: microphone, headset");
    expectError("output x", 1, "No output device has the id 'x'; there are: earpiece, speaker, headset");
}

// --- Command line

TEST(CallctlCommandLine, HelpFitsOnOneScreenAndNamesCommandsAndExitCodes)
{
    const Execution run = callctl("--help");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_LE(run.lines.size(), 24);
    for (const QString &line : run.lines)
        EXPECT_LE(line.size(), 80) << text(line);
    const std::string all = text(run.lines.join(QLatin1Char('\n')));
    for (const char *word : {"calls", "providers", "devices", "answer [ID]", "hangup [ID]", "hold [ID] on|off",
             "dtmf [ID] TONES", "dial PROVIDER NUMBER", "mute on|off", "input ID", "output ID", "watch", "--json",
             "Exit codes: 0 done, 1", "2 wrong", "3 no", "4 no such call"})
        EXPECT_THAT(all, HasSubstr(word));
}

TEST(CallctlCommandLine, TellsItsVersion)
{
    EXPECT_THAT(callctl("--version").output(), ElementsAre("callctl " PROJECT_VERSION));
}

static void expectUsageError(const char *arguments, const std::string &error)
{
    const Execution run = callctl(arguments);
    EXPECT_EQ(run.exitCode, 2) << arguments;
    EXPECT_EQ(run.error, "callctl: " + error + "\n");
}

TEST(CallctlCommandLine, AnUnknownCommandListsThoseThereAre)
{
    const std::string all
        = "there are: calls, providers, devices, answer, hangup, hold, dtmf, dial, mute, input, output, watch";
    expectUsageError("listen", "there is no command 'listen'; " + all);
    expectUsageError("", "a command is needed; " + all);
}

TEST(CallctlCommandLine, AnUnknownOptionIsNamed)
{
    expectUsageError("calls --xml", "there is no option '--xml'; there are --json, --help and --version");
}

TEST(CallctlCommandLine, WrongArgumentsAreAnsweredWithTheRightUse)
{
    const std::string wrong = "this is not how it is used; right is: callctl ";
    expectUsageError("calls x", wrong + "calls");
    expectUsageError("answer a b", wrong + "answer [ID]");
    expectUsageError("hold", wrong + "hold [ID] on|off");
    expectUsageError("dtmf", wrong + "dtmf [ID] TONES");
    expectUsageError("dial x", wrong + "dial PROVIDER NUMBER");
    expectUsageError("mute", wrong + "mute on|off");
    expectUsageError("input", wrong + "input ID");
    expectUsageError("output a b", wrong + "output ID");
}

TEST(CallctlCommandLine, JsonGoesWithListsOnly)
{
    expectUsageError("answer --json", "--json goes with calls, providers and devices only");
}

// --- No host

TEST(CallctlWithoutAHost, SaysHowToStartIt)
{
    for (const char *command : {"calls", "providers", "devices", "answer"}) {
        const Execution run = callctl(command);
        EXPECT_EQ(run.exitCode, 3) << command;
        EXPECT_EQ(run.error,
            "callctl: voicecalld is not running: nobody owns org.tarnwickle.voicecall on the session bus;"
            " start it with 'voicecalld'\n");
    }
}

TEST(CallctlWithoutAHost, AudioAndDialSaySoToo)
{
    for (const char *command : {"mute on", "input x", "output x", "dial a b"}) {
        const Execution run = callctl(command);
        EXPECT_EQ(run.exitCode, 3) << command << '\n' << run.error;
        EXPECT_THAT(run.error, HasSubstr("start it with 'voicecalld'"));
    }
}

TEST(CallctlWithoutAHost, AMissingBusIsNamed)
{
    const Execution run(QStringLiteral("calls"), {QStringLiteral("DBUS_SESSION_BUS_ADDRESS=unix:path=/nowhere/bus")});
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_EQ(run.error.find("callctl: no session bus: "), 0u) << run.error;
}

TEST(CallctlWithoutAHost, AHostThatDoesNotAnswerIsGivenUp)
{
    HostProgram host;
    ASSERT_TRUE(host.start());
    host.program().signal(SIGSTOP);
    const Execution run = callctl("calls");
    host.program().signal(SIGCONT);
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_EQ(run.error, "callctl: voicecalld is running, but does not answer\n");
    EXPECT_EQ(host.end(), 0);
}

TEST(CallctlWithoutAHost, ANameOwnedByAnotherProgramIsNotTakenForTheHost)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    ASSERT_TRUE(bus.registerService(HostProgram::service()));
    const Execution run = callctl("calls");
    EXPECT_TRUE(bus.unregisterService(HostProgram::service()));
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_THAT(run.error, HasSubstr("voicecalld does not answer as it should: "));
}

TEST(CallctlWithoutAHost, AHostThatGoesWhileItIsAskedIsNotWaitedFor)
{
    auto host = std::make_unique<StubHost>(StubHost::Mood::IsSilent);
    Program callctl;
    ASSERT_TRUE(callctl.start(QStringLiteral(CALLCTL), {QStringLiteral("calls")}));
    ASSERT_TRUE(waitFor([&] { return host->questionCount() == 3; }));
    host.reset();
    EXPECT_EQ(callctl.waitForExit(), 3);
    EXPECT_EQ(text(callctl.errorOutput()), "callctl: voicecalld has left the bus while it was asked\n");
}
