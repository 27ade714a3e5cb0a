// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "busserver/plainvalue.h"

#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusObjectPath>
#include <QtDBus/QDBusSignature>
#include <QtDBus/QDBusUnixFileDescriptor>
#include <QtDBus/QDBusVariant>
#include <gmock/gmock.h>

static QVariant variantOf(const QVariant &value) { return QVariant::fromValue(QDBusVariant(value)); }

TEST(PlainValues, AreThoseThatOutliveTheirMessageAndCanBeSent)
{
    for (const QVariant &value :
        {QVariant(1), QVariant(true), QVariant("x"), QVariant(1.5), QVariant::fromValue(uchar(1)),
            QVariant::fromValue(short(1)), QVariant(QStringList{"a"}), QVariant(QByteArray("a")),
            QVariant::fromValue(QDBusObjectPath("/a")), QVariant::fromValue(QDBusSignature("a{sv}"))})
        EXPECT_TRUE(PlainValue::isPlain(value)) << value.typeName();
    for (const QVariant &value : {QVariant(), QVariant::fromValue(QDBusSignature("")),
             QVariant::fromValue(QDBusArgument()), QVariant::fromValue(QDBusUnixFileDescriptor()), variantOf(1)})
        EXPECT_FALSE(PlainValue::isPlain(value)) << value.typeName();
    EXPECT_TRUE(PlainValue::arePlain({{"a", 1}, {"b", "x"}}));
    EXPECT_FALSE(PlainValue::arePlain({{"a", 1}, {"b", QVariant::fromValue(QDBusUnixFileDescriptor())}}));
}

TEST(PlainValues, AreTakenOutOfVariants)
{
    const QVariantMap values = {{"plain", 1}, {"once", variantOf("x")}, {"twice", variantOf(variantOf(2))},
        {"hidden", variantOf(variantOf(QVariant::fromValue(QDBusUnixFileDescriptor())))},
        {"empty", variantOf(QVariant::fromValue(QDBusSignature("")))},
        {"unread", QVariant::fromValue(QDBusArgument())}};
    EXPECT_EQ(PlainValue::plain(values), (QVariantMap{{"plain", 1}, {"once", "x"}, {"twice", 2}}));
}
