// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "common/dbustypes.h"

#include "printers.h"

#include <QtCore/QSet>
#include <QtDBus/QDBusMetaType>
#include <gmock/gmock.h>

static DBusObject object(const char *service, const char *path)
{
    return {QString::fromLatin1(service), QDBusObjectPath(QString::fromLatin1(path))};
}

static QByteArray signatureOf(const char *metaType)
{
    return QByteArray(QDBusMetaType::typeToSignature(QMetaType::type(metaType)));
}

// A test that asks by name only: asking by type would register it.
TEST(DBusTypes, AreRegisteredWhenTheLibraryIsLoadedInOrder)
{
    const int objects = QMetaType::type("DBusObjectList");
    const int interfaces = QMetaType::type("QVariantMapMap");
    const int object = QMetaType::type("DBusObject");
    const int callManagers = QMetaType::type("DBusCallManagerList");
    EXPECT_GT(objects, int(QMetaType::User));
    EXPECT_GT(interfaces, objects);
    EXPECT_GT(object, interfaces);
    EXPECT_GT(callManagers, object);
}

TEST(DBusTypes, HaveTheirSignaturesByName)
{
    EXPECT_EQ(signatureOf("DBusObject"), "(so)");
    EXPECT_EQ(signatureOf("QVariantMapMap"), "a{sa{sv}}");
    EXPECT_EQ(signatureOf("DBusObjectList"), "a{oa{sa{sv}}}");
    EXPECT_EQ(signatureOf("DBusCallManagerList"), "a(so)");
}

TEST(DBusTypes, AreKnownToTheMetaTypeSystemUnderOneNameEach)
{
    EXPECT_STREQ(QMetaType::typeName(qMetaTypeId<DBusObject>()), "DBusObject");
    EXPECT_STREQ(QMetaType::typeName(qMetaTypeId<QVariantMapMap>()), "QVariantMapMap");
    EXPECT_STREQ(QMetaType::typeName(qMetaTypeId<DBusObjectList>()), "DBusObjectList");
    EXPECT_STREQ(QMetaType::typeName(qMetaTypeId<DBusCallManagerList>()), "DBusCallManagerList");
}

TEST(DBusTypes, CallManagersAndCallsAreObjectsUnderOtherNames)
{
    EXPECT_TRUE((std::is_same<DBusCallManager, DBusObject>::value));
    EXPECT_TRUE((std::is_same<DBusCallObject, DBusObject>::value));
    EXPECT_EQ(QMetaType::type("DBusCallManager"), int(QMetaType::UnknownType));
    EXPECT_EQ(QMetaType::type("DBusCallObject"), int(QMetaType::UnknownType));
}

TEST(DBusTypes, ContainersIterateThroughTheMetaTypeSystem)
{
    const QVariant list = QVariant::fromValue(DBusCallManagerList{object(":1.1", "/a"), object(":1.2", "/b")});
    ASSERT_TRUE(list.canConvert<QVariantList>());
    EXPECT_EQ(list.value<QSequentialIterable>().at(1).value<DBusObject>(), object(":1.2", "/b"));

    const QVariantMapMap interfaces{{QStringLiteral("i"), {{QStringLiteral("p"), 5}}}};
    const QVariant map = QVariant::fromValue(interfaces);
    ASSERT_TRUE(map.canConvert<QVariantHash>());
    EXPECT_EQ(map.value<QAssociativeIterable>().value(QStringLiteral("i")).toMap(), interfaces.first());

    const QVariant objects = QVariant::fromValue(DBusObjectList{{QDBusObjectPath("/a"), interfaces}});
    ASSERT_TRUE(objects.canConvert<QVariantHash>());
    EXPECT_EQ(objects.value<QAssociativeIterable>().begin().value().value<QVariantMapMap>(), interfaces);
}

TEST(DBusTypes, NameTheInterfacesOfACall)
{
    EXPECT_EQ(callInterfaceName, QLatin1String("zelkovar.Call.Call1"));
    EXPECT_EQ(dtmfInterfaceName, QLatin1String("zelkovar.Call.DTMF1"));
    EXPECT_EQ(audioControlInterfaceName, QLatin1String("zelkovar.Call.AudioControl1"));
}

TEST(DBusObject, PrintsAsServiceAtPath)
{
    EXPECT_EQ(object(":1.7", "/app/calls").toString(), QLatin1String(":1.7@/app/calls"));
}

TEST(DBusObject, PrintsPlaceMarkersInItsPartsAsTheyAre)
{
    EXPECT_EQ(object("%2", "/a").toString(), QLatin1String("%2@/a"));
}

TEST(DBusObject, IsEmptyAndPrintsAsAtByDefault)
{
    EXPECT_TRUE(DBusObject().service.isEmpty());
    EXPECT_TRUE(DBusObject().path.path().isEmpty());
    EXPECT_EQ(DBusObject().toString(), QLatin1String("@"));
}

TEST(DBusObject, IsEqualWhenServiceAndPathAre)
{
    EXPECT_TRUE(object(":1.1", "/a") == object(":1.1", "/a"));
    EXPECT_FALSE(object(":1.1", "/a") == object(":1.2", "/a"));
    EXPECT_FALSE(object(":1.1", "/a") == object(":1.1", "/b"));
}

TEST(DBusObject, IsOneKeyForAPairWrittenTwiceAndAnotherForAnotherOwner)
{
    const QSet<DBusObject> set{object(":1.1", "/a"), object(":1.1", "/a"), object(":1.2", "/a")};
    EXPECT_EQ(set.size(), 2);
    EXPECT_TRUE(set.contains(object(":1.1", "/a")));
    EXPECT_TRUE(set.contains(object(":1.2", "/a")));
    EXPECT_FALSE(set.contains(object(":1.1", "/b")));
}

TEST(DBusObject, HashesEqualWhenEqualForEverySeed)
{
    for (const uint seed : {0U, 1U, 0x80000000U, 0xffffffffU})
        EXPECT_EQ(qHash(object(":1.1", "/a"), seed), qHash(object(":1.1", "/a"), seed));
}

TEST(DBusObject, HashRotatesTheServiceAndTakesTheSeedOnceAtTheEnd)
{
    const uint service = qHash(QStringLiteral(":1.1"), 0U);
    const uint path = qHash(QStringLiteral("/a"), 0U);
    const uint rotated = (service << 16) | (service >> 16);
    ASSERT_NE(rotated, service);
    for (const uint seed : {0U, 1U, 0x12345678U, 0xffffffffU})
        EXPECT_EQ(qHash(object(":1.1", "/a"), seed), rotated ^ path ^ seed);
}

TEST(DBusObject, HashesWithSeedZeroWhenNoneIsGiven)
{
    EXPECT_EQ(qHash(object(":1.1", "/a")), qHash(object(":1.1", "/a"), 0));
}

TEST(DBusObject, HashesDifferentlyWithItsTextsSwapped)
{
    EXPECT_NE(qHash(object("/a", "/b"), 0), qHash(object("/b", "/a"), 0));
}
