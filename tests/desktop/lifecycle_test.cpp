// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "hostprogram.h"
#include "privatebus.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusConnectionInterface>
#include <csignal>
#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

static std::string text(const QString &string) { return string.toStdString(); }

static QStringList plugin(const char *file) { return {QStringLiteral("--plugin"), QString::fromUtf8(file)}; }

// Starts it with these arguments, which it cannot run with, and gives its exit code and what it said.
struct FailedRun
{
    explicit FailedRun(const QStringList &arguments, const QStringList &environment = {})
    {
        Program program;
        program.start(QStringLiteral(VOICECALLD), arguments, environment);
        exitCode = program.waitForExit();
        said = program.errorOutput().toStdString();
        output = program.lines().join(QLatin1Char('\n')).toStdString();
    }

    int exitCode;
    std::string said;
    std::string output;
};

static bool isOnTheBus()
{
    return QDBusConnection::sessionBus().interface()->isServiceRegistered(HostProgram::service());
}

// The steps of its life that the plug-in has told.
static std::vector<std::string> steps(HostProgram &host, const QString &id)
{
    std::vector<std::string> result;
    const QStringList lines = host.program().errorOutput().split(QLatin1Char('\n')).filter(id + QStringLiteral(": "));
    for (const QString &line : lines) {
        if (line.startsWith(id))
            result.push_back(text(line.mid(id.size() + 2)));
    }
    return result;
}

// --- Command line

TEST(VoicecalldCommandLine, HelpAndVersionAreTexts)
{
    const FailedRun help({QStringLiteral("--help")});
    EXPECT_EQ(help.exitCode, 0);
    for (const char *option : {"--plugin", "--plugin-dir", "--audio", "--trace", "Exit codes"})
        EXPECT_THAT(help.output, HasSubstr(option));
    const FailedRun version({QStringLiteral("--version")});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_EQ(version.output, "voicecalld " PROJECT_VERSION);
}

TEST(VoicecalldCommandLine, AnUnknownOptionIsNamed)
{
    const FailedRun run({QStringLiteral("--loud")});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.said, "voicecalld: Unknown option 'loud'; 'voicecalld --help' shows what there is\n");
}

TEST(VoicecalldCommandLine, AWordThatIsNoOptionIsNamed)
{
    const FailedRun run({QStringLiteral("plugin.so")});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_THAT(run.said, HasSubstr("'plugin.so' is not an option"));
}

TEST(VoicecalldCommandLine, AnUnknownAudioBackendIsAnErrorThatNamesTheKnownOnes)
{
    const FailedRun run({QStringLiteral("--audio"), QStringLiteral("brass")});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.said, "voicecalld: there is no audio backend 'brass'; known are: fake\n");
}

// --- Plug-ins

TEST(VoicecalldPlugins, ThePluginGoesThroughItsLifeInOrderAndTheEndIsClean)
{
    HostProgram host;
    ASSERT_TRUE(host.start());
    EXPECT_THAT(text(host.program().lines().join(QString())),
        HasSubstr("voicecalld: ready as org.tarnwickle.voicecall with fakeplugin"));
    EXPECT_EQ(host.end(), 0);
    EXPECT_THAT(steps(host, QStringLiteral("fakeplugin")),
        ElementsAre("loaded", "initialize", "configure", "start", "finalize", "destroyed"));
}

TEST(VoicecalldPlugins, TheNameIsClaimedAfterThePluginsCallsArePublished)
{
    // The call comes in start(), before anything is on the bus.
    HostProgram host;
    ASSERT_TRUE(host.start(plugin(FAKE_PLUGIN), {QStringLiteral("FAKE_PLUGIN_KEEPS_PROVIDER=1")}));
    EXPECT_THAT(text(host.askStandard(HostProgram::root(), QStringLiteral("ObjectManager.GetManagedObjects"))),
        HasSubstr("'LineId': <'Early'>"));
    EXPECT_EQ(text(host.property(QStringLiteral("Manager1"), QStringLiteral("Providers"))),
        "<[('fakeplugin/first', 'fake')]>");
    EXPECT_EQ(host.end(), 0);
}

TEST(VoicecalldPlugins, TwoPluginsRunSideBySide)
{
    HostProgram host;
    ASSERT_TRUE(host.start(plugin(FAKE_PLUGIN) + plugin(OTHER_FAKE_PLUGIN)));
    EXPECT_THAT(text(host.program().lines().join(QString())), HasSubstr("with fakeplugin, otherfakeplugin"));
    EXPECT_EQ(host.end(), 0);
    EXPECT_THAT(steps(host, QStringLiteral("otherfakeplugin")),
        ElementsAre("loaded", "initialize", "configure", "start", "finalize", "destroyed"));
}

struct BrokenPlugin
{
    const char *name;
    const char *file;
    const char *reason;
    std::vector<std::string> steps;
};

void PrintTo(const BrokenPlugin &broken, std::ostream *stream) { *stream << broken.name; }

class PluginThatFails : public testing::TestWithParam<BrokenPlugin>
{
};

TEST_P(PluginThatFails, IsReportedByFileAndReasonAndTheRestGoOn)
{
    HostProgram host;
    ASSERT_TRUE(host.start(plugin(GetParam().file) + plugin(FAKE_PLUGIN)));
    EXPECT_THAT(text(host.program().errorOutput()),
        HasSubstr("voicecalld: " + std::string(GetParam().file) + " is left out: " + GetParam().reason));
    EXPECT_THAT(steps(host, QLatin1String(GetParam().name)), GetParam().steps);
    EXPECT_EQ(text(host.property(QStringLiteral("Manager1"), QStringLiteral("Providers"))), "<@a(ss) []>");
    EXPECT_EQ(host.end(), 0);
}

TEST_P(PluginThatFails, IsAnErrorWhenItIsTheOnlyOne)
{
    const FailedRun run(plugin(GetParam().file), {QStringLiteral("FAKE_PLUGIN_KEEPS_PROVIDER=1")});
    EXPECT_EQ(run.exitCode, 1) << run.said;
    EXPECT_THAT(run.said, HasSubstr(GetParam().reason));
    EXPECT_THAT(run.said, HasSubstr("voicecalld: no plug-in is left to run with\n"));
    EXPECT_FALSE(isOnTheBus());
}

INSTANTIATE_TEST_SUITE_P(Broken, PluginThatFails,
    testing::Values(BrokenPlugin{"failsininitialize", FAILS_IN_INITIALIZE, "it could not be initialised",
                        {"loaded", "initialize", "destroyed"}},
        BrokenPlugin{"failsinconfigure", FAILS_IN_CONFIGURE, "it could not be configured",
            {"loaded", "initialize", "configure", "finalize", "destroyed"}},
        BrokenPlugin{"failsinstart", FAILS_IN_START, "it could not be started",
            {"loaded", "initialize", "configure", "start", "finalize", "destroyed"}},
        BrokenPlugin{"foreignplugin", FOREIGN_PLUGIN,
            "it is no voice-call plug-in: its root object, a ForeignPlugin, is no"
            " org.tarnwickle.voicecall.ManagerPlugin/1.0",
            {}},
        BrokenPlugin{"noplugin", NO_PLUGIN, "Failed to extract plugin meta data from '" NO_PLUGIN "'", {}},
        BrokenPlugin{"missing", "/nowhere/libnothing.so", "there is no such file", {}}),
    [](const auto &info) { return std::string(info.param.name); });

TEST(VoicecalldPlugins, ProvidersOfAPluginThatFailsToStartAreTakenBack)
{
    HostProgram host;
    ASSERT_TRUE(
        host.start(plugin(FAILS_IN_START) + plugin(FAKE_PLUGIN), {QStringLiteral("FAKE_PLUGIN_KEEPS_PROVIDER=1")}));
    EXPECT_EQ(text(host.property(QStringLiteral("Manager1"), QStringLiteral("Providers"))),
        "<[('fakeplugin/first', 'fake')]>");
    EXPECT_EQ(host.end(), 0);
}

TEST(VoicecalldPlugins, APluginIsLoadedOnceHoweverOftenItIsNamed)
{
    HostProgram host;
    ASSERT_TRUE(host.start(plugin(FAKE_PLUGIN) + plugin(FAKE_PLUGIN)));
    EXPECT_TRUE(host.program().waitForError(QStringLiteral("is left out: it is loaded already")));
    EXPECT_EQ(host.end(), 0);
    EXPECT_THAT(steps(host, QStringLiteral("fakeplugin")),
        ElementsAre("loaded", "initialize", "configure", "start", "finalize", "destroyed"));
}

// Changes the working directory of this process and its children while it lives.
class WorkingDirectory
{
public:
    explicit WorkingDirectory(const QString &path) { QDir::setCurrent(path); }
    ~WorkingDirectory() { QDir::setCurrent(m_before); }

private:
    QString m_before = QDir::currentPath();
};

TEST(VoicecalldPlugins, RelativePathsAreFoundFromTheWorkingDirectory)
{
    const QFileInfo file(QStringLiteral(FAKE_PLUGIN));
    const WorkingDirectory there(file.path());
    HostProgram bare;
    ASSERT_TRUE(bare.start({QStringLiteral("--plugin"), file.fileName()})) << text(bare.program().errorOutput());
    EXPECT_EQ(bare.end(), 0);

    QDir::setCurrent(file.dir().path() + QStringLiteral("/.."));
    HostProgram deep;
    ASSERT_TRUE(deep.start({QStringLiteral("--plugin"), file.dir().dirName() + QLatin1Char('/') + file.fileName()}));
    EXPECT_EQ(deep.end(), 0);
}

TEST(VoicecalldPlugins, AllPluginFilesOfADirectoryAreLoadedAndOtherFilesLeft)
{
    const QTemporaryDir directory;
    ASSERT_TRUE(QFile::link(QStringLiteral(FAKE_PLUGIN), directory.filePath(QStringLiteral("b.so"))));
    ASSERT_TRUE(QFile::link(QStringLiteral(NO_PLUGIN), directory.filePath(QStringLiteral("a.so"))));
    ASSERT_TRUE(QFile::link(QStringLiteral("/nowhere/x"), directory.filePath(QStringLiteral("dangling.so"))));
    QFile readme(directory.filePath(QStringLiteral("README")));
    ASSERT_TRUE(readme.open(QIODevice::WriteOnly));

    HostProgram host;
    ASSERT_TRUE(host.start({QStringLiteral("--plugin-dir"), directory.path()}));
    const std::string said = text(host.program().errorOutput());
    EXPECT_THAT(said, HasSubstr("/a.so is left out: Failed to extract plugin meta data"));
    EXPECT_THAT(said, HasSubstr("/dangling.so is left out: there is no such file"));
    EXPECT_THAT(said, Not(HasSubstr("README")));
    EXPECT_EQ(host.end(), 0);
}

TEST(VoicecalldPlugins, ADirectoryWithoutPluginsIsNamed)
{
    const FailedRun run({QStringLiteral("--plugin-dir"), QStringLiteral("/nowhere")});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.said, HasSubstr("voicecalld: no plug-in files in /nowhere\n"));
}

// --- The bus

TEST(VoicecalldOnTheBus, WithoutABusItSaysSoInOneLine)
{
    const FailedRun run(plugin(FAKE_PLUGIN), {QStringLiteral("DBUS_SESSION_BUS_ADDRESS=unix:path=/nowhere/bus")});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.said.find("voicecalld: no session bus: "), 0u) << run.said;
    EXPECT_EQ(run.said.find('\n'), run.said.size() - 1) << run.said;
}

TEST(VoicecalldOnTheBus, AnOwnedNameIsAnErrorAndThePluginGoesCleanly)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    ASSERT_TRUE(bus.registerService(HostProgram::service()));
    const FailedRun run(plugin(FAKE_PLUGIN), {QStringLiteral("FAKE_PLUGIN_KEEPS_PROVIDER=1")});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.said, HasSubstr("voicecalld: another program owns org.tarnwickle.voicecall already\n"));
    EXPECT_THAT(run.said, HasSubstr("fakeplugin: finalize\nfakeplugin: destroyed\n"));
    EXPECT_TRUE(bus.unregisterService(HostProgram::service()));
}

TEST(VoicecalldOnTheBus, ALostBusEndsItWithAnError)
{
    PrivateBus bus;
    Program program;
    ASSERT_TRUE(program.start(QStringLiteral(VOICECALLD), plugin(FAKE_PLUGIN),
        {QStringLiteral("DBUS_SESSION_BUS_ADDRESS=") + QString::fromUtf8(bus.address()),
            QStringLiteral("FAKE_PLUGIN_KEEPS_PROVIDER=1")}));
    ASSERT_TRUE(program.waitForOutput(QStringLiteral("ready")));
    bus.daemon().signal(SIGKILL);
    EXPECT_EQ(program.waitForExit(), 1);
    EXPECT_THAT(text(program.errorOutput()), HasSubstr("voicecalld: the session bus is gone\n"));
    EXPECT_THAT(text(program.errorOutput()), HasSubstr("fakeplugin: finalize\nfakeplugin: destroyed\n"));
}

class EndingSignal : public testing::TestWithParam<int>
{
};

TEST_P(EndingSignal, EndsItCleanlyWithCallsUp)
{
    HostProgram host;
    ASSERT_TRUE(host.start());
    host.plugin(QStringLiteral("AddProvider"), QStringLiteral("'fake/1'"));
    host.addCall(QStringLiteral("fake/1"), QStringLiteral("{'Status': <1>}"));
    host.program().signal(GetParam());
    EXPECT_EQ(host.program().waitForExit(), 0) << text(host.program().errorOutput());
    EXPECT_THAT(steps(host, QStringLiteral("fakeplugin")),
        ElementsAre("loaded", "initialize", "configure", "start", "finalize", "destroyed"));
    EXPECT_FALSE(isOnTheBus());
}

INSTANTIATE_TEST_SUITE_P(Signals, EndingSignal, testing::Values(SIGINT, SIGTERM),
    [](const auto &info) { return info.param == SIGINT ? std::string("SIGINT") : std::string("SIGTERM"); });

// --- Log

static const char muteTrace[] = "voicecall: audio: input 'microphone', output 'earpiece', microphone muted";

static void muteAndEnd(HostProgram &host)
{
    EXPECT_EQ(
        text(host.ask(HostProgram::root(), QStringLiteral("Audio1.SetMicrophoneMuted"), QStringLiteral("true"))), "()");
    EXPECT_EQ(host.end(), 0);
}

TEST(VoicecalldLog, ShowsWarningsOnlyByDefault)
{
    HostProgram host;
    ASSERT_TRUE(host.start());
    host.plugin(QStringLiteral("SelectInput"), QStringLiteral("'nowhere'"));
    muteAndEnd(host);
    EXPECT_THAT(text(host.program().errorOutput()), HasSubstr("voicecall: A plug-in asked"));
    EXPECT_THAT(text(host.program().errorOutput()), Not(HasSubstr(muteTrace)));
}

TEST(VoicecalldLog, TraceShowsEverything)
{
    HostProgram host;
    ASSERT_TRUE(host.start(plugin(FAKE_PLUGIN) << QStringLiteral("--trace")));
    muteAndEnd(host);
    EXPECT_THAT(text(host.program().errorOutput()), HasSubstr(muteTrace));
}

TEST(VoicecalldLog, FollowsQtsLoggingRules)
{
    HostProgram shown;
    ASSERT_TRUE(shown.start(plugin(FAKE_PLUGIN), {QStringLiteral("QT_LOGGING_RULES=voicecall.info=true")}));
    muteAndEnd(shown);
    EXPECT_THAT(text(shown.program().errorOutput()), HasSubstr(muteTrace));

    HostProgram hidden;
    ASSERT_TRUE(hidden.start(
        plugin(FAKE_PLUGIN) << QStringLiteral("--trace"), {QStringLiteral("QT_LOGGING_RULES=voicecall.info=false")}));
    muteAndEnd(hidden);
    EXPECT_THAT(text(hidden.program().errorOutput()), Not(HasSubstr(muteTrace)));
}
