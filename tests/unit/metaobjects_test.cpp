// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// What other programs can see of the classes: members in their order, with their parameters' names.

#include "audiocontrolproxy.h"
#include "callproxy.h"
#include "calls/callhandler.h"
#include "calls/callprovider.h"
#include "callserviceadaptor.h"
#include "callservicemanageradaptor.h"
#include "dbusobjectmanagerproxy.h"
#include "dtmfproxy.h"
#include "goldenfile.h"
#include "objectmanager/objectmanager.h"
#include "plugin/callproviderfactory.h"
#include "service/callservice.h"

#include <QtCore/QMetaMethod>
#include <QtCore/QMetaProperty>
#include <cstring>
#include <gmock/gmock.h>

using testing::ElementsAre;

// A parameter whose type the meta-type system knows under another name, or not at all, says so.
static std::string parameter(const QMetaMethod &method, int i)
{
    const std::string declared = method.parameterTypes().at(i).toStdString();
    const char *known = QMetaType::typeName(method.parameterType(i));
    const std::string registered = known ? known : "unregistered";
    const std::string name = method.parameterNames().at(i).toStdString();
    return declared + (registered == declared ? "" : "=" + registered) + (name.empty() ? "" : " " + name);
}

static std::string describe(const QMetaMethod &method)
{
    static const char *const kinds[] = {"method", "signal", "slot", "constructor"};
    static const char *const accesses[] = {"private ", "protected ", ""};
    std::string text = accesses[method.access()];
    text += kinds[method.methodType()];
    text += ' ' + std::string(method.typeName()) + ' ' + method.name().toStdString() + '(';
    for (int i = 0; i < method.parameterCount(); ++i)
        text += (i ? ", " : "") + parameter(method, i);
    return text + ((method.attributes() & QMetaMethod::Cloned) ? ") cloned" : ")");
}

static std::string describe(const QMetaProperty &property)
{
    return std::string("property ") + property.typeName() + ' ' + property.name()
        + (property.isReadable() ? " read" : "") + (property.isWritable() ? " write" : "")
        + (property.hasNotifySignal() ? " notify" : "");
}

// Of the class itself, without what it inherits.
static std::string describe(const QMetaObject &type)
{
    std::string text = std::string(type.className()) + " : " + type.superClass()->className() + "\n";
    for (int i = type.classInfoOffset(); i < type.classInfoCount(); ++i)
        text += std::string("    info ") + type.classInfo(i).name() + "\n" + type.classInfo(i).value() + "\n";
    for (int i = type.methodOffset(); i < type.methodCount(); ++i)
        text += "    " + describe(type.method(i)) + "\n";
    for (int i = type.propertyOffset(); i < type.propertyCount(); ++i)
        text += "    " + describe(type.property(i)) + "\n";
    return text;
}

TEST(MetaObjects, AreAsWrittenDown)
{
    std::string text;
    for (const QMetaObject *type :
        {&CallProviderFactory::staticMetaObject, &CallService::staticMetaObject, &CallServiceAdaptor::staticMetaObject,
            &CallServiceManagerAdaptor::staticMetaObject, &ObjectManager::staticMetaObject,
            &DBusObjectManagerProxy::staticMetaObject, &CallProvider::staticMetaObject, &CallHandler::staticMetaObject,
            &CallProxy::staticMetaObject, &DTMFProxy::staticMetaObject, &AudioControlProxy::staticMetaObject})
        text += describe(*type);
    EXPECT_EQ(text, goldenText(GOLDEN "/metaobjects.txt"));
}

TEST(MetaObjects, TheAliasNamesOfARemoteObjectStayUnknownToTheMetaTypeSystem)
{
    EXPECT_EQ(QMetaType::type("DBusCallObject"), int(QMetaType::UnknownType));
    EXPECT_EQ(QMetaType::type("DBusCallManager"), int(QMetaType::UnknownType));
}

// --- Adaptors

class OpenedAdaptor : public CallServiceManagerAdaptor
{
public:
    using CallServiceManagerAdaptor::autoRelaySignals;
    using CallServiceManagerAdaptor::CallServiceManagerAdaptor;
};

// The other adaptor has no signals, and without any the flag cannot be set.
TEST(CallServiceManagerAdaptor, BindsToTheSignalsOfTheService)
{
    CallService service(nullptr);
    const OpenedAdaptor adaptor(&service);
    EXPECT_TRUE(adaptor.autoRelaySignals());
}

TEST(CallService, OwnsItsTwoAdaptorsServiceBeforeManager)
{
    const CallService service(nullptr);
    const QList<QDBusAbstractAdaptor *> adaptors = service.findChildren<QDBusAbstractAdaptor *>();
    ASSERT_EQ(adaptors.size(), 2);
    EXPECT_STREQ(adaptors.at(0)->metaObject()->className(), "CallServiceAdaptor");
    EXPECT_STREQ(adaptors.at(1)->metaObject()->className(), "CallServiceManagerAdaptor");
}

// --- The host's interfaces

TEST(CallProviderFactory, CastsToItsNameAndTheHostsPluginInterfaceAndNothingElse)
{
    CallProviderFactory factory;
    EXPECT_EQ(factory.qt_metacast("CallProviderFactory"), &factory);
    EXPECT_EQ(factory.qt_metacast("org.tarnwickle.voicecall.ManagerPlugin/1.0"),
        static_cast<AbstractVoiceCallManagerPlugin *>(&factory));
    EXPECT_EQ(factory.qt_metacast("QObject"), static_cast<QObject *>(&factory));
    EXPECT_EQ(factory.qt_metacast("org.tarnwickle.voicecall.ringlet"), nullptr);
    EXPECT_EQ(factory.qt_metacast("CallProvider"), nullptr);
}

// Where a virtual operation stands in its class's table, by the common C++ binary interface: the pointer to it says so.
template <typename Member>
static int placeOf(Member member)
{
    std::ptrdiff_t place = 0;
    std::memcpy(&place, &member, sizeof place);
    return int(place / std::ptrdiff_t(sizeof(void *)));
}

// How far behind the first one each stands.
template <typename First, typename... Others>
static std::vector<int> order(First first, Others... others)
{
    return {placeOf(others) - placeOf(first)...};
}

// Plug-ins that are built already find the operations by their places.
TEST(HostInterfaces, KeepTheOrderOfTheirOperations)
{
    using Host = VoiceCallManagerInterface;
    EXPECT_THAT(order(&Host::addProvider, &Host::removeProvider), ElementsAre(1));
    EXPECT_THAT(order(&Host::selectInputDevice, &Host::selectOutputDevice), ElementsAre(1));

    using Plugin = AbstractVoiceCallManagerPlugin;
    EXPECT_THAT(order(&Plugin::pluginId, &Plugin::initialize, &Plugin::configure, &Plugin::start, &Plugin::suspend,
                    &Plugin::resume, &Plugin::finalize),
        ElementsAre(1, 2, 3, 4, 5, 6));

    using Provider = AbstractVoiceCallProvider;
    EXPECT_THAT(order(&Provider::providerId, &Provider::providerType, &Provider::voiceCalls, &Provider::errorString,
                    &Provider::dial),
        ElementsAre(1, 2, 3, 4));

    using Call = AbstractVoiceCallHandler;
    EXPECT_THAT(order(&Call::provider, &Call::handlerId, &Call::lineId, &Call::startedAt, &Call::duration,
                    &Call::isIncoming, &Call::isMultiparty, &Call::isEmergency, &Call::isForwarded, &Call::isRemoteHeld,
                    &Call::parentHandlerId, &Call::childCalls, &Call::uri, &Call::appId, &Call::supportsDtmf,
                    &Call::supportsMultiparty, &Call::holdable, &Call::status, &Call::isOngoing, &Call::answer,
                    &Call::hangup, &Call::hold, &Call::deflect, &Call::sendDtmf, &Call::merge, &Call::split),
        ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25));
}
