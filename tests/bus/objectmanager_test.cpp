// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "objectmanager/objectmanager.h"
#include "service/callservice.h"

#include "busconnection.h"
#include "logrecorder.h"
#include "objectreport.h"
#include "printers.h"
#include "privatebus.h"
#include "scriptedapplication.h"
#include "waitfor.h"

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusPendingCallWatcher>
#include <QtDBus/QDBusPendingReply>
#include <gmock/gmock.h>
#include <memory>

namespace {

const QString managerPath = QStringLiteral("/m");
const QString objectManagerInterface = QStringLiteral("org.freedesktop.DBus.ObjectManager");

QString text(const QVariantMapMap &interfaces)
{
    QStringList names;
    for (auto interface = interfaces.cbegin(); interface != interfaces.cend(); ++interface) {
        const QStringList properties = interface->keys();
        names.append(
            properties.isEmpty() ? interface.key() : interface.key() + '(' + properties.join(QLatin1Char(',')) + ')');
    }
    return names.join(QLatin1Char(' '));
}

QDBusObjectPath path(const char *text) { return QDBusObjectPath(QString::fromLatin1(text)); }

QVariantMapMap interfaces(const QStringList &names)
{
    QVariantMapMap map;
    for (const QString &name : names)
        map.insert(name, {});
    return map;
}

/** An application, and a mirror of it that writes down in one list what it reports. */
class ObjectManagerTest : public testing::Test
{
protected:
    ObjectManagerTest()
    {
        // For settle() alone.
        QDBusConnection::sessionBus().registerObject(
            QStringLiteral("/zelkovar/call/service"), &service, QDBusConnection::ExportAdaptors);
    }

    // The bus layer, which warns of a name that it learns of twice, knows the application from here on.
    void SetUp() override { ASSERT_TRUE(application.settle()); }

    void mirror(const QString &serviceName)
    {
        manager = std::make_unique<ObjectManager>(
            serviceName, QDBusObjectPath(managerPath), QDBusConnection::sessionBus(), nullptr);
        QObject::connect(manager.get(), &ObjectManager::interfacesAdded,
            [this](const QString &from, const QDBusObjectPath &object, const QVariantMapMap &added) {
                services.insert(from);
                events.append(QStringLiteral("%1 + %2").arg(object.path(), text(added)));
            });
        QObject::connect(manager.get(), &ObjectManager::interfacesRemoved,
            [this](const QString &from, const QDBusObjectPath &object, const QStringList &removed) {
                services.insert(from);
                events.append(QStringLiteral("%1 - %2").arg(object.path(), removed.join(QLatin1Char(' '))));
            });
    }

    void mirror() { mirror(application.name()); }

    /** The request has arrived and, unless it is held, its answer has been handled. */
    bool settle() { return application.settle() && application.settle(); }

    /** Mirrors an application without objects. */
    void mirrorNothing()
    {
        mirror();
        ASSERT_TRUE(settle());
        ASSERT_TRUE(events.isEmpty());
    }

    QStringList removeAll()
    {
        events.clear();
        manager->removeAll();
        return events;
    }

    CallService service{nullptr};
    ScriptedApplication application;
    std::unique_ptr<ObjectManager> manager;
    QStringList events;
    QSet<QString> services;
};

} // namespace

// --- The snapshot

TEST_F(ObjectManagerTest, AsksTheRegisteredPathOnceForItsObjects)
{
    mirror();
    ASSERT_TRUE(settle());
    manager->removeAll();
    ASSERT_TRUE(settle());
    EXPECT_EQ(application.calls(), QStringList("/m org.freedesktop.DBus.ObjectManager.GetManagedObjects()"));
}

TEST_F(ObjectManagerTest, SubscribesToChangesBeforeItAsksForTheSnapshot)
{
    ScriptedApplication monitor;
    monitor.becomeMonitor();
    mirror();
    const QString request = QStringLiteral("%1 > %2: /m org.freedesktop.DBus.ObjectManager.GetManagedObjects()")
                                .arg(ScriptedApplication::thisProcess(), application.name());
    ASSERT_TRUE(waitFor([&] { return monitor.traffic().contains(request); }));
    const QStringList before = monitor.traffic().mid(0, monitor.traffic().indexOf(request)).filter("AddMatch");
    const QString rule = QStringLiteral("type='signal',sender='%1',path='/m',"
                                        "interface='org.freedesktop.DBus.ObjectManager',member='%2'");
    EXPECT_EQ(before.filter(rule.arg(application.name(), "InterfacesAdded")).size(), 1);
    EXPECT_EQ(before.filter(rule.arg(application.name(), "InterfacesRemoved")).size(), 1);
}

TEST_F(ObjectManagerTest, EmptySnapshotReportsNothing)
{
    mirror();
    ASSERT_TRUE(settle());
    EXPECT_EQ(events, QStringList());
    EXPECT_EQ(removeAll(), QStringList());
}

TEST_F(ObjectManagerTest, SnapshotReportsEachObjectOnceWithAllItsInterfacesInOrderOfPaths)
{
    application.setObjects("{objectpath '/m/c2': {'test.B': {'P': <1>}}, '/m/c1': {'test.B': @a{sv} {}, "
                           "'test.A': {'Q': <2>, 'R': <'x'>}}}");
    mirror();
    ASSERT_TRUE(settle());
    EXPECT_EQ(events, QStringList({"/m/c1 + test.A(Q,R) test.B", "/m/c2 + test.B(P)"}));
    EXPECT_EQ(services, QSet<QString>({application.name()}));
    EXPECT_EQ(removeAll(), QStringList({"/m/c1 - test.A test.B", "/m/c2 - test.B"}));
}

TEST_F(ObjectManagerTest, PathsAreOrderedAsPlainText)
{
    application.setObjects("{objectpath '/a/c': {'i': {}}, '/a/b/c': {'i': {}}, '/a/a': {'i': {}}, '/a/_': {'i': {}}, "
                           "'/a/10': {'i': {}}, '/a/9': {'i': {}}, '/a/b': {'i': {}}, '/a/B': {'i': {}}}");
    mirror();
    ASSERT_TRUE(settle());
    EXPECT_EQ(events,
        QStringList(
            {"/a/10 + i", "/a/9 + i", "/a/B + i", "/a/_ + i", "/a/a + i", "/a/b + i", "/a/b/c + i", "/a/c + i"}));
    EXPECT_EQ(removeAll(),
        QStringList(
            {"/a/10 - i", "/a/9 - i", "/a/B - i", "/a/_ - i", "/a/a - i", "/a/b - i", "/a/b/c - i", "/a/c - i"}));
}

TEST_F(ObjectManagerTest, ObjectWithoutInterfacesIsReportedAndMirrored)
{
    application.setObjects("{objectpath '/m/c1': {}}");
    mirror();
    ASSERT_TRUE(settle());
    EXPECT_EQ(events, QStringList("/m/c1 + "));
    EXPECT_EQ(removeAll(), QStringList("/m/c1 - "));
}

TEST_F(ObjectManagerTest, APathThatIsTwiceInTheSnapshotIsReportedTwiceWithItsLastInterfaces)
{
    application.setObjects("{objectpath '/m/c1': {'test.A': {'P': <1>}}, '/m/c1': {'test.B': {'Q': <1>}}}");
    mirror();
    ASSERT_TRUE(settle());
    EXPECT_EQ(events, QStringList({"/m/c1 + test.B(Q)", "/m/c1 + test.B(Q)"}));
    EXPECT_EQ(removeAll(), QStringList("/m/c1 - test.B test.B"));
}

TEST_F(ObjectManagerTest, AnInterfaceThatIsTwiceInAnObjectOfTheSnapshotIsHeldTwice)
{
    application.setObjects("{objectpath '/m/c1': {'test.A': {'P': <1>}, 'test.A': {'Q': <1>}}}");
    mirror();
    ASSERT_TRUE(settle());
    EXPECT_EQ(events.size(), 1);
    EXPECT_EQ(removeAll(), QStringList("/m/c1 - test.A test.A"));
}

TEST_F(ObjectManagerTest, FurtherArgumentsOfTheSnapshotAreIgnored)
{
    application.setSnapshotBody("@a{oa{sa{sv}}} {'/m/c1': {'test.A': {}}}, 'more', uint32 5");
    mirror();
    ASSERT_TRUE(settle());
    EXPECT_EQ(events, QStringList("/m/c1 + test.A"));
}

TEST_F(ObjectManagerTest, SnapshotOfAnotherTypeIsDroppedWithoutAWordAndChangesAreStillReported)
{
    for (const char *body : {"'text'", "@a{sa{sa{sv}}} {'/m/c1': {'test.A': {}}}", "@a{oa{sv}} {'/m/c1': {}}",
             "'first', @a{oa{sa{sv}}} {'/m/c1': {'test.A': {}}}", "<@a{oa{sa{sv}}} {}>", "@ao ['/m/c1']"}) {
        SCOPED_TRACE(body);
        const LogRecorder log;
        application.setSnapshotBody(body);
        mirror();
        ASSERT_TRUE(settle());
        EXPECT_EQ(events, QStringList());
        EXPECT_EQ(log.entries(), QStringList());
        application.announce(managerPath, "/m/c1", "{'test.A': {}}");
        ASSERT_TRUE(settle());
        EXPECT_EQ(events, QStringList("/m/c1 + test.A"));
        events.clear();
    }
}

TEST_F(ObjectManagerTest, EmptyReplyIsDroppedWithoutAWord)
{
    application.setSnapshotBody("");
    const LogRecorder log;
    mirror();
    ASSERT_TRUE(settle());
    EXPECT_EQ(events, QStringList());
    EXPECT_EQ(log.entries(), QStringList());
}

TEST_F(ObjectManagerTest, ErrorInsteadOfASnapshotIsDroppedWithoutAWordAndChangesAreStillReported)
{
    application.refuseSnapshot("org.freedesktop.DBus.Error.UnknownMethod");
    const LogRecorder log;
    mirror();
    ASSERT_TRUE(settle());
    EXPECT_EQ(events, QStringList());
    EXPECT_EQ(log.entries(), QStringList());
    application.announce(managerPath, "/m/c1", "{'test.A': {}}");
    ASSERT_TRUE(settle());
    EXPECT_EQ(events, QStringList("/m/c1 + test.A"));
    EXPECT_EQ(application.calls().size(), 1) << "nothing is asked again";
}

TEST_F(ObjectManagerTest, ErrorIsNoSnapshotWhateverItCarries)
{
    for (const char *body : {"{objectpath '/m/c1': {'test.A': @a{sv} {}}}", "[(1, 2)]", "uint32 5"}) {
        application.refuseSnapshot("test.Error", body);
        mirror();
        ASSERT_TRUE(settle());
        EXPECT_EQ(events, QStringList()) << body;
    }
}

TEST_F(ObjectManagerTest, WithoutAnAnswerChangesAreReportedAndNothingIsLogged)
{
    application.holdSnapshot();
    const LogRecorder log;
    mirror();
    application.announce(managerPath, "/m/c1", "{'test.A': {}}");
    application.withdraw(managerPath, "/m/c2", {"test.B"});
    ASSERT_TRUE(settle());
    EXPECT_EQ(events, QStringList({"/m/c1 + test.A", "/m/c2 - test.B"}));
    EXPECT_EQ(log.entries(), QStringList());
}

TEST_F(ObjectManagerTest, ApplicationThatLeavesInsteadOfAnsweringIsDroppedWithoutAWord)
{
    application.holdSnapshot();
    const LogRecorder log;
    mirror();
    ASSERT_TRUE(settle());
    application.leave();
    ASSERT_TRUE(waitFor([&] { return manager->findChildren<QDBusPendingCallWatcher *>().isEmpty(); }));
    EXPECT_EQ(events, QStringList());
    EXPECT_EQ(log.entries(), QStringList());
}

TEST_F(ObjectManagerTest, WhatIsAnnouncedBeforeTheSnapshotIsReportedAgainWithItAndHeldTwice)
{
    application.holdSnapshot();
    application.setObjects("{objectpath '/m/c1': {'test.A': {'P': <1>}}, '/m/c2': {'test.B': {}}}");
    mirror();
    application.announce(managerPath, "/m/c1", "{'test.A': {'P': <1>}}");
    ASSERT_TRUE(settle());
    EXPECT_EQ(events, QStringList("/m/c1 + test.A(P)"));
    application.releaseSnapshot();
    ASSERT_TRUE(settle());
    EXPECT_EQ(events, QStringList({"/m/c1 + test.A(P)", "/m/c1 + test.A(P)", "/m/c2 + test.B"}));
    EXPECT_EQ(removeAll(), QStringList({"/m/c1 - test.A test.A", "/m/c2 - test.B"}));
}

TEST_F(ObjectManagerTest, WhatIsRemovedBeforeTheSnapshotComesBackWithIt)
{
    application.holdSnapshot();
    application.setObjects("{objectpath '/m/c1': {'test.A': {}}}");
    mirror();
    application.withdraw(managerPath, "/m/c1", {"test.A"});
    ASSERT_TRUE(settle());
    application.releaseSnapshot();
    ASSERT_TRUE(settle());
    EXPECT_EQ(events, QStringList({"/m/c1 - test.A", "/m/c1 + test.A"}));
    EXPECT_EQ(removeAll(), QStringList("/m/c1 - test.A"));
}

TEST_F(ObjectManagerTest, SnapshotIsStillTakenAfterEverythingWasRemoved)
{
    application.holdSnapshot();
    application.setObjects("{objectpath '/m/c1': {'test.A': {}}}");
    mirror();
    ASSERT_TRUE(settle());
    manager->removeAll();
    application.releaseSnapshot();
    ASSERT_TRUE(settle());
    EXPECT_EQ(events, QStringList("/m/c1 + test.A"));
}

TEST_F(ObjectManagerTest, DestroyedWhileTheSnapshotIsOnItsWayItReportsNothing)
{
    application.holdSnapshot();
    application.setObjects("{objectpath '/m/c1': {'test.A': {}}}");
    const LogRecorder log;
    mirror();
    ASSERT_TRUE(settle());
    manager.reset();
    application.releaseSnapshot();
    ASSERT_TRUE(settle());
    EXPECT_EQ(events, QStringList());
    EXPECT_EQ(log.entries(), QStringList());
}

TEST_F(ObjectManagerTest, WatcherIsReleasedOnceTheSnapshotIsThereOrRefused)
{
    for (const bool refused : {false, true}) {
        if (refused)
            application.refuseSnapshot("test.Error");
        application.holdSnapshot();
        mirror();
        ASSERT_TRUE(settle());
        EXPECT_EQ(manager->findChildren<QDBusPendingCallWatcher *>().size(), 1);
        application.releaseSnapshot();
        ASSERT_TRUE(settle());
        EXPECT_TRUE(waitFor([&] { return manager->findChildren<QDBusPendingCallWatcher *>().isEmpty(); }));
    }
}

TEST_F(ObjectManagerTest, WhatIsRemovedRightBehindTheSnapshotIsRemovedBehindIt)
{
    application.setObjects("{'/m/c1': {'i.a': {}}}");
    application.holdSnapshot();
    mirror();
    ASSERT_TRUE(settle());
    application.releaseSnapshot();
    application.withdraw(managerPath, "/m/c1", {"i.a"});
    // When the answer to this is here, both of the above are; neither is handled meanwhile.
    QDBusConnection::sessionBus().call(
        QDBusMessage::createMethodCall(application.name(), "/mark", "tests.Mark", "Mark"));
    ASSERT_EQ(events, QStringList());
    ASSERT_TRUE(settle());
    EXPECT_EQ(events, QStringList({"/m/c1 + i.a", "/m/c1 - i.a"}));
}

TEST_F(ObjectManagerTest, WatcherIsReleasedOnlyOnceTheSnapshotWasReported)
{
    application.setObjects("{'/m/c1': {'i.a': {}}}");
    mirror();
    bool wasThere = false;
    QObject::connect(manager.get(), &ObjectManager::interfacesAdded, [&] {
        auto *watcher = manager->findChild<QDBusPendingCallWatcher *>();
        // Deletes it now if that is due.
        QCoreApplication::sendPostedEvents(watcher, QEvent::DeferredDelete);
        wasThere = watcher && watcher == manager->findChild<QDBusPendingCallWatcher *>();
    });
    ASSERT_TRUE(settle());
    EXPECT_EQ(events.size(), 1);
    EXPECT_TRUE(wasThere);
}

// --- Changes

TEST_F(ObjectManagerTest, AdditionsAreReportedAsReceivedAndNotMerged)
{
    mirrorNothing();
    application.announce(managerPath, "/m/c1", "{'test.A': {'P': <1>}}");
    application.announce(managerPath, "/m/c1", "{'test.B': {'Q': <1>}}");
    application.announce(managerPath, "/m/c1", "{}");
    ASSERT_TRUE(settle());
    EXPECT_EQ(events, QStringList({"/m/c1 + test.A(P)", "/m/c1 + test.B(Q)", "/m/c1 + "}));
    EXPECT_EQ(removeAll(), QStringList("/m/c1 - test.A test.B"));
}

TEST_F(ObjectManagerTest, AnnouncedWithoutInterfacesAnObjectIsMirrored)
{
    mirrorNothing();
    application.announce(managerPath, "/m/c1", "{}");
    ASSERT_TRUE(settle());
    EXPECT_EQ(events, QStringList("/m/c1 + "));
    EXPECT_EQ(removeAll(), QStringList("/m/c1 - "));
}

TEST_F(ObjectManagerTest, AnInterfaceAnnouncedAgainIsReportedAgainAndListedTwiceAtTheEnd)
{
    mirrorNothing();
    application.announce(managerPath, "/m/c1", "{'test.A': {'P': <1>}}");
    application.announce(managerPath, "/m/c1", "{'test.A': {'Q': <2>}, 'test.B': {}}");
    ASSERT_TRUE(settle());
    EXPECT_EQ(events, QStringList({"/m/c1 + test.A(P)", "/m/c1 + test.A(Q) test.B"}));
    EXPECT_EQ(removeAll(), QStringList("/m/c1 - test.A test.A test.B"));
}

TEST_F(ObjectManagerTest, OneRemovalTakesEveryEntryOfAName)
{
    mirrorNothing();
    application.announce(managerPath, "/m/c1", "{'test.A': {}, 'test.B': {}}");
    application.announce(managerPath, "/m/c1", "{'test.A': {}}");
    application.withdraw(managerPath, "/m/c1", {"test.A"});
    ASSERT_TRUE(settle());
    EXPECT_EQ(events.last(), QLatin1String("/m/c1 - test.A"));
    EXPECT_EQ(removeAll(), QStringList("/m/c1 - test.B"));
}

TEST_F(ObjectManagerTest, RemovalOfAllInterfacesTakesTheObjectOutOfTheMirror)
{
    mirrorNothing();
    application.announce(managerPath, "/m/c1", "{'test.A': {}, 'test.B': {}}");
    application.withdraw(managerPath, "/m/c1", {"test.B", "test.A"});
    ASSERT_TRUE(settle());
    EXPECT_EQ(events, QStringList({"/m/c1 + test.A test.B", "/m/c1 - test.B test.A"}));
    EXPECT_EQ(removeAll(), QStringList());
}

TEST_F(ObjectManagerTest, RemovalOfSomeInterfacesLeavesTheOthers)
{
    mirrorNothing();
    application.announce(managerPath, "/m/c1", "{'test.A': {}, 'test.B': {}, 'test.C': {}}");
    application.withdraw(managerPath, "/m/c1", {"test.B", "test.Unknown"});
    ASSERT_TRUE(settle());
    EXPECT_EQ(events.last(), QLatin1String("/m/c1 - test.B test.Unknown"));
    EXPECT_EQ(removeAll(), QStringList("/m/c1 - test.A test.C"));
}

TEST_F(ObjectManagerTest, RemovalFromAnUnknownObjectIsReportedAndMirrorsNothing)
{
    mirrorNothing();
    application.withdraw(managerPath, "/m/c1", {"test.A", "test.B"});
    ASSERT_TRUE(settle());
    EXPECT_EQ(events, QStringList("/m/c1 - test.A test.B"));
    EXPECT_EQ(removeAll(), QStringList());
}

TEST_F(ObjectManagerTest, RemovalOfNoInterfaceIsReportedAndTheObjectStays)
{
    mirrorNothing();
    application.announce(managerPath, "/m/c1", "{'test.A': {}}");
    application.announce(managerPath, "/m/c2", "{}");
    application.withdraw(managerPath, "/m/c1", {});
    application.withdraw(managerPath, "/m/c2", {});
    application.withdraw(managerPath, "/m/c3", {});
    ASSERT_TRUE(settle());
    EXPECT_EQ(events.mid(2), QStringList({"/m/c1 - ", "/m/c2 - ", "/m/c3 - "}));
    EXPECT_EQ(removeAll(), QStringList({"/m/c1 - test.A", "/m/c2 - "}));
}

TEST_F(ObjectManagerTest, AnObjectWithoutInterfacesIsRemovedByAnyName)
{
    mirrorNothing();
    application.announce(managerPath, "/m/c1", "{}");
    application.withdraw(managerPath, "/m/c1", {"test.Unknown"});
    ASSERT_TRUE(settle());
    EXPECT_EQ(removeAll(), QStringList());
}

TEST_F(ObjectManagerTest, NamesBehindTheOneWithWhichAnObjectLeftDoNotBringItBack)
{
    mirrorNothing();
    application.announce(managerPath, "/m/c1", "{'test.A': {}}");
    application.withdraw(managerPath, "/m/c1", {"test.A", "test.B", "test.A"});
    ASSERT_TRUE(settle());
    EXPECT_EQ(events.last(), QLatin1String("/m/c1 - test.A test.B test.A"));
    EXPECT_EQ(removeAll(), QStringList());
}

TEST_F(ObjectManagerTest, MirrorIsUpToDateWhenAChangeIsReported)
{
    mirrorNothing();
    QStringList seen;
    QObject::connect(manager.get(), &ObjectManager::interfacesAdded, [&] {
        manager->removeAll();
        seen = events;
    });
    manager->onInterfacesAdded(path("/m/c1"), interfaces({"test.A"}));
    EXPECT_EQ(seen, QStringList({"/m/c1 + test.A", "/m/c1 - test.A"}));

    QObject::disconnect(manager.get(), &ObjectManager::interfacesAdded, nullptr, nullptr);
    manager->onInterfacesAdded(path("/m/c1"), interfaces({"test.A", "test.B"}));
    events.clear();
    bool nested = false;
    QObject::connect(manager.get(), &ObjectManager::interfacesRemoved, [&] {
        if (nested)
            return;
        nested = true;
        manager->removeAll();
    });
    manager->onInterfacesRemoved(path("/m/c1"), {"test.A"});
    EXPECT_EQ(events, QStringList({"/m/c1 - test.A", "/m/c1 - test.B"}));
}

// --- removeAll()

TEST_F(ObjectManagerTest, RemovingAllTwiceReportsNothingTheSecondTime)
{
    mirrorNothing();
    manager->onInterfacesAdded(path("/m/c1"), interfaces({"test.A"}));
    EXPECT_EQ(removeAll(), QStringList("/m/c1 - test.A"));
    EXPECT_EQ(removeAll(), QStringList());
}

TEST_F(ObjectManagerTest, RemovingAllCarriesTheServiceName)
{
    mirrorNothing();
    manager->onInterfacesAdded(path("/m/c1"), interfaces({"test.A"}));
    services.clear();
    manager->removeAll();
    EXPECT_EQ(services, QSet<QString>({application.name()}));
}

TEST_F(ObjectManagerTest, AfterRemovingAllChangesAreMirroredAndReportedAgain)
{
    mirrorNothing();
    application.announce(managerPath, "/m/c1", "{'test.A': {}}");
    ASSERT_TRUE(settle());
    EXPECT_EQ(removeAll(), QStringList("/m/c1 - test.A"));
    application.announce(managerPath, "/m/c1", "{'test.B': {}}");
    ASSERT_TRUE(settle());
    EXPECT_EQ(events, QStringList({"/m/c1 - test.A", "/m/c1 + test.B"}));
    EXPECT_EQ(removeAll(), QStringList("/m/c1 - test.B"));
}

TEST_F(ObjectManagerTest, WhileRemovingAllTheMirrorStillHoldsEverything)
{
    mirrorNothing();
    manager->onInterfacesAdded(path("/m/c1"), interfaces({"test.A"}));
    manager->onInterfacesAdded(path("/m/c2"), interfaces({"test.B"}));
    bool nested = false;
    QObject::connect(manager.get(), &ObjectManager::interfacesRemoved,
        [&](const QString &, const QDBusObjectPath &object, const QStringList &) {
            if (nested || object.path() != QLatin1String("/m/c2"))
                return;
            nested = true;
            manager->onInterfacesAdded(path("/m/c1"), interfaces({"test.C"}));
            manager->onInterfacesRemoved(path("/m/c2"), {"test.B"});
        });
    const QStringList order = removeAll();
    EXPECT_EQ(order, QStringList({"/m/c1 - test.A", "/m/c2 - test.B", "/m/c1 + test.C", "/m/c2 - test.B"}));
    EXPECT_EQ(removeAll(), QStringList()) << "what came meanwhile is forgotten as well";

    nested = true;
    manager->onInterfacesAdded(path("/m/c1"), interfaces({"test.A"}));
    manager->onInterfacesAdded(path("/m/c2"), interfaces({"test.B"}));
    QStringList inner;
    int depth = 0;
    QObject::connect(manager.get(), &ObjectManager::interfacesRemoved, [&] {
        if (++depth > 1)
            return;
        events.clear();
        manager->removeAll();
        inner = events;
    });
    manager->removeAll();
    EXPECT_EQ(inner, QStringList({"/m/c1 - test.A", "/m/c2 - test.B"}));
    EXPECT_EQ(depth, 4) << "the outer run goes on over its own copy";
}

// --- Who is listened to

TEST_F(ObjectManagerTest, ServiceNameIsTheOneGivenAndNotTheSendersOwn)
{
    application.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
        "'org.example.Phone', uint32 0");
    application.setObjects("{objectpath '/m/c1': {'test.A': {}}}");
    mirror("org.example.Phone");
    ASSERT_TRUE(settle());
    application.announce(managerPath, "/m/c2", "{'test.A': {}}");
    application.withdraw(managerPath, "/m/c2", {"test.A"});
    ASSERT_TRUE(settle());
    EXPECT_EQ(events, QStringList({"/m/c1 + test.A", "/m/c2 + test.A", "/m/c2 - test.A"}));
    EXPECT_EQ(services, QSet<QString>({"org.example.Phone"}));
}

TEST_F(ObjectManagerTest, SignalsOfOtherSendersAreIgnored)
{
    mirrorNothing();
    ScriptedApplication stranger;
    stranger.announce(managerPath, "/m/c1", "{'test.A': {}}");
    stranger.withdraw(managerPath, "/m/c1", {"test.A"});
    stranger.signal(managerPath, objectManagerInterface, "InterfacesAdded",
        "objectpath '/m/c1', @a{sa{sv}} {'test.A': {}}", ScriptedApplication::thisProcess());
    ASSERT_TRUE(stranger.settle());
    EXPECT_EQ(events, QStringList());
}

// --- Answers that others forge

namespace {

// An ordinary bus delivers answers that nobody asked for. One with these elements does not.
const char forgeriesAllowed[] = "";
const char forgeriesDenied[] = R"(<policy context="mandatory">
  <deny send_requested_reply="false" send_type="method_return"/>
  <deny send_requested_reply="false" send_type="error"/>
</policy>)";

/** A mirror on a bus of its own, an application that answers when the test says so, and somebody else. */
class ForgedAnswers
{
public:
    explicit ForgedAnswers(const char *busConfiguration)
        : bus(QString::fromLatin1(busConfiguration)),
          manager(QString::fromStdString(application.name()), QDBusObjectPath(managerPath), host, nullptr)
    {
        QObject::connect(&manager, &ObjectManager::interfacesAdded,
            [this](const QString &, const QDBusObjectPath &object) { added.append(object.path()); });
    }

    ~ForgedAnswers() { QDBusConnection::disconnectFromBus(host.name()); }

    /** Answers all of the host's calls in the application's name; false when there were too many. */
    bool guess(int type)
    {
        constexpr uint32_t guesses = 100;
        const uint32_t asked = request();
        for (uint32_t serial = 1; serial <= guesses; ++serial)
            stranger.send(answer(type, serial, "/m/forged"));
        settle(stranger);
        return asked <= guesses;
    }

    /** The application answers, too. */
    void answerHonestly()
    {
        application.send(answer(DBUS_MESSAGE_TYPE_METHOD_RETURN, request(), "/m/honest"));
        settle(application);
    }

    bool isWaiting() const { return !manager.findChildren<QDBusPendingCallWatcher *>().isEmpty(); }

    QStringList added;

private:
    Message answer(int type, uint32_t serial, const char *object) const
    {
        Message reply(dbus_message_new(type));
        dbus_message_set_destination(reply.raw(), host.baseService().toUtf8().constData());
        dbus_message_set_reply_serial(reply.raw(), serial);
        if (type == DBUS_MESSAGE_TYPE_ERROR)
            dbus_message_set_error_name(reply.raw(), DBUS_ERROR_FAILED);
        appendObjects(reply.raw(), {{object, {"test.A"}, {}}});
        return reply;
    }

    /** The host's bus thread answers this when it has handled what was sent before; then the main thread does. */
    void settle(BusConnection &sender)
    {
        sender.call(Message::call({host.baseService().toStdString(), "/", "org.freedesktop.DBus.Peer"}, "Ping"));
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    /** The serial number of the host's request, once it has arrived. */
    uint32_t request()
    {
        EXPECT_TRUE(waitFor([this] {
            application.pump([this](const Message &message) {
                if (message.member() == "GetManagedObjects")
                    requested = dbus_message_get_serial(message.raw());
            });
            return requested > 0;
        }));
        return requested;
    }

    PrivateBus bus;
    QDBusConnection host = bus.connect("host");
    BusConnection application{bus.address().toStdString()};
    BusConnection stranger{bus.address().toStdString()};
    ObjectManager manager;
    uint32_t requested = 0;
};

} // namespace

TEST(ForgedAnswer, IsDroppedWithoutAWordAndTheHonestOneIsLost)
{
    const LogRecorder log;
    ForgedAnswers scene(forgeriesAllowed);
    ASSERT_TRUE(scene.guess(DBUS_MESSAGE_TYPE_METHOD_RETURN));
    EXPECT_FALSE(scene.isWaiting());
    scene.answerHonestly();
    EXPECT_EQ(scene.added, QStringList());
    EXPECT_EQ(log.entries(), QStringList());
}

TEST(ForgedAnswer, ThatIsAnErrorCarriesNothingAndTheHonestOneIsLost)
{
    ForgedAnswers scene(forgeriesAllowed);
    ASSERT_TRUE(scene.guess(DBUS_MESSAGE_TYPE_ERROR));
    EXPECT_FALSE(scene.isWaiting());
    scene.answerHonestly();
    EXPECT_EQ(scene.added, QStringList());
}

TEST(ForgedAnswer, DoesNotComeThroughABusThatDeniesAnswersNobodyAskedFor)
{
    for (const int type : {DBUS_MESSAGE_TYPE_METHOD_RETURN, DBUS_MESSAGE_TYPE_ERROR}) {
        ForgedAnswers scene(forgeriesDenied);
        ASSERT_TRUE(scene.guess(type));
        EXPECT_TRUE(scene.isWaiting());
        scene.answerHonestly();
        EXPECT_EQ(scene.added, QStringList("/m/honest"));
    }
}

// --- What else is listened to

TEST_F(ObjectManagerTest, AnErrorThatCarriesObjectsIsAnErrorAllTheSame)
{
    BusConnection peer(qgetenv("DBUS_SESSION_BUS_ADDRESS").toStdString());
    mirror(QString::fromStdString(peer.name()));
    ASSERT_TRUE(waitFor([&] {
        peer.pump([&](const Message &request) {
            const Message refusal(dbus_message_new(DBUS_MESSAGE_TYPE_ERROR));
            dbus_message_set_error_name(refusal.raw(), DBUS_ERROR_FAILED);
            dbus_message_set_destination(refusal.raw(), dbus_message_get_sender(request.raw()));
            dbus_message_set_reply_serial(refusal.raw(), dbus_message_get_serial(request.raw()));
            appendObjects(refusal.raw(), {{"/m/c1", {"test.A"}, {}}});
            peer.send(refusal);
        });
        return manager->findChildren<QDBusPendingCallWatcher *>().isEmpty();
    }));
    EXPECT_EQ(events, QStringList());
}

TEST_F(ObjectManagerTest, SignalsFromOtherPathsAreIgnored)
{
    mirrorNothing();
    for (const char *other : {"/", "/m/c1", "/mm", "/M"}) {
        application.announce(other, "/m/c1", "{'test.A': {}}");
        application.withdraw(other, "/m/c1", {"test.A"});
    }
    ASSERT_TRUE(settle());
    EXPECT_EQ(events, QStringList());
}

TEST_F(ObjectManagerTest, SignalsOfOtherInterfacesAndNamesAreIgnored)
{
    mirrorNothing();
    const QString arguments = QStringLiteral("objectpath '/m/c1', @a{sa{sv}} {'test.A': {}}");
    application.signal(managerPath, "zelkovar.Call.ServiceManager1", "InterfacesAdded", arguments);
    application.signal(managerPath, objectManagerInterface, "interfacesAdded", arguments);
    ASSERT_TRUE(settle());
    EXPECT_EQ(events, QStringList());
}

TEST_F(ObjectManagerTest, SignalsOfOtherTypesAreIgnored)
{
    mirrorNothing();
    for (const char *arguments : {"", "objectpath '/m/c1'", "'/m/c1', @a{sa{sv}} {'test.A': {}}",
             "objectpath '/m/c1', @a{sv} {'test.A': <1>}", "objectpath '/m/c1', @as ['test.A']",
             "objectpath '/m/c1', <@a{sa{sv}} {}>", "objectpath '/m/c1', @a{sa{sv}} {'test.A': {}}, 'more'"})
        application.signal(managerPath, objectManagerInterface, "InterfacesAdded", arguments);
    for (const char *arguments : {"", "objectpath '/m/c1'", "'/m/c1', @as ['test.A']", "objectpath '/m/c1', 'test.A'",
             "objectpath '/m/c1', @ao ['/test']", "objectpath '/m/c1', @a{sa{sv}} {}",
             "objectpath '/m/c1', @as ['test.A'], 'more'"})
        application.signal(managerPath, objectManagerInterface, "InterfacesRemoved", arguments);
    ASSERT_TRUE(settle());
    EXPECT_EQ(events, QStringList());
}

TEST_F(ObjectManagerTest, BelongsToTheParentThatItIsGiven)
{
    QObject parent;
    const auto *child
        = new ObjectManager(application.name(), QDBusObjectPath(managerPath), QDBusConnection::sessionBus(), &parent);
    EXPECT_EQ(child->parent(), &parent);
}

TEST_F(ObjectManagerTest, EndsItsSubscriptionsWithItself)
{
    mirrorNothing();
    ScriptedApplication monitor;
    monitor.becomeMonitor();
    manager.reset();
    application.announce(managerPath, "/m/c1", "{'test.A': {}}");
    ASSERT_TRUE(waitFor([&] { return monitor.traffic().filter("RemoveMatch").filter("ObjectManager").size() == 2; }))
        << monitor.traffic().join('\n').toStdString();
    ASSERT_TRUE(settle());
    EXPECT_EQ(events, QStringList());
}

TEST_F(ObjectManagerTest, WritesNoLogLines)
{
    const LogRecorder log;
    application.setObjects("{objectpath '/m/c1': {'test.A': {}}}");
    mirror();
    ASSERT_TRUE(settle());
    application.announce(managerPath, "/m/c2", "{'test.A': {}}");
    application.withdraw(managerPath, "/m/c2", {"test.A"});
    ASSERT_TRUE(settle());
    ASSERT_EQ(events.size(), 3);
    EXPECT_EQ(removeAll().size(), 1);
    manager.reset();
    EXPECT_EQ(log.entries(), QStringList());
}

// --- The proxy by itself

TEST_F(ObjectManagerTest, ProxyAnswersThroughItsMetaObjectWithATypedReply)
{
    application.setObjects("{objectpath '/m/c1': {'test.A': {'P': <uint32 5>}}}");
    application.holdSnapshot();
    DBusObjectManagerProxy proxy(application.name(), managerPath, QDBusConnection::sessionBus(), nullptr);
    EXPECT_EQ(proxy.interface(), objectManagerInterface);
    EXPECT_EQ(proxy.service(), application.name());
    EXPECT_EQ(proxy.path(), managerPath);
    QDBusPendingReply<DBusObjectList> reply;
    const QMetaMethod method = proxy.metaObject()->method(proxy.metaObject()->methodOffset() + 2);
    ASSERT_EQ(method.name(), "GetManagedObjects");
    ASSERT_TRUE(method.invoke(&proxy, Q_RETURN_ARG(QDBusPendingReply<DBusObjectList>, reply)));
    EXPECT_FALSE(reply.isFinished()) << "it does not wait for the application";
    ASSERT_TRUE(application.settle());
    application.releaseSnapshot();
    ASSERT_TRUE(waitFor([&] { return reply.isFinished(); }));
    const DBusObjectList expected{{path("/m/c1"), {{"test.A", {{"P", 5U}}}}}};
    EXPECT_EQ(reply.value(), expected);
}

TEST_F(ObjectManagerTest, ProxySubscribesOnlyWhileSomebodyListens)
{
    ScriptedApplication monitor;
    monitor.becomeMonitor();
    DBusObjectManagerProxy proxy(application.name(), managerPath, QDBusConnection::sessionBus(), nullptr);
    ASSERT_TRUE(application.settle());
    const QString rule = QStringLiteral("member='InterfacesAdded'");
    EXPECT_TRUE(monitor.traffic().filter(rule).isEmpty());

    const auto connection = QObject::connect(&proxy, &DBusObjectManagerProxy::InterfacesAdded, [] {});
    EXPECT_TRUE(waitFor([&] { return monitor.traffic().filter(rule).filter("AddMatch").size() == 1; }));
    QObject::disconnect(connection);
    EXPECT_TRUE(waitFor([&] { return monitor.traffic().filter(rule).filter("RemoveMatch").size() == 1; }));
}
