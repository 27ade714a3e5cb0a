// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// Scripts that drive the simulator.

#include "kittest.h"
#include "waitfor.h"

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

using testing::HasSubstr;
using testing::IsEmpty;

namespace {

class ScriptTest : public KitTest
{
protected:
    bool run(const QByteArray &script, const QStringList &further = {})
    {
        QFile out(file);
        if (!out.open(QIODevice::WriteOnly) || out.write(script) != script.size())
            return false;
        out.close();
        return program.start(RINGLET_SIM, QStringList{"--script", file} + further);
    }

    std::string place(int line) const { return (file + ':' + QString::number(line) + ": ").toStdString(); }

    std::string errors() { return program.errorOutput().toStdString(); }

    QTemporaryDir directory;
    const QString file = directory.filePath("test.script");
};

TEST_F(ScriptTest, EndsWellWhenEverythingHolds)
{
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(run("# a comment\n\nwait registered\nincoming ann sip:ann@example.org\nwait ann shown\n"
                    "answer ann\nwait ann status 5\ncheck ann status active\nhangup ann\ncheck ann status gone\n"));
    EXPECT_EQ(program.waitForExit(), 0) << errors();
    EXPECT_EQ(errors(), "");
    EXPECT_TRUE(program.lines().contains("ann removed"));
}

TEST_F(ScriptTest, EndsItsCallsWhenItEnds)
{
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(run("wait registered\nincoming ann sip:ann@example.org\nwait ann shown\n"));
    EXPECT_EQ(program.waitForExit(), 0);
    EXPECT_TRUE(host.waitForWire("InterfacesRemoved /ringlet/sim/ann"));
    EXPECT_EQ(host.wire().count("StatusChanged /ringlet/sim/ann 1"), 1);
}

TEST_F(ScriptTest, WaitsForWhatTheHostDoes)
{
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(run("wait registered\nincoming ann sip:ann@example.org\nwait ann command accept\n"
                    "wait ann command tones \"1 2\"\nwait * audio-state * input=mic\nmute ann on\n"
                    "wait ann audio-route muted=yes\ncheck ann muted yes\n"));
    ASSERT_TRUE(waitForLine("ann shown 3 incoming"));
    callInterface("ann", "Accept");
    host.call("/ringlet/sim/ann", "zelkovar.Call.DTMF1", "SendDTMF", {"1 2"});
    updateAudioState("ann", false, "mic", "ear");
    ASSERT_TRUE(host.waitForWire("RequestMute /ringlet/sim/ann true"));
    updateAudioRoute("ann", true, "mic", "ear");
    EXPECT_EQ(program.waitForExit(), 0) << errors();
}

TEST_F(ScriptTest, FindsAnEventThatCameBeforeItWasWaitedFor)
{
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(run("wait registered\nincoming ann sip:ann@example.org\nanswer ann\nhold ann on\n"
                    "wait ann status 5\nwait ann status 7\n"));
    EXPECT_EQ(program.waitForExit(), 0) << errors();
}

TEST_F(ScriptTest, AWaitPassesOverWhatCameBeforeItsEvent)
{
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(run("timeout 0.2\nwait registered\nincoming ann sip:ann@example.org\nanswer ann\nhold ann on\n"
                    "wait ann status 7\nwait ann status 5\n"));
    EXPECT_EQ(program.waitForExit(), 1);
    EXPECT_THAT(errors(), HasSubstr(place(7)));
}

TEST_F(ScriptTest, WhatStandsBetweenTwoWaitsIsDoneInOneGo)
{
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(run("wait registered\nincoming ann sip:ann@example.org\nanswer ann\nwait ann status 5 active again\n"));
    EXPECT_EQ(program.waitForExit(), 0) << errors();
}

TEST_F(ScriptTest, UntilWaitsForWhatCheckChecks)
{
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(run("until host registered\nmany 3 incoming ann sip:ann%@example.org\nuntil ann* shown yes\n"
                    "until ann2 status active\n"));
    ASSERT_TRUE(waitForLine("ann2 shown 3 incoming"));
    callInterface("ann2", "Accept");
    EXPECT_EQ(program.waitForExit(), 0) << errors();
}

TEST_F(ScriptTest, UntilTellsWhatIsInsteadAndPassesOverNoEvent)
{
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(run("until host registered\nincoming ann sip:ann@example.org\nuntil ann shown yes\n"
                    "wait registered\ntimeout 0.1\nuntil ann status active\n"));
    EXPECT_EQ(program.waitForExit(), 1);
    EXPECT_EQ(errors(), "ringlet-sim: " + place(6) + "ann status is \"incoming\", not \"active\" within 0.1 s\n");
}

TEST_F(ScriptTest, DieEndsTheProgramAtOnce)
{
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(run("wait registered\nincoming ann sip:ann@example.org\nwait ann shown\ndie\n"));
    EXPECT_EQ(program.waitForExit(), -1);
    ASSERT_TRUE(host.waitForWire("InterfacesAdded /ringlet/sim/ann"));
    EXPECT_THAT(host.wire().filter("InterfacesRemoved"), IsEmpty());
}

TEST_F(ScriptTest, AskPrintsWhatIsToBeDone)
{
    ASSERT_TRUE(run("ask answer sip:ann@example.org\nask hold sip:ann@example.org on\nask restart host\n"
                    "wait please answer\nwait please restart host\n"));
    EXPECT_EQ(program.waitForExit(), 0) << errors();
    EXPECT_TRUE(program.lines().contains("please hold sip:ann@example.org on"));
}

TEST_F(ScriptTest, AFailedCheckNamesFileAndLine)
{
    ASSERT_TRUE(run("wait waiting for host\n\n# comment\ncheck host registered\n"));
    EXPECT_EQ(program.waitForExit(), 1);
    EXPECT_EQ(errors(), "ringlet-sim: " + place(4) + "host is \"absent\", not \"registered\"\n");
}

TEST_F(ScriptTest, AnEventThatDoesNotComeNamesFileAndLine)
{
    ASSERT_TRUE(run("timeout 0.1\nwait registered\n"));
    EXPECT_EQ(program.waitForExit(), 1);
    EXPECT_EQ(errors(), "ringlet-sim: " + place(2) + "no \"registered\" within 0.1 s\n");
}

TEST_F(ScriptTest, ACommandThatFailsNamesFileAndLine)
{
    ASSERT_TRUE(run("wait connected\nanswer ann\n"));
    EXPECT_EQ(program.waitForExit(), 1);
    EXPECT_EQ(errors(), "ringlet-sim: " + place(2) + "there is no call \"ann\"; calls: none\n");
}

TEST_F(ScriptTest, PauseLetsTimePass)
{
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(run("wait registered\nincoming ann sip:ann@example.org\npause 0.1\nhangup ann\n"));
    EXPECT_EQ(program.waitForExit(), 0) << errors();
    EXPECT_TRUE(program.lines().contains("ann shown 3 incoming"));
}

TEST_F(ScriptTest, QuitEndsItThere)
{
    ASSERT_TRUE(run("quit\nanswer nobody\n"));
    EXPECT_EQ(program.waitForExit(), 0) << errors();
    EXPECT_EQ(errors(), "");
}

TEST_F(ScriptTest, CallsOfTheCommandLineAreThereFromTheStart)
{
    ASSERT_TRUE(run("check call1 status incoming\n", {"--incoming", "sip:ann@example.org"}));
    EXPECT_EQ(program.waitForExit(), 0) << errors();
}

TEST_F(ScriptTest, StayGoesOnWithTypedCommands)
{
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(run("wait registered\nincoming ann sip:ann@example.org\n", {"--stay"}));
    ASSERT_TRUE(waitForLine("ann shown 3 incoming"));
    program.type("answer ann");
    EXPECT_TRUE(waitForLine("ann status 5 active"));
    program.type("quit");
    EXPECT_EQ(program.waitForExit(), 0);
}

TEST_F(ScriptTest, StayDoesNotOutliveAFailure)
{
    ASSERT_TRUE(run("answer ann\n", {"--stay"}));
    EXPECT_EQ(program.waitForExit(), 1);
}

TEST_F(ScriptTest, IsLookedThroughBeforeAnythingIsDone)
{
    const struct
    {
        const char *statement;
        const char *complaint;
    } faults[] = {
        {"explode", "unknown command \"explode\""},
        {"answer", "usage: answer CALL"},
        {"wait", "usage: wait WORD..."},
        {"pause", "usage: pause SECONDS"},
        {"pause soon", "\"soon\" is no number of seconds from 0 to 86400"},
        {"pause -1", "\"-1\" is no number of seconds"},
        {"timeout", "usage: timeout SECONDS"},
        {"until", "usage: check CALL FACT VALUE"},
        {"ask dance", "nobody at a host can \"dance\"; there are answer ADDRESS, hangup ADDRESS"},
        {"ask answer", "nobody at a host can \"answer\"; there are answer ADDRESS"},
        {"many few incoming ann sip:x", "\"few\" is no number from 1 to 10000"},
        {"application host", "an application cannot be named \"host\""},
        {"raw one dance", "a raw application cannot \"dance\"; there are register, snapshot, commands, object"},
        {"wait \"open", "a quote is not closed"},
    };
    for (const auto &fault : faults) {
        ASSERT_TRUE(run(QByteArray("wait connected\n") + fault.statement + '\n'));
        EXPECT_EQ(program.waitForExit(), 2) << fault.statement;
        EXPECT_THAT(errors(), HasSubstr(place(2) + fault.complaint));
        EXPECT_THAT(program.lines(), IsEmpty());
    }
}

TEST_F(ScriptTest, AFileThatIsNotThereIsNamed)
{
    ASSERT_TRUE(program.start(RINGLET_SIM, {"--script", "/nonexistent/script"}));
    EXPECT_EQ(program.waitForExit(), 2);
    EXPECT_THAT(errors(), HasSubstr("cannot read the script /nonexistent/script: "));
}

// The blocks of the page that are marked as scripts.
QList<QByteArray> documentedScripts()
{
    QFile page(QStringLiteral(RINGLET_DOCS "/simulator.md"));
    page.open(QIODevice::ReadOnly);
    const QByteArray text = page.readAll();
    const QByteArray fence = "```script\n";
    QList<QByteArray> scripts;
    for (int from = text.indexOf(fence); from >= 0; from = text.indexOf(fence, from + 1))
        scripts.append(text.mid(from + fence.size(), text.indexOf("\n```\n", from) - from - fence.size() + 1));
    return scripts;
}

TEST_F(ScriptTest, TheExamplesOfTheDocumentationThatNeedNobodyAtTheHostRun)
{
    ASSERT_TRUE(host.takeName());
    ASSERT_GE(documentedScripts().size(), 3);
    for (const QByteArray &script : documentedScripts().mid(1)) {
        ASSERT_TRUE(run(script));
        EXPECT_EQ(program.waitForExit(), 0) << errors();
    }
}

TEST_F(ScriptTest, TheExampleOfTheDocumentationRuns)
{
    host.keepQuiet();
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(run(documentedScripts().value(0)));
    ASSERT_TRUE(host.waitForWire("InterfacesAdded /ringlet/sim/ann"));
    updateAudioState("ann", false, "mic", "ear");
    host.broadcast("/ringlet/sim/ann", host.calls().value(QDBusObjectPath("/ringlet/sim/ann")));
    callInterface("ann", "Accept");
    ASSERT_TRUE(host.waitForWire("RequestMute /ringlet/sim/ann true")) << errors();
    updateAudioRoute("ann", true, "mic", "ear");
    EXPECT_EQ(program.waitForExit(), 0) << errors();
}

} // namespace
