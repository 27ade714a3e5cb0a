// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// The shared types as they leave for the bus, and as they are read from what another bus library wrote.

#include "common/dbustypes.h"

#include "printers.h"
#include "scriptedapplication.h"
#include "waitfor.h"

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusPendingCall>
#include <gmock/gmock.h>

namespace {

/** What arrives at an application when `value` is sent. */
std::string written(const QVariant &value)
{
    ScriptedApplication application;
    QDBusMessage message = QDBusMessage::createMethodCall(application.name(), "/x", "test.Types", "Take");
    message << value;
    QDBusConnection::sessionBus().send(message);
    waitFor([&] { return !application.calls().isEmpty(); });
    return application.calls().value(0).toStdString();
}

/** What arrives here when an application sends `text`. */
QDBusArgument received(const QString &text)
{
    ScriptedApplication application;
    application.setSnapshotBody(text);
    const QDBusPendingCall call = QDBusConnection::sessionBus().asyncCall(QDBusMessage::createMethodCall(
        application.name(), "/x", "org.freedesktop.DBus.ObjectManager", "GetManagedObjects"));
    waitFor([&] { return call.isFinished(); });
    return call.reply().arguments().value(0).value<QDBusArgument>();
}

DBusObject object(const char *service, const char *path) { return {service, QDBusObjectPath(path)}; }

} // namespace

TEST(Marshalling, AnObjectIsWrittenAsServiceThenPath)
{
    EXPECT_EQ(written(QVariant::fromValue(object(":1.1", "/a"))), "/x test.Types.Take((':1.1', objectpath '/a'))");
}

TEST(Marshalling, AListOfCallManagersIsWrittenInOrder)
{
    EXPECT_EQ(written(QVariant::fromValue(DBusCallManagerList{object(":1.2", "/b"), object(":1.1", "/a")})),
        "/x test.Types.Take([(':1.2', objectpath '/b'), (':1.1', '/a')])");
}

TEST(Marshalling, AnEmptyListOfCallManagersIsWrittenWithItsType)
{
    EXPECT_EQ(written(QVariant::fromValue(DBusCallManagerList())), "/x test.Types.Take(@a(so) [])");
}

TEST(Marshalling, PropertiesAreWrittenAsVariants)
{
    const QVariantMapMap interfaces{{"test.A", {{"Number", 5U}, {"Text", "x"}}}, {"test.B", {}}};
    EXPECT_EQ(written(QVariant::fromValue(interfaces)),
        "/x test.Types.Take({'test.A': {'Number': <uint32 5>, 'Text': <'x'>}, 'test.B': {}})");
}

TEST(Marshalling, AnEmptyMapOfInterfacesIsWrittenAndNotLeftOut)
{
    EXPECT_EQ(written(QVariant::fromValue(QVariantMapMap())), "/x test.Types.Take(@a{sa{sv}} {})");
}

TEST(Marshalling, ObjectsAreWrittenByPath)
{
    const DBusObjectList objects{{QDBusObjectPath("/b"), {{"test.A", {{"Number", 5U}}}}}, {QDBusObjectPath("/a"), {}}};
    EXPECT_EQ(written(QVariant::fromValue(objects)),
        "/x test.Types.Take({objectpath '/a': @a{sa{sv}} {}, '/b': {'test.A': {'Number': <uint32 5>}}})");
}

TEST(Marshalling, AnObjectIsReadServiceFirst)
{
    EXPECT_EQ(qdbus_cast<DBusObject>(received("(':1.1', objectpath '/a')")), object(":1.1", "/a"));
}

TEST(Marshalling, ReadingIntoAListLeavesExactlyWhatWasRead)
{
    DBusCallManagerList list{object(":1.9", "/old"), object(":1.8", "/older")};
    const QDBusArgument argument = received("[(':1.2', objectpath '/b'), (':1.1', objectpath '/a')]");
    argument >> list;
    EXPECT_EQ(list, DBusCallManagerList({object(":1.2", "/b"), object(":1.1", "/a")}));
}

TEST(Marshalling, InterfacesAreReadAtBothLevels)
{
    const QVariantMapMap expected{{"test.A", {{"Number", 5U}, {"Text", "x"}}}, {"test.B", {}}};
    EXPECT_EQ(
        qdbus_cast<QVariantMapMap>(received("{'test.B': @a{sv} {}, 'test.A': {'Text': <'x'>, 'Number': <uint32 5>}}")),
        expected);
}

TEST(Marshalling, ObjectsAreReadByPath)
{
    const DBusObjectList expected{{QDBusObjectPath("/a"), {}}, {QDBusObjectPath("/b"), {{"test.A", {{"N", 5U}}}}}};
    EXPECT_EQ(
        qdbus_cast<DBusObjectList>(received("{objectpath '/b': {'test.A': {'N': <uint32 5>}}, '/a': @a{sa{sv}} {}}")),
        expected);
}
