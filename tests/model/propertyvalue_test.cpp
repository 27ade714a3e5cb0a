// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "propertyvalue.h"

#include "busmonitor.h"

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <gmock/gmock.h>

using namespace testing;

/** Takes the properties that a message brings, as the bus layer reads them. */
class PropertyReader : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.example.Properties")

public:
    QVariantMap properties;

public Q_SLOTS:
    void take(const QDBusMessage &message) { message.arguments().constFirst().value<QDBusArgument>() >> properties; }
};

// What the application sends of each value, received by an object of this process.
static QVariantMap received()
{
    PropertyReader reader;
    QDBusConnection bus = QDBusConnection::sessionBus();
    bus.registerObject(QStringLiteral("/reader"), &reader, QDBusConnection::ExportAllSlots);

    Properties properties;
    for (const PropertyValue &value : propertyValues())
        properties.emplace_back(value.text, &value);
    const BusMessage message = busMessage(
        dbus_message_new_method_call(bus.baseService().toUtf8(), "/reader", "org.example.Properties", "take"));
    ArgumentWriter(message.get()).properties(properties);
    BusMonitor monitor(bus.baseService().toStdString());
    BusPeer sender;
    monitor.waitForReply(sender, sender.send(message.get()));
    bus.unregisterObject(QStringLiteral("/reader"));
    return reader.properties;
}

TEST(PropertyValues, AreReadAsTheirRowsSay)
{
    const QVariantMap properties = received();
    ASSERT_THAT(properties.size(), Eq(int(propertyValues().size())));
    for (const PropertyValue &value : propertyValues()) {
        const QVariant variant = properties[QString::fromUtf8(value.text)];
        EXPECT_THAT(variant.toBool(), Eq(value.asBool)) << value.text;
        EXPECT_THAT(variant.toUInt(), Eq(value.asNumber)) << value.text;
        EXPECT_THAT(variant.toString().toStdString(), Eq(value.asText)) << value.text;
    }
}

#include "propertyvalue_test.moc"
