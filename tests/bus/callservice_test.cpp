// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "service/callservice.h"

#include "logrecorder.h"
#include "printers.h"
#include "scriptedapplication.h"
#include "waitfor.h"

#include <QtCore/QLoggingCategory>
#include <QtDBus/QDBusConnectionInterface>
#include <QtDBus/QDBusMessage>
#include <gmock/gmock.h>
#include <unistd.h>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace {

const QString servicePath = QStringLiteral("/zelkovar/call/service");
const QString busName = QStringLiteral("org.freedesktop.DBus");
const QString busPath = QStringLiteral("/org/freedesktop/DBus");

std::vector<std::string> texts(const DBusCallManagerList &callManagers)
{
    std::vector<std::string> result;
    for (const DBusCallManager &callManager : callManagers)
        result.push_back(callManager.toString().toStdString());
    return result;
}

/** The service on the bus; what it announces is written down, with what it lists at that moment. */
class CallServiceTest : public testing::Test
{
protected:
    struct Event
    {
        std::string callManager;
        pid_t pid;
        std::vector<std::string> listed;
    };

    CallServiceTest()
    {
        QObject::connect(
            &service, &CallService::callManagerAdded, [this](const DBusCallManager &callManager, pid_t pid) {
                added.push_back({callManager.toString().toStdString(), pid, texts(service.ListCallManagers())});
            });
        QObject::connect(&service, &CallService::callManagerRemoved, [this](const DBusCallManager &callManager) {
            removed.push_back({callManager.toString().toStdString(), 0, texts(service.ListCallManagers())});
        });
        QDBusConnection::sessionBus().registerObject(servicePath, &service, QDBusConnection::ExportAdaptors);
    }

    QString list(ScriptedApplication &application)
    {
        return application.call(ScriptedApplication::thisProcess(), servicePath,
            QStringLiteral("zelkovar.Call.ServiceManager1"), QStringLiteral("ListCallManagers"));
    }

    void sendRegistration(ScriptedApplication &application, const QString &path)
    {
        application.send(ScriptedApplication::thisProcess(), servicePath, QStringLiteral("zelkovar.Call.Service1"),
            QStringLiteral("RegisterCallManager"), QStringLiteral("objectpath '%1'").arg(path));
    }

    static std::string text(const ScriptedApplication &application, const char *path)
    {
        return application.name().toStdString() + '@' + path;
    }

    CallService service{nullptr};
    std::vector<Event> added;
    std::vector<Event> removed;
};

} // namespace

TEST_F(CallServiceTest, AnEmptyRegistryIsAnEmptyList)
{
    ScriptedApplication application;
    EXPECT_EQ(list(application), QLatin1String("([],)"));
    EXPECT_THAT(service.ListCallManagers(), IsEmpty());
}

TEST_F(CallServiceTest, RegistrationIsAnnouncedWithTheSendersUniqueNameItsPathAndProcessId)
{
    ScriptedApplication application;
    ASSERT_TRUE(application.registerCallManager("/app/calls"));
    ASSERT_EQ(added.size(), 1U);
    EXPECT_EQ(added[0].callManager, text(application, "/app/calls"));
    EXPECT_EQ(added[0].pid, getpid());
    EXPECT_EQ(list(application), QStringLiteral("([('%1', '/app/calls')],)").arg(application.name()));
}

TEST_F(CallServiceTest, TheUniqueNameIsTakenAlsoFromAnApplicationThatOwnsAWellKnownOne)
{
    ScriptedApplication application;
    ASSERT_EQ(application.call(busName, busPath, busName, "RequestName", "'org.example.Phone', uint32 0"),
        QLatin1String("(1,)"));
    ASSERT_TRUE(application.registerCallManager("/app/calls"));
    ASSERT_EQ(added.size(), 1U);
    EXPECT_EQ(added[0].callManager, text(application, "/app/calls"));
}

TEST_F(CallServiceTest, RegistrationIsListedWhenItIsAnnounced)
{
    ScriptedApplication application;
    ASSERT_TRUE(application.registerCallManager("/app/calls"));
    ASSERT_EQ(added.size(), 1U);
    EXPECT_THAT(added[0].listed, ElementsAre(text(application, "/app/calls")));
}

TEST_F(CallServiceTest, RegistrationIsAnnouncedBeforeItIsAnswered)
{
    ScriptedApplication monitor;
    monitor.becomeMonitor();
    QObject::connect(&service, &CallService::callManagerAdded,
        [] { QDBusConnection::sessionBus().send(QDBusMessage::createSignal("/marker", "test.Marker", "Announced")); });
    ScriptedApplication application;
    ASSERT_TRUE(application.registerCallManager("/app/calls"));

    const QString host = ScriptedApplication::thisProcess();
    const QString reply = QStringLiteral("%1 > %2: reply ()").arg(host, application.name());
    ASSERT_TRUE(waitFor([&] { return monitor.traffic().contains(reply); }));
    const int announced
        = monitor.traffic().indexOf(QStringLiteral("%1 > *: /marker test.Marker.Announced()").arg(host));
    ASSERT_NE(announced, -1);
    EXPECT_LT(announced, monitor.traffic().indexOf(reply));
}

TEST_F(CallServiceTest, TheSamePathTwiceIsOneRegistration)
{
    ScriptedApplication application;
    EXPECT_TRUE(application.registerCallManager("/app/calls"));
    EXPECT_TRUE(application.registerCallManager("/app/calls")) << "a duplicate gets the empty reply too";
    EXPECT_EQ(added.size(), 1U);
    EXPECT_EQ(list(application), QStringLiteral("([('%1', '/app/calls')],)").arg(application.name()));
}

TEST_F(CallServiceTest, TheProcessIdIsAskedForBeforeEveryAnnouncementAndAlsoForADuplicate)
{
    ScriptedApplication monitor;
    monitor.becomeMonitor();
    QObject::connect(&service, &CallService::callManagerAdded,
        [] { QDBusConnection::sessionBus().send(QDBusMessage::createSignal("/marker", "test.Marker", "Announced")); });
    ScriptedApplication application;
    ASSERT_TRUE(application.registerCallManager("/app/calls"));
    ASSERT_TRUE(application.registerCallManager("/app/calls"));

    const QString host = ScriptedApplication::thisProcess();
    const QString reply = QStringLiteral("%1 > %2: reply ()").arg(host, application.name());
    ASSERT_TRUE(waitFor([&] { return monitor.traffic().count(reply) == 2; }));
    const QString query = QStringLiteral("%1 > org.freedesktop.DBus: /org/freedesktop/DBus "
                                         "org.freedesktop.DBus.GetConnectionUnixProcessID('%2')")
                              .arg(host, application.name());
    const QString marker = QStringLiteral("%1 > *: /marker test.Marker.Announced()").arg(host);
    QStringList turns;
    for (const QString &message : monitor.traffic()) {
        if (message == query || message == marker || message == reply)
            turns.append(message);
    }
    EXPECT_EQ(turns, QStringList({query, marker, reply, query, reply}));
}

TEST_F(CallServiceTest, TwoPathsOfOneApplicationAreTwoRegistrations)
{
    ScriptedApplication application;
    ASSERT_TRUE(application.registerCallManager("/app/a"));
    ASSERT_TRUE(application.registerCallManager("/app/b"));
    EXPECT_EQ(added.size(), 2U);
    EXPECT_THAT(texts(service.ListCallManagers()),
        UnorderedElementsAre(text(application, "/app/a"), text(application, "/app/b")));
}

TEST_F(CallServiceTest, TheSamePathOfTwoApplicationsIsTwoRegistrations)
{
    ScriptedApplication first;
    ScriptedApplication second;
    ASSERT_TRUE(first.registerCallManager("/app/calls"));
    ASSERT_TRUE(second.registerCallManager("/app/calls"));
    EXPECT_THAT(
        texts(service.ListCallManagers()), UnorderedElementsAre(text(first, "/app/calls"), text(second, "/app/calls")));
}

TEST_F(CallServiceTest, DepartureRemovesEveryRegistrationOfTheApplicationEachStillListedWhenAnnounced)
{
    ScriptedApplication staying;
    ASSERT_TRUE(staying.registerCallManager("/stays"));
    ScriptedApplication leaving;
    ASSERT_TRUE(leaving.registerCallManager("/app/a"));
    ASSERT_TRUE(leaving.registerCallManager("/app/b"));
    leaving.leave();
    ASSERT_TRUE(waitFor([&] { return removed.size() == 2; }));

    const std::vector<std::string> both{text(leaving, "/app/a"), text(leaving, "/app/b")};
    EXPECT_THAT((std::vector<std::string>{removed[0].callManager, removed[1].callManager}),
        UnorderedElementsAre(both[0], both[1]));
    EXPECT_THAT(removed[0].listed, UnorderedElementsAre(text(staying, "/stays"), both[0], both[1]));
    EXPECT_THAT(removed[1].listed, UnorderedElementsAre(text(staying, "/stays"), removed[1].callManager))
        << "the first is out of the list before the second is announced";
    EXPECT_THAT(texts(service.ListCallManagers()), ElementsAre(text(staying, "/stays")));
    EXPECT_EQ(list(staying), QStringLiteral("([('%1', '/stays')],)").arg(staying.name()));
}

TEST_F(CallServiceTest, AnApplicationThatComesBackIsRegisteredAnewUnderItsNewName)
{
    ScriptedApplication first;
    ASSERT_TRUE(first.registerCallManager("/app/calls"));
    first.leave();
    ASSERT_TRUE(waitFor([&] { return removed.size() == 1; }));
    ScriptedApplication second;
    ASSERT_TRUE(second.registerCallManager("/app/calls"));
    ASSERT_EQ(added.size(), 2U);
    EXPECT_EQ(added[1].callManager, text(second, "/app/calls"));
    EXPECT_THAT(texts(service.ListCallManagers()), ElementsAre(text(second, "/app/calls")));
}

TEST_F(CallServiceTest, NamesThatNoRegistrationUsesComeAndGoUnnoticed)
{
    ScriptedApplication application;
    ASSERT_TRUE(application.registerCallManager("/app/calls"));
    application.call(busName, busPath, busName, "RequestName", "'org.example.Phone', uint32 0");
    application.call(busName, busPath, busName, "ReleaseName", "'org.example.Phone'");
    {
        ScriptedApplication stranger;
        stranger.settle();
    }
    ASSERT_TRUE(application.settle());
    EXPECT_THAT(removed, IsEmpty());
    EXPECT_THAT(texts(service.ListCallManagers()), ElementsAre(text(application, "/app/calls")));
}

TEST_F(CallServiceTest, AnyChangeOfOwnerOfARegisteredNameRemovesIt)
{
    ScriptedApplication application;
    ASSERT_TRUE(application.registerCallManager("/app/calls"));
    const QString name = application.name();
    ASSERT_TRUE(QMetaObject::invokeMethod(
        &service, "onNameOwnerChanged", Q_ARG(QString, name), Q_ARG(QString, QString()), Q_ARG(QString, name)));
    EXPECT_EQ(removed.size(), 1U);
    EXPECT_THAT(service.ListCallManagers(), IsEmpty());
}

TEST_F(CallServiceTest, AnApplicationThatIsGoneBeforeTheQueryIsRegisteredWithProcessIdZeroAndRemovedAgain)
{
    ScriptedApplication application;
    const std::string expected = text(application, "/app/calls");
    sendRegistration(application, "/app/calls");
    application.leave();
    // Blocks without the event loop, so that the registration is handled after the departure.
    QDBusConnectionInterface *bus = QDBusConnection::sessionBus().interface();
    QElapsedTimer clock;
    clock.start();
    while (bus->isServiceRegistered(application.name()) && clock.elapsed() < waitLimitMs) { }
    ASSERT_THAT(added, IsEmpty());

    ASSERT_TRUE(waitFor([&] { return removed.size() == 1; }));
    ASSERT_EQ(added.size(), 1U);
    EXPECT_EQ(added[0].callManager, expected);
    EXPECT_EQ(added[0].pid, 0);
    EXPECT_EQ(removed[0].callManager, expected);
    EXPECT_THAT(service.ListCallManagers(), IsEmpty());
}

TEST_F(CallServiceTest, EveryPathThatTheBusAcceptsIsRegistered)
{
    ScriptedApplication application;
    const std::string deep = '/' + std::string(50000, 'x');
    for (const char *path : {"/", "/zelkovar/call/service", "/org/freedesktop/DBus", deep.c_str()})
        EXPECT_TRUE(application.registerCallManager(path));
    EXPECT_THAT(texts(service.ListCallManagers()),
        UnorderedElementsAre(text(application, "/"), text(application, "/zelkovar/call/service"),
            text(application, "/org/freedesktop/DBus"), text(application, deep.c_str())));
}

TEST_F(CallServiceTest, LogsARegistrationInTheDefaultCategoryAndNothingElse)
{
    const LogRecorder log;
    ScriptedApplication application;
    ASSERT_TRUE(application.registerCallManager("/app/calls"));
    EXPECT_EQ(log.entries(),
        QStringList(QStringLiteral("info default: RegisterCallManager  \"%1@/app/calls\" pid %2")
                        .arg(application.name())
                        .arg(getpid())));
}

TEST_F(CallServiceTest, LogsARegistrationAlsoWhileNothingIsTraced)
{
    const LogRecorder log;
    QLoggingCategory::setFilterRules("voicecall=false\ndefault=true");
    ScriptedApplication application;
    ASSERT_TRUE(application.registerCallManager("/app/calls"));
    EXPECT_EQ(log.entries().size(), 1);
    EXPECT_EQ(log.startingWith("info default: RegisterCallManager ").size(), 1);
}

TEST_F(CallServiceTest, LogsBeforeItLists)
{
    static std::function<void()> look;
    int listed = -1;
    look = [&] { listed = service.ListCallManagers().size(); };
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &text) {
        if (text.startsWith("RegisterCallManager "))
            look();
    });
    ScriptedApplication application;
    const bool registered = application.registerCallManager("/app/calls");
    qInstallMessageHandler(nullptr);
    ASSERT_TRUE(registered);
    EXPECT_EQ(listed, 0);
}

TEST_F(CallServiceTest, LogsNothingForADuplicateAListOrADeparture)
{
    ScriptedApplication application;
    ASSERT_TRUE(application.registerCallManager("/app/calls"));
    const LogRecorder log;
    ASSERT_TRUE(application.registerCallManager("/app/calls"));
    list(application);
    application.leave();
    ASSERT_TRUE(waitFor([&] { return removed.size() == 1; }));
    EXPECT_TRUE(log.entries().isEmpty()) << log.entries().join('\n').toStdString();
}

TEST_F(CallServiceTest, DepartureOfANameThatDiffersInOneCharacterOnlyChangesNothing)
{
    ScriptedApplication application;
    ASSERT_TRUE(application.registerCallManager("/app/calls"));
    const QString name = application.name();
    QStringList others = {QString(), name + QLatin1Char('1'), QLatin1Char('x') + name, name.chopped(1)};
    for (int i = 0; i < name.size(); ++i)
        others.append(QString(name).replace(i, 1, QLatin1Char('x')));
    for (const QString &other : qAsConst(others)) {
        QMetaObject::invokeMethod(
            &service, "onNameOwnerChanged", Q_ARG(QString, other), Q_ARG(QString, other), Q_ARG(QString, QString()));
    }
    EXPECT_TRUE(removed.empty());
    EXPECT_EQ(service.ListCallManagers().size(), 1);
}

TEST(CallService, BelongsToItsParent)
{
    QObject parent;
    EXPECT_EQ((new CallService(&parent))->parent(), &parent);
}

TEST(CallService, ComesAndGoesWithoutAWordAndAnnouncesNoRemovalAtItsEnd)
{
    const LogRecorder log;
    int removed = 0;
    ScriptedApplication application;
    {
        CallService service(nullptr);
        QObject::connect(&service, &CallService::callManagerRemoved, [&] { ++removed; });
        QDBusConnection::sessionBus().registerObject(servicePath, &service, QDBusConnection::ExportAdaptors);
        ASSERT_TRUE(application.registerCallManager("/app/calls"));
    }
    EXPECT_EQ(removed, 0);
    EXPECT_EQ(log.entries().size(), 1) << "the registration alone";
    EXPECT_EQ(application.call(
                  ScriptedApplication::thisProcess(), servicePath, "zelkovar.Call.ServiceManager1", "ListCallManagers"),
        QLatin1String("org.freedesktop.DBus.Error.UnknownObject"));
}

TEST(CallService, WatchesTheBusBeforeItIsExported)
{
    ScriptedApplication monitor;
    monitor.becomeMonitor();
    const CallService service(nullptr);
    ASSERT_TRUE(waitFor([&] { return !monitor.traffic().filter("member='NameOwnerChanged'").isEmpty(); }));
    const QString rule = monitor.traffic().filter("member='NameOwnerChanged'").constFirst();
    EXPECT_TRUE(rule.contains("AddMatch"));
    EXPECT_TRUE(rule.contains("interface='org.freedesktop.DBus'")) << rule.toStdString();
    EXPECT_FALSE(rule.contains("arg0")) << "one rule serves every name: " << rule.toStdString();
}
