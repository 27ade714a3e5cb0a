// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "waitfor.h"

#include <QtCore/QMetaProperty>
#include <QtCore/QSequentialIterable>
#include <QtCore/QVector>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusMetaType>
#include <QtDBus/QDBusPendingReply>
#include <audiodevice.h>
#include <gmock/gmock.h>

namespace {

AudioDevice speaker()
{
    AudioDevice device;
    device.id = QStringLiteral("speaker");
    device.type = AudioDevice::Speaker;
    device.isOutput = true;
    device.name = QString::fromUtf8("Lautsprecher, gro\xc3\x9f");
    device.properties = {{QStringLiteral("gain"), 0.5}, {QStringLiteral("modes"), QStringList{"a", "b"}}};
    return device;
}

AudioDevice microphone()
{
    AudioDevice device;
    device.id = QStringLiteral("mic0");
    device.type = 4711;
    device.isInput = true;
    return device;
}

/** Gives back what it gets, over the bus. */
class Mirror : public QObject
{
    Q_OBJECT

public Q_SLOTS:
    AudioDeviceList reflect(const AudioDeviceList &devices)
    {
        received = devices;
        return devices;
    }

public:
    /** What came last. */
    AudioDeviceList received{AudioDevice()};
};

} // namespace

// Only names are used here: asking for the types would register them.
TEST(AudioDeviceList, IsRegisteredByNameWhenTheLibraryIsLoaded)
{
    const int list = QMetaType::type("AudioDeviceList");
    ASSERT_NE(list, QMetaType::UnknownType);
    EXPECT_STREQ(QMetaType::typeName(list), "AudioDeviceList");
    EXPECT_STREQ(QDBusMetaType::typeToSignature(list), "a(sibbsa{sv})");
}

TEST(AudioDevice, IsRegisteredByNameWhenTheLibraryIsLoaded)
{
    const int device = QMetaType::type("AudioDevice");
    ASSERT_NE(device, QMetaType::UnknownType);
    EXPECT_STREQ(QMetaType::typeName(device), "AudioDevice");
    EXPECT_STREQ(QDBusMetaType::typeToSignature(device), "(sibbsa{sv})");
}

TEST(AudioDeviceList, TypeHasTheRegisteredName)
{
    EXPECT_EQ(qMetaTypeId<AudioDeviceList>(), QMetaType::type("AudioDeviceList"));
}

TEST(AudioDevice, IsAnUnknownKindOfDeviceAtFirst)
{
    const AudioDevice device;
    EXPECT_EQ(device.type, AudioDevice::Unknown);
    EXPECT_FALSE(device.isInput);
    EXPECT_FALSE(device.isOutput);
}

TEST(AudioDevice, DiffersInEveryMember)
{
    const QVector<void (*)(AudioDevice &)> changes{
        [](AudioDevice &device) { device.id += QLatin1Char('x'); },
        [](AudioDevice &device) { ++device.type; },
        [](AudioDevice &device) { device.isInput = !device.isInput; },
        [](AudioDevice &device) { device.isOutput = !device.isOutput; },
        [](AudioDevice &device) { device.name += QLatin1Char('x'); },
        [](AudioDevice &device) { device.properties.clear(); },
    };
    EXPECT_TRUE(speaker() == speaker());
    for (int i = 0; i < changes.size(); ++i) {
        AudioDevice device = speaker();
        changes[i](device);
        EXPECT_TRUE(device != speaker()) << "member " << i;
    }
}

TEST(AudioDevice, MembersCanBeReadThroughTheMetaObject)
{
    const AudioDevice device = speaker();
    QVariantList members;
    const QMetaObject &meta = AudioDevice::staticMetaObject;
    for (int i = 0; i < meta.propertyCount(); ++i)
        members.append(meta.property(i).readOnGadget(&device));
    EXPECT_EQ(members,
        (QVariantList{device.id, device.type, device.isInput, device.isOutput, device.name, device.properties}));
}

TEST(AudioDeviceList, CanBeIteratedInsideAVariant)
{
    const QVariant variant = QVariant::fromValue(AudioDeviceList{speaker(), microphone()});
    QStringList ids;
    for (const QVariant &device : variant.value<QSequentialIterable>())
        ids.append(device.value<AudioDevice>().id);
    EXPECT_EQ(ids, (QStringList{"speaker", "mic0"}));
}

TEST(AudioDeviceList, TravelsOverTheBusUnchanged)
{
    Mirror mirror;
    QDBusConnection host = QDBusConnection::sessionBus();
    ASSERT_TRUE(host.registerObject(QStringLiteral("/mirror"), &mirror, QDBusConnection::ExportAllSlots));
    const auto client = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("client"));

    for (const AudioDeviceList &devices : {AudioDeviceList{speaker(), microphone()}, AudioDeviceList()}) {
        QDBusMessage call = QDBusMessage::createMethodCall(
            host.baseService(), QStringLiteral("/mirror"), QString(), QStringLiteral("reflect"));
        call << QVariant::fromValue(devices);
        const QDBusPendingReply<AudioDeviceList> reply = client.asyncCall(call);
        ASSERT_TRUE(waitFor([&] { return reply.isFinished(); }));

        ASSERT_TRUE(reply.isValid()) << reply.error().message().toStdString();
        EXPECT_EQ(reply.reply().signature().toStdString(), "a(sibbsa{sv})");
        EXPECT_EQ(mirror.received, devices);
        EXPECT_EQ(reply.value(), devices);
    }
    QDBusConnection::disconnectFromBus(QStringLiteral("client"));
}

#include "audiodevice_test.moc"
