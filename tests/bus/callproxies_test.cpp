// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "audiocontrolproxy.h"
#include "callproxy.h"
#include "calls/callhandler_p.h"
#include "dtmfproxy.h"
#include "plugin/callproviderfactory.h"
#include "printers.h"
#include "scriptedapplication.h"
#include "waitfor.h"

#include <QtCore/QMetaProperty>
#include <QtCore/QSequentialIterable>
#include <QtTest/QSignalSpy>
#include <gmock/gmock.h>
#include <memory>

static QStringList propertiesOf(const QMetaObject &type)
{
    QStringList properties;
    for (int i = type.propertyOffset(); i < type.propertyCount(); ++i) {
        const QMetaProperty property = type.property(i);
        properties << QString("%1 %2%3%4")
                          .arg(property.typeName(), property.name(), property.isReadable() ? " read" : "",
                              property.isWritable() ? " write" : "");
    }
    return properties;
}

TEST(MetaObjects, OfAudioDevicesAreTheHostsUnderTheirOwnNames)
{
    const int device = QMetaType::type("AudioDevice");
    EXPECT_EQ(device, qMetaTypeId<AudioDevice>());
    const QMetaType::TypeFlags flags = QMetaType::typeFlags(device);
    EXPECT_TRUE(flags & QMetaType::NeedsConstruction);
    EXPECT_TRUE(flags & QMetaType::NeedsDestruction);
    EXPECT_TRUE(flags & QMetaType::IsGadget);
    EXPECT_EQ(propertiesOf(AudioDevice::staticMetaObject),
        QStringList({"QString id read write", "int type read write", "bool isInput read write",
            "bool isOutput read write", "QString name read write", "QVariantMap properties read write"}));

    const int list = qMetaTypeId<AudioDeviceList>();
    EXPECT_STREQ(QMetaType::typeName(list), "AudioDeviceList");
    EXPECT_TRUE(QMetaType::typeFlags(list) & QMetaType::MovableType);
    const QVariant two = QVariant::fromValue(AudioDeviceList({AudioDevice(), AudioDevice()}));
    ASSERT_TRUE(two.canConvert<QVariantList>());
    EXPECT_EQ(two.value<QSequentialIterable>().size(), 2);
}

// --- What goes over the bus

class CallProxiesTest : public testing::Test
{
protected:
    QStringList commands()
    {
        EXPECT_TRUE(application.settle());
        return application.commands();
    }

    template <typename Proxy>
    static void expectAddressing(const Proxy &proxy, const QString &service, const char *interface)
    {
        EXPECT_EQ(proxy.service(), service);
        EXPECT_EQ(proxy.path(), "/c");
        EXPECT_EQ(proxy.interface(), interface);
        EXPECT_STREQ(Proxy::staticInterfaceName(), interface);
        EXPECT_EQ(proxy.connection().name(), QDBusConnection::sessionBus().name());
        EXPECT_EQ(proxy.parent(), nullptr);
    }

    // On the bus so that settle() has something to call.
    CallProviderFactory factory;
    ScriptedApplication application;
    CallProxy call{application.name(), "/c", QDBusConnection::sessionBus()};
    DTMFProxy tones{application.name(), "/c", QDBusConnection::sessionBus()};
    AudioControlProxy audio{application.name(), "/c", QDBusConnection::sessionBus()};

    void SetUp() override { ASSERT_TRUE(factory.initialize()); }
};

TEST_F(CallProxiesTest, AddressOneInterfaceOfOneObject)
{
    expectAddressing(call, application.name(), "zelkovar.Call.Call1");
    expectAddressing(tones, application.name(), "zelkovar.Call.DTMF1");
    expectAddressing(audio, application.name(), "zelkovar.Call.AudioControl1");
}

TEST_F(CallProxiesTest, AcceptHasNoArgument)
{
    call.Accept();
    EXPECT_EQ(commands(), QStringList({"/c zelkovar.Call.Call1.Accept()"}));
}

TEST_F(CallProxiesTest, RejectHasOneUnsignedNumber)
{
    call.Reject(1);
    call.Reject(0xffffffff);
    EXPECT_EQ(commands(),
        QStringList({"/c zelkovar.Call.Call1.Reject(uint32 1)", "/c zelkovar.Call.Call1.Reject(uint32 4294967295)"}));
}

TEST_F(CallProxiesTest, SetHoldHasOneFlag)
{
    call.SetHold(true);
    call.SetHold(false);
    EXPECT_EQ(
        commands(), QStringList({"/c zelkovar.Call.Call1.SetHold(true)", "/c zelkovar.Call.Call1.SetHold(false)"}));
}

TEST_F(CallProxiesTest, SendDtmfHasOneText)
{
    tones.SendDTMF("12#");
    tones.SendDTMF(QString());
    EXPECT_EQ(
        commands(), QStringList({"/c zelkovar.Call.DTMF1.SendDTMF('12#')", "/c zelkovar.Call.DTMF1.SendDTMF('')"}));
}

TEST_F(CallProxiesTest, UpdateAudioRouteHasMuteThenInputThenOutput)
{
    audio.UpdateAudioRoute(true, "in", "out");
    EXPECT_EQ(commands(), QStringList({"/c zelkovar.Call.AudioControl1.UpdateAudioRoute(true, 'in', 'out')"}));
}

TEST_F(CallProxiesTest, UpdateAudioRouteStateHasTheDevicesBeforeTheRest)
{
    AudioDevice device;
    device.id = "ear";
    device.type = -1;
    device.isInput = true;
    device.name = "Ear";
    device.properties = {{"k", "v"}};
    audio.UpdateAudioRouteState({device}, false, "in", "out");
    audio.UpdateAudioRouteState({}, true, "", "");
    EXPECT_EQ(commands(),
        QStringList({"/c zelkovar.Call.AudioControl1.UpdateAudioRouteState([('ear', -1, true, false, 'Ear', "
                     "{'k': <'v'>})], false, 'in', 'out')",
            "/c zelkovar.Call.AudioControl1.UpdateAudioRouteState(@a(sibbsa{sv}) [], true, '', '')"}));
}

TEST_F(CallProxiesTest, MethodsCanBeInvokedByNameAndGiveTheReplyToBe)
{
    QDBusPendingReply<> reply = QDBusMessage::createError(QDBusError::Failed, "unset");
    ASSERT_TRUE(QMetaObject::invokeMethod(&call, "Reject", Q_RETURN_ARG(QDBusPendingReply<>, reply), Q_ARG(uint, 7)));
    EXPECT_TRUE(waitFor([&] { return reply.isFinished(); }));
    EXPECT_TRUE(reply.isValid());
    ASSERT_TRUE(QMetaObject::invokeMethod(&call, "Accept"));
    ASSERT_TRUE(QMetaObject::invokeMethod(&call, "SetHold", Q_ARG(bool, true)));
    ASSERT_TRUE(QMetaObject::invokeMethod(&tones, "SendDTMF", Q_ARG(QString, "1")));
    ASSERT_TRUE(QMetaObject::invokeMethod(
        &audio, "UpdateAudioRoute", Q_ARG(bool, true), Q_ARG(QString, "i"), Q_ARG(QString, "o")));
    ASSERT_TRUE(QMetaObject::invokeMethod(&audio, "UpdateAudioRouteState", Q_ARG(AudioDeviceList, AudioDeviceList()),
        Q_ARG(bool, true), Q_ARG(QString, "i"), Q_ARG(QString, "o")));
    EXPECT_EQ(commands(),
        QStringList({"/c zelkovar.Call.Call1.Reject(uint32 7)", "/c zelkovar.Call.Call1.Accept()",
            "/c zelkovar.Call.Call1.SetHold(true)", "/c zelkovar.Call.DTMF1.SendDTMF('1')",
            "/c zelkovar.Call.AudioControl1.UpdateAudioRoute(true, 'i', 'o')",
            "/c zelkovar.Call.AudioControl1.UpdateAudioRouteState(@a(sibbsa{sv}) [], true, 'i', 'o')"}));
}

TEST_F(CallProxiesTest, AnErrorShowsInTheReplyAlone)
{
    application.refuseCommands("org.example.Refused");
    const QDBusPendingReply<> reply = call.Accept();
    EXPECT_TRUE(waitFor([&] { return reply.isFinished(); }));
    EXPECT_EQ(reply.error().name(), "org.example.Refused");
    EXPECT_TRUE(call.isValid());
}

TEST_F(CallProxiesTest, DeliverSignalsOfTheirSignatureOnly)
{
    QSignalSpy status(&call, &CallProxy::StatusChanged);
    QSignalSpy route(&audio, &AudioControlProxy::RequestAudioRoute);
    QSignalSpy mute(&audio, &AudioControlProxy::RequestMute);
    ASSERT_TRUE(application.settle());
    application.signal("/c", "zelkovar.Call.Call1", "StatusChanged", "int32 5");
    application.signal("/c", "zelkovar.Call.AudioControl1", "RequestAudioRoute", "'in'");
    application.signal("/c", "zelkovar.Call.AudioControl1", "RequestMute", "1");
    ASSERT_TRUE(application.settle());
    EXPECT_EQ(status.size() + route.size() + mute.size(), 0);

    application.signal("/c", "zelkovar.Call.Call1", "StatusChanged", "uint32 5");
    application.signal("/c", "zelkovar.Call.AudioControl1", "RequestAudioRoute", "'in', 'out'");
    application.signal("/c", "zelkovar.Call.AudioControl1", "RequestMute", "true");
    ASSERT_TRUE(application.settle());
    ASSERT_EQ(status.size(), 1);
    EXPECT_EQ(status.first(), QVariantList({5U}));
    ASSERT_EQ(route.size(), 1);
    EXPECT_EQ(route.first(), QVariantList({"in", "out"}));
    ASSERT_EQ(mute.size(), 1);
    EXPECT_EQ(mute.first(), QVariantList({true}));
}

// --- Property accessors

TEST_F(CallProxiesTest, PropertyAccessorsReadFromTheObject)
{
    for (const char *name : {"LocalHandle", "LocalName", "RemoteHandle", "RemoteName", "Uri"})
        application.setProperty(name, QString("'the %1'").arg(name));
    application.setProperty("Holdable", "true");
    application.setProperty("Incoming", "true");
    application.setProperty("Status", "uint32 5");
    EXPECT_TRUE(call.holdable());
    EXPECT_TRUE(call.incoming());
    EXPECT_EQ(call.localHandle(), "the LocalHandle");
    EXPECT_EQ(call.localName(), "the LocalName");
    EXPECT_EQ(call.remoteHandle(), "the RemoteHandle");
    EXPECT_EQ(call.remoteName(), "the RemoteName");
    EXPECT_EQ(call.status(), 5U);
    EXPECT_EQ(call.uri(), "the Uri");
    EXPECT_EQ(
        application.commands().value(0), "/c org.freedesktop.DBus.Properties.Get('zelkovar.Call.Call1', 'Holdable')");
    EXPECT_EQ(application.commands().size(), 8) << "one read each, nothing is kept";
}

TEST_F(CallProxiesTest, PropertiesAreReadAnewAndByNameToo)
{
    application.setProperty("Status", "uint32 5");
    EXPECT_EQ(call.property("Status"), QVariant(5U));
    application.setProperty("Status", "uint32 7");
    EXPECT_EQ(call.property("Status"), QVariant(7U));
    EXPECT_FALSE(call.setProperty("Status", 1U));
}

static void expectDefaults(const CallProxy &call)
{
    EXPECT_FALSE(call.holdable());
    EXPECT_FALSE(call.incoming());
    EXPECT_EQ(call.localHandle(), "");
    EXPECT_EQ(call.localName(), "");
    EXPECT_EQ(call.remoteHandle(), "");
    EXPECT_EQ(call.remoteName(), "");
    EXPECT_EQ(call.status(), 0U);
    EXPECT_EQ(call.uri(), "");
}

TEST_F(CallProxiesTest, PropertiesThatAreRefusedReadAsFalseZeroOrEmpty)
{
    application.refuseCommands("org.freedesktop.DBus.Error.UnknownProperty");
    expectDefaults(call);
}

TEST_F(CallProxiesTest, PropertiesOfAVanishedApplicationReadAsFalseZeroOrEmpty)
{
    application.leave();
    expectDefaults(call);
}

TEST_F(CallProxiesTest, PropertiesOfAnotherTypeReadAsFalseZeroOrEmpty)
{
    const QStringList names
        = {"Holdable", "Incoming", "LocalHandle", "LocalName", "RemoteHandle", "RemoteName", "Status", "Uri"};
    for (const char *value : {"[1, 2]", "{'a': <1>}", "(1, 'x')"}) {
        for (const QString &name : names)
            application.setProperty(name, value);
        SCOPED_TRACE(value);
        expectDefaults(call);
    }
}

// --- Their end

namespace {

/** Tells of the end of its last copy. */
class Witness
{
public:
    Witness() = default;
    explicit Witness(QStringList *ends) : last(new Last{ends}) { }

private:
    struct Last
    {
        ~Last() { ends->append("properties"); }
        QStringList *ends;
    };

    std::shared_ptr<Last> last;
};

} // namespace

Q_DECLARE_METATYPE(Witness)

TEST(CallHandlerRecord, ReleasesTheProxiesLastMadeFirstAndThenTheRest)
{
    const DBusCallObject object(":1.1", QDBusObjectPath("/c"));
    const QDBusConnection bus = QDBusConnection::sessionBus();
    QStringList ends;
    {
        CallHandlerPrivate record(nullptr, object, "h1", nullptr);
        record.callProperties = {{"Other", QVariant::fromValue(Witness(&ends))}};
        record.callProxy.reset(new CallProxy(object.service, "/c", bus));
        record.dtmfProxy.reset(new DTMFProxy(object.service, "/c", bus));
        record.audioControlProxy.reset(new AudioControlProxy(object.service, "/c", bus));
        QObject::connect(record.callProxy.data(), &QObject::destroyed, [&] { ends.append("call"); });
        QObject::connect(record.dtmfProxy.data(), &QObject::destroyed, [&] { ends.append("tones"); });
        QObject::connect(record.audioControlProxy.data(), &QObject::destroyed, [&] { ends.append("audio"); });
    }
    EXPECT_EQ(ends, QStringList({"audio", "tones", "call", "properties"}));
}
