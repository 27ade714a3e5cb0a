// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "hostprogram.h"
#include "stubhost.h"
#include "waitfor.h"

#include <QtCore/QFile>
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

    void changeCall(const char *id, const char *changes)
    {
        host.plugin(QStringLiteral("ChangeCall"),
            QStringLiteral("'%1', @a{sv} {%2}, 'statusChanged'").arg(QLatin1String(id), QString::fromUtf8(changes)));
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
    EXPECT_THAT(callctl("hangup").error, AllOf(HasSubstr("a" + replacement), Not(HasSubstr("\033"))));
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

static const char *const ringing = ", 'Status': <5>";
static const char *const active = ", 'Status': <1>, 'Holdable': <true>, 'SupportsDtmf': <true>";
static const char *const held = ", 'Status': <2>, 'Holdable': <true>, 'SupportsDtmf': <true>";
static const char *const disconnected = ", 'Status': <7>";

TEST_F(Callctl, DrivesTheCallOfAnId)
{
    addCall("c1", ringing);
    addCall("c2", active);
    addCall("c3", held);
    addCall("c4", active);
    expectDone("answer c1");
    expectDone("hold c2 on");
    expectDone("hold c3 off");
    expectDone("dtmf c2 12#Ad");
    expectDone("hangup c1");
    EXPECT_EQ(notes(), "(['c1 answer', 'c2 hold true', 'c3 hold false', 'c2 dtmf 12#Ad', 'c1 hangup'],)");
}

TEST_F(Callctl, WithoutAnIdTakesTheCallForWhichItMakesSense)
{
    addCall("c1", ringing);
    addCall("c2", active);
    addCall("c3", held);
    addCall("c4", disconnected);
    expectDone("answer");
    expectDone("hold on");
    expectDone("hold off");
    expectDone("dtmf 5");
    EXPECT_EQ(notes(), "(['c1 answer', 'c2 hold true', 'c3 hold false', 'c2 dtmf 5'],)");
    expectError("hangup", 4, "several calls can be ended, name one by its id: c1 (incoming), c2 (active)");
}

TEST_F(Callctl, HangupMeansTheCallThatIsTalkedIn)
{
    addCall("c1", held);
    addCall("c2", active);
    expectDone("hangup");
    EXPECT_EQ(notes(), "(['c2 hangup'],)");
}

TEST_F(Callctl, HangupEndsAllThereAre)
{
    addCall("c1", ringing);
    addCall("c2", held);
    addCall("c3", disconnected);
    expectDone("hangup --all");
    EXPECT_EQ(notes(), "(['c1 hangup', 'c2 hangup'],)");
    expectError("hangup c1 --all", 2, "either a call or --all, not both");
}

TEST_F(Callctl, AnswerMeansACallThatRings)
{
    addCall("c1", ", 'Status': <5>, 'LineId': <'Anna'>");
    addCall("c2", ", 'Status': <6>");
    expectError("answer", 4, "several calls can be answered, name one by its id: c1 (incoming, Anna), c2 (waiting)");
    EXPECT_EQ(notes(), "([],)");
}

TEST_F(Callctl, FindsACallByAPartOfItsNameOrAddress)
{
    addCall("c1", ", 'Status': <5>, 'LineId': <'Anna Example'>, 'Uri': <'sip:anna@example.org'>");
    addCall("c2", ", 'Status': <5>, 'LineId': <'Bert Example'>, 'Uri': <'sip:bert@example.org'>");
    expectDone("answer anna");
    expectDone("answer BERT@");
    EXPECT_EQ(notes(), "(['c1 answer', 'c2 answer'],)");
    expectError("answer example", 4,
        "'example' fits several calls, name one by its id: c1 (incoming, Anna Example), c2 (incoming, Bert Example)");
}

// An id goes before what stands in another call's name.
TEST_F(Callctl, AnIdIsNoPartOfAName)
{
    addCall("c1", ", 'Status': <5>, 'LineId': <'c2'>");
    addCall("c2", ringing);
    expectDone("answer c2");
    EXPECT_EQ(notes(), "(['c2 answer'],)");
}

TEST_F(Callctl, FindsACallWhoseIdIsEscapedInItsPath)
{
    addCall("a-b", ringing);
    expectDone("answer a-b");
    EXPECT_EQ(notes(), "(['a-b answer'],)");
}

TEST_F(Callctl, AnUnknownIdListsThoseThereAre)
{
    addCall("c1", ", 'Status': <5>, 'LineId': <'Anna'>");
    expectError("hangup c7", 4,
        "no call has the id 'c7', nor a name or address with that in it; there are: c1 (incoming, Anna)");
}

TEST_F(Callctl, WithoutCallsThereIsNothingToDrive)
{
    for (const char *command : {"answer", "hangup", "hangup --all", "hold on", "swap", "dtmf 1"})
        expectError(command, 4, "there is no call");
}

TEST_F(Callctl, SaysWhenACommandCouldHaveNoEffect)
{
    addCall("c1", ", 'Status': <1>");
    addCall("c2", held);
    addCall("c3", disconnected);
    addCall("c4", ringing);
    const std::string onlyRinging = " does not ring, and only a call that rings can be answered";
    expectError("answer c1", 1, "c1 (active)" + onlyRinging);
    expectError("answer c2", 1, "c2 (held)" + onlyRinging);
    expectError("dtmf c1 1", 1, "c1 (active) takes no tones");
    expectError("hold c2 on", 1, "c2 (held) is held already; --force asks for it nevertheless");
    expectError("hold c1 off", 1, "c1 (active) is not held; --force asks for it nevertheless");
    expectError("hold c4 on", 1,
        "c4 (incoming) is not active, and only an active call can be held; --force asks for it nevertheless");
    expectError("hangup c3", 1, "c3 (disconnected) has ended already");
    EXPECT_EQ(notes(), "([],)");
}

TEST_F(Callctl, SaysWhenACommandMakesSenseForNoCall)
{
    addCall("c1", held);
    expectError("answer", 1, "c1 (held) does not ring, and only a call that rings can be answered");
    addCall("c2", held);
    expectError("answer", 1, "none of the calls can be answered: c1 (held), c2 (held)");
}

TEST_F(Callctl, ACallThatCannotBeHeldIsNotEndedUnlessThatIsWanted)
{
    addCall("c1", ", 'Status': <1>");
    expectError(
        "hold on", 1, "c1 (active) cannot be held, and would be ended instead; --force asks for it nevertheless");
    EXPECT_EQ(notes(), "([],)");
    expectDone("hold on --force");
    EXPECT_EQ(notes(), "(['c1 hold true'],)");
}

TEST_F(Callctl, HoldTakesOnOrOff)
{
    expectError("hold maybe", 2, "'on' or 'off' is needed, not 'maybe'");
    expectError("mute loud", 2, "'on', 'off' or 'toggle' is needed, not 'loud'");
}

TEST_F(Callctl, TonesAreChecked)
{
    addCall("c1", active);
    for (const char *tones : {"12x", "+49", "1,2", "E", "\u0661"})
        expectError((std::string("dtmf ") + tones).c_str(), 2,
            std::string("'") + tones + "' is not made of tones, which are 0-9 * # and A-D");
    EXPECT_EQ(notes(), "([],)");
}

TEST_F(Callctl, SwapTakesBackTheHeldCallOnceTheActiveOneIsHeld)
{
    addCall("c1", active);
    addCall("c2", held);
    Program swap;
    ASSERT_TRUE(swap.start(QStringLiteral(CALLCTL), {QStringLiteral("swap")}));
    std::string all;
    ASSERT_TRUE(waitFor([&] { return (all += notes()).find("hold") != std::string::npos; }));
    EXPECT_THAT(all, HasSubstr("(['c1 hold true'],)"));
    changeCall("c1", "'Status': <2>");
    EXPECT_EQ(swap.waitForExit(), 0) << text(swap.errorOutput());
    EXPECT_EQ(notes(), "(['c2 hold false'],)");
}

TEST_F(Callctl, SwapTellsWhenTheActiveCallIsNotHeld)
{
    addCall("c1", active);
    addCall("c2", ", 'Status': <2>, 'Uri': <'sip:c1@example.org'>");
    expectError(
        "swap", 1, "c1 (active) was not held, so the other call is not taken back: 'held c1' did not come within 5 s");
    EXPECT_EQ(notes(), "(['c1 hold true'],)");
}

TEST_F(Callctl, SwapEndsNoCallThatCannotBeHeld)
{
    addCall("c1", ", 'Status': <1>");
    addCall("c2", held);
    EXPECT_EQ(callctl("swap").exitCode, 1);
    EXPECT_EQ(notes(), "([],)");
}

// --- Waiting

TEST_F(Callctl, WaitsForACallAndNamesIt)
{
    Program wait;
    ASSERT_TRUE(wait.start(
        QStringLiteral(CALLCTL), {QStringLiteral("wait"), QStringLiteral("active"), QStringLiteral("anna")}));
    addCall("c1", active);
    addCall("c2", ", 'Status': <5>, 'LineId': <'Anna'>");
    changeCall("c2", "'Status': <1>");
    EXPECT_EQ(wait.waitForExit(), 0);
    EXPECT_EQ(text(wait.lines().join(QLatin1Char('|'))), "c2");
}

TEST_F(Callctl, WhatIsSoAlreadyIsNotWaitedFor)
{
    EXPECT_THAT(callctl("wait gone").output(), IsEmpty());
    EXPECT_EQ(callctl("wait host").exitCode, 0);
    addCall("c1", ", 'Status': <6>");
    for (const char *condition : {"call", "ringing", "waiting", "call c1"})
        EXPECT_THAT(callctl((std::string("wait ") + condition).c_str()).output(), ElementsAre("c1")) << condition;
}

TEST_F(Callctl, WaitsUntilACallHasGone)
{
    addCall("c1", active);
    addCall("c2", ", 'Status': <1>, 'Uri': <'sip:c1@example.org'>");
    Program wait;
    ASSERT_TRUE(
        wait.start(QStringLiteral(CALLCTL), {QStringLiteral("wait"), QStringLiteral("gone"), QStringLiteral("c1")}));
    const Execution early = callctl("wait gone c1 --timeout 0.1");
    EXPECT_EQ(early.exitCode, 1);
    EXPECT_EQ(early.error, "callctl: 'gone c1' did not come within 0.1 s\n");
    EXPECT_TRUE(wait.isRunning());
    host.plugin(QStringLiteral("RemoveCall"), QStringLiteral("'c1'"));
    EXPECT_EQ(wait.waitForExit(), 0);
}

TEST_F(Callctl, DialsWithAProvider) { expectDone("dial fake/1 123"); }

TEST_F(Callctl, ARefusedDialGivesTheProvidersReason)
{
    expectError("dial fake/1 home", 1, "provider 'fake/1' refuses to dial 'home': cannot dial 'home'");
    expectError("dial x 1", 1, "No provider has the id 'x'; there are: fake/1");
}

TEST_F(Callctl, WordsBehindTwoDashesAreNoOptions)
{
    expectError("dial -- fake/1 -1", 1, "provider 'fake/1' refuses to dial '-1': cannot dial '-1'");
}

TEST_F(Callctl, SetsMuteAndDevices)
{
    expectDone("mute on");
    expectDone("input headset");
    expectDone("output speaker");
    EXPECT_EQ(callctl("devices").output().back(), "Audio: input headset, output speaker, microphone muted");
    expectDone("mute off");
    EXPECT_EQ(callctl("devices").output().back(), "Audio: input headset, output speaker, microphone open");
    expectDone("mute toggle");
    EXPECT_EQ(callctl("devices").output().back(), "Audio: input headset, output speaker, microphone muted");
    expectDone("mute toggle");
    EXPECT_EQ(callctl("devices").output().back(), "Audio: input headset, output speaker, microphone open");
}

TEST_F(Callctl, AnUnknownDeviceListsThoseThatFit)
{
    expectError("input speaker", 1, "No input device has the id 'speaker'; there are: microphone, headset");
    expectError("output x", 1, "No output device has the id 'x'; there are: earpiece, speaker, headset");
}

// --- Command line

static QString documentation()
{
    QFile file(QStringLiteral(CALLCTL_DOCUMENTATION));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return QString::fromUtf8(file.readAll());
}

TEST(CallctlCommandLine, HelpFitsOnOneScreenAndTheDocumentationHasIt)
{
    const Execution run = callctl("--help");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_LE(run.lines.size(), 24);
    for (const QString &line : run.lines)
        EXPECT_LE(line.size(), 80) << text(line);
    const QString all = QStringLiteral("    ") + run.lines.join(QStringLiteral("\n    "));
    EXPECT_TRUE(documentation().contains(QString(all).replace(QLatin1String("    \n"), QLatin1String("\n"))));
    for (const char *word : {"calls [--json]", "hangup [CALL] [--all]", "wait CONDITION", "Exit codes: 0 done, 1"})
        EXPECT_THAT(text(all), HasSubstr(word));
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
    const std::string all = "there are: calls, providers, devices, answer, hangup, hold, swap, dtmf, dial, mute, "
                            "input, output, wait, watch";
    expectUsageError("listen", "there is no command 'listen'; " + all);
    expectUsageError("", "a command is needed; " + all);
}

TEST(CallctlCommandLine, AnUnknownOptionIsNamed)
{
    expectUsageError(
        "calls --xml", "there is no option '--xml'; there are --json, --force, --all, --timeout, --help and --version");
}

TEST(CallctlCommandLine, WrongArgumentsAreAnsweredWithTheRightUse)
{
    const std::string wrong = "this is not how it is used; right is: callctl ";
    expectUsageError("calls x", wrong + "calls [--json]");
    expectUsageError("answer a b", wrong + "answer [CALL]");
    expectUsageError("hold", wrong + "hold [CALL] on|off [--force]");
    expectUsageError("dtmf", wrong + "dtmf [CALL] TONES");
    expectUsageError("dial x", wrong + "dial PROVIDER NUMBER");
    expectUsageError("mute", wrong + "mute on|off|toggle");
    expectUsageError("input", wrong + "input INPUT");
    expectUsageError("output a b", wrong + "output OUTPUT");
}

TEST(CallctlCommandLine, OptionsGoWithTheirCommandsOnly)
{
    expectUsageError("answer --json", "--json does not go with 'answer'; right is: callctl answer [CALL]");
    expectUsageError("hangup --force", "--force does not go with 'hangup'; right is: callctl hangup [CALL] [--all]");
    expectUsageError("calls --all", "--all does not go with 'calls'; right is: callctl calls [--json]");
}

TEST(CallctlCommandLine, WaitTakesAConditionAndSeconds)
{
    const std::string all = "there are: host, call, ringing, incoming, waiting, dialing, alerting, active, held,"
                            " disconnected, gone";
    expectUsageError("wait rings", "there is no condition 'rings'; " + all);
    expectUsageError("wait host c1", "the condition 'host' is about no call");
    for (const char *wrong : {"x", "-1", "nan", "1e9"})
        expectUsageError((std::string("wait call --timeout ") + wrong).c_str(),
            std::string("--timeout takes a number of seconds from 0 to 1000000, not '") + wrong + "'");
    expectUsageError("wait call --timeout", "--timeout takes a number of seconds from 0 to 1000000, not ''");
}

// --- Completion

// What bash offers for a line, with the shipped file, as when Tab is pressed at its end.
static std::vector<std::string> completions(const QString &line)
{
    const QString script = QStringLiteral("PATH=\"$(dirname \"$1\"):$PATH\"; source \"$2\"; COMP_LINE=$3;"
                                          " COMP_POINT=${#3}; _callctl; printf '%s\\n' \"${COMPREPLY[@]}\"");
    const Execution run(QStringLiteral("bash"),
        {QStringLiteral("-c"), script, QStringLiteral("bash"), QStringLiteral(CALLCTL),
            QStringLiteral(CALLCTL_COMPLETION), line},
        {});
    EXPECT_EQ(run.error, "");
    return run.output();
}

static std::vector<std::string> completions(const char *line) { return completions(QString::fromUtf8(line)); }

TEST_F(Callctl, BashCompletesCommandsWordsAndOptions)
{
    EXPECT_THAT(completions("callctl d"), ElementsAre("devices", "dtmf", "dial"));
    EXPECT_THAT(completions("callctl --v"), ElementsAre("--version"));
    EXPECT_THAT(completions("callctl mute "), ElementsAre("on", "off", "toggle"));
    EXPECT_THAT(completions("callctl hold --"), ElementsAre("--force"));
    EXPECT_THAT(completions("callctl wait re"), ElementsAre(""));
    EXPECT_THAT(completions("callctl wait ri"), ElementsAre("ringing"));
    EXPECT_THAT(completions("callctl frobnicate "), ElementsAre(""));
}

TEST_F(Callctl, BashCompletesWhatTheHostHas)
{
    addCall("c1", active);
    addCall("c2", active);
    host.plugin(QStringLiteral("AddProvider"), QStringLiteral("'ringlet/:1.7@/calls'"));
    EXPECT_THAT(completions("callctl answer "), ElementsAre("c1", "c2"));
    EXPECT_THAT(completions("callctl hold c"), ElementsAre("c1", "c2"));
    EXPECT_THAT(completions("callctl hold c1 o"), ElementsAre("on", "off"));
    EXPECT_THAT(completions("callctl hold o"), ElementsAre("on", "off"));
    EXPECT_THAT(completions("callctl wait gone c2"), ElementsAre("c2"));
    EXPECT_THAT(completions("callctl input "), ElementsAre("microphone", "headset"));
    EXPECT_THAT(completions("callctl output s"), ElementsAre("speaker"));
    EXPECT_THAT(completions("callctl dial "), ElementsAre("fake/1", "ringlet/:1.7@/calls"));
    // Bash has split the word at the colon, and keeps what stands before.
    EXPECT_THAT(completions("callctl dial ringlet/:1"), ElementsAre("1.7@/calls"));
}

TEST_F(Callctl, WhatAShellWouldActOnIsNotOffered)
{
    host.plugin(QStringLiteral("AddProvider"), QStringLiteral("'x;reboot'"));
    host.plugin(QStringLiteral("AddProvider"), QStringLiteral("'x$(id)'"));
    EXPECT_THAT(completions("callctl dial "), ElementsAre("fake/1"));
}

TEST(CallctlWithoutAHost, CompletionNeitherWaitsNorComplains)
{
    EXPECT_THAT(completions("callctl answer "), ElementsAre(""));
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
    for (const char *command :
        {"mute on", "mute toggle", "input x", "output x", "dial a b", "wait call --timeout 0.1"}) {
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
    EXPECT_THAT(run.error, HasSubstr("; DBUS_SESSION_BUS_ADDRESS is 'unix:path=/nowhere/bus', where no bus answers\n"));
}

TEST(CallctlWithoutAHost, AMissingAddressIsNamed)
{
    const Execution run(QStringLiteral("env"),
        {QStringLiteral("-u"), QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), QStringLiteral("-u"),
            QStringLiteral("DISPLAY"), QStringLiteral("XDG_RUNTIME_DIR=/nowhere"), QStringLiteral(CALLCTL),
            QStringLiteral("calls")},
        {});
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_THAT(run.error, HasSubstr("; DBUS_SESSION_BUS_ADDRESS is not set: run callctl inside the desktop session"));
}

TEST(CallctlWithoutAHost, WaitsForOne)
{
    Program wait;
    ASSERT_TRUE(wait.start(QStringLiteral(CALLCTL), {QStringLiteral("wait"), QStringLiteral("host")}));
    StubHost host(StubHost::Mood::Answers);
    EXPECT_EQ(wait.waitForExit(), 0);
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
