// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "hostprogram.h"
#include "privatebus.h"
#include "waitfor.h"

#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusConnectionInterface>
#include <QtDBus/QDBusPendingCall>
#include <csignal>
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

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

TEST(VoicecalldCommandLine, ANumberThatIsNoneIsNamed)
{
    const FailedRun run({QStringLiteral("--most-calls"), QStringLiteral("-1")});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_THAT(run.said, HasSubstr("--most-calls takes a number from 0 up, not '-1'"));
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
    EXPECT_THAT(run.said,
        HasSubstr("voicecalld: another program owns org.tarnwickle.voicecall already, the process "
            + std::to_string(QCoreApplication::applicationPid()) + "\n"));
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

// --- A bus that is not heard

// voicecalld on a bus of its own, which is asked very often whether it is heard.
class HearingCheck : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(program.start(QStringLiteral(VOICECALLD),
            plugin(FAKE_PLUGIN) << QStringLiteral("--hearing-check") << QStringLiteral("50"),
            {QStringLiteral("DBUS_SESSION_BUS_ADDRESS=") + QString::fromUtf8(bus.address())}));
        ASSERT_TRUE(program.waitForOutput(QStringLiteral("ready")));
    }

    QDBusPendingCall tellPlugin(const QString &method, const QVariantList &arguments = {})
    {
        QDBusMessage message = QDBusMessage::createMethodCall(
            HostProgram::service(), QStringLiteral("/fakeplugin"), QStringLiteral("org.example.FakePlugin"), method);
        message.setArguments(arguments);
        return client.asyncCall(message);
    }

    void expectStillThere()
    {
        QDBusPendingCall answer = tellPlugin(QStringLiteral("TakeNotes"));
        answer.waitForFinished();
        EXPECT_FALSE(answer.isError()) << text(answer.error().message());
        program.signal(SIGTERM);
        EXPECT_EQ(program.waitForExit(), 0) << text(program.errorOutput());
    }

    PrivateBus bus;
    QDBusConnection client = bus.connect(QString::fromUtf8(bus.address()));
    Program program;
};

TEST_F(HearingCheck, ADeafConnectionEndsItWithAnError)
{
    tellPlugin(QStringLiteral("Deafen"));
    tellPlugin(QStringLiteral("TakeNotes"));
    EXPECT_EQ(program.waitForExit(), 1) << text(program.errorOutput());
    EXPECT_THAT(text(program.errorOutput()),
        HasSubstr("voicecalld: the bus daemon answers others, but nothing arrives here any more\n"));
}

TEST_F(HearingCheck, ABusyMainThreadEndsNothing)
{
    tellPlugin(QStringLiteral("KeepBusy"), {1000});
    expectStillThere();
}

TEST_F(HearingCheck, ADaemonThatStandsStillEndsNothing)
{
    bus.daemon().signal(SIGSTOP);
    // In this time the host looks many times, and hears nothing.
    QDBusPendingCall answer = tellPlugin(QStringLiteral("TakeNotes"));
    EXPECT_FALSE(QTest::qWaitFor([&] { return answer.isFinished(); }, 1000));
    bus.daemon().signal(SIGCONT);
    expectStillThere();
}

TEST(VoicecalldOnTheBus, ItEndsPromptlyThoughTheDaemonStandsStill)
{
    PrivateBus bus;
    Program program;
    ASSERT_TRUE(program.start(QStringLiteral(VOICECALLD), plugin(FAKE_PLUGIN),
        {QStringLiteral("DBUS_SESSION_BUS_ADDRESS=") + QString::fromUtf8(bus.address())}));
    ASSERT_TRUE(program.waitForOutput(QStringLiteral("ready")));
    bus.daemon().signal(SIGSTOP);
    QElapsedTimer clock;
    clock.start();
    program.signal(SIGTERM);
    EXPECT_EQ(program.waitForExit(), 0);
    // A question to the daemon that is never answered ends after 25 s.
    EXPECT_LT(clock.elapsed(), 15000);
    bus.daemon().signal(SIGCONT);
}

// --- A supervisor

// The socket that a service manager listens on.
class NotifySocket
{
public:
    NotifySocket()
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, path().constData(), sizeof address.sun_path);
        EXPECT_EQ(bind(m_socket, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    }
    ~NotifySocket() { close(m_socket); }
    NotifySocket(const NotifySocket &) = delete;
    NotifySocket &operator=(const NotifySocket &) = delete;

    QByteArray path() const { return m_directory.filePath(QStringLiteral("notify")).toUtf8(); }

    /** Whether this state has been told so many times by now, or is within the time that tests have. */
    bool hears(const QByteArray &state, int times = 1)
    {
        return waitFor([&] {
            char buffer[256];
            for (ssize_t size = 1; (size = recv(m_socket, buffer, sizeof buffer, MSG_DONTWAIT)) >= 0;)
                m_states.append(QByteArray(buffer, int(size)));
            return m_states.count(state) >= times;
        });
    }

    const QList<QByteArray> &states() const { return m_states; }

private:
    QTemporaryDir m_directory;
    int m_socket = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    QList<QByteArray> m_states;
};

TEST(VoicecalldAndItsSupervisor, HearWhenItIsReadyThatItRunsAndWhenItStops)
{
    NotifySocket supervisor;
    HostProgram host;
    ASSERT_TRUE(host.start(plugin(FAKE_PLUGIN),
        {QStringLiteral("NOTIFY_SOCKET=") + QString::fromUtf8(supervisor.path()),
            QStringLiteral("WATCHDOG_USEC=100000")}));
    EXPECT_TRUE(supervisor.hears("READY=1"));
    EXPECT_TRUE(supervisor.hears("WATCHDOG=1", 3));
    EXPECT_FALSE(supervisor.states().contains("STOPPING=1"));
    EXPECT_EQ(host.end(), 0);
    EXPECT_TRUE(supervisor.hears("STOPPING=1"));
}

TEST(VoicecalldAndItsSupervisor, DoNotTalkOfAWatchdogThatIsMeantForAnotherProcess)
{
    NotifySocket supervisor;
    HostProgram host;
    ASSERT_TRUE(host.start(plugin(FAKE_PLUGIN),
        {QStringLiteral("NOTIFY_SOCKET=") + QString::fromUtf8(supervisor.path()), QStringLiteral("WATCHDOG_USEC=1000"),
            QStringLiteral("WATCHDOG_PID=1")}));
    host.plugin(QStringLiteral("KeepBusy"), QStringLiteral("20"));
    EXPECT_EQ(host.end(), 0);
    EXPECT_TRUE(supervisor.hears("STOPPING=1"));
    EXPECT_THAT(supervisor.states(), ElementsAre("READY=1", "STOPPING=1"));
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

TEST(VoicecalldLog, ShowsWhatOthersSaidInOneShortLine)
{
    HostProgram host;
    ASSERT_TRUE(host.start());
    host.plugin(QStringLiteral("SelectInput"),
        QStringLiteral("'a\\nvoicecalld: ready as \\u001b[31m%1'").arg(QString(100000, QLatin1Char('x'))));
    EXPECT_EQ(host.end(), 0);
    const QStringList said = host.program().errorOutput().split(QLatin1Char('\n')).filter(QStringLiteral("asked"));
    ASSERT_EQ(said.size(), 1);
    EXPECT_THAT(text(said.constFirst()), HasSubstr("'a\\u000avoicecalld: ready as \\u001b[31mxxx"));
    EXPECT_LE(said.constFirst().size(), 500);
    EXPECT_TRUE(said.constFirst().endsWith(QChar(0x2026)));
}

TEST(VoicecalldLog, CountsWhatComesAgainAndAgain)
{
    HostProgram host;
    ASSERT_TRUE(host.start());
    for (int i = 0; i < 26; ++i)
        host.plugin(QStringLiteral("SelectInput"), QStringLiteral("'nowhere'"));
    host.plugin(QStringLiteral("SelectInput"), QStringLiteral("'elsewhere'"));
    EXPECT_EQ(host.end(), 0);
    const std::string asked = "voicecall: A plug-in asked for the unknown input device ";
    EXPECT_THAT(text(host.program().errorOutput()),
        HasSubstr(asked + "'nowhere': ignored\nvoicecalld: the line above came 10 more times\n"
            + "voicecalld: the line above came 25 more times\n" + asked + "'elsewhere': ignored\n"));
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
