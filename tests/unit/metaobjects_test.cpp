// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// What other programs can see of the classes: members in their order, with their parameters' names.

#include "callserviceadaptor.h"
#include "callservicemanageradaptor.h"
#include "dbusobjectmanagerproxy.h"
#include "objectmanager/objectmanager.h"
#include "plugin/callproviderfactory.h"
#include "service/callservice.h"

#include <QtCore/QMetaMethod>
#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

static std::string describe(const QMetaMethod &method)
{
    static const char *const kinds[] = {"method", "signal", "slot", "constructor"};
    static const char *const accesses[] = {"private ", "protected ", ""};
    std::string text = accesses[method.access()];
    text += kinds[method.methodType()];
    text += ' ' + std::string(method.typeName()) + ' ' + method.name().toStdString() + '(';
    for (int i = 0; i < method.parameterCount(); ++i)
        text += (i ? ", " : "") + method.parameterTypes().at(i).toStdString() + ' '
            + method.parameterNames().at(i).toStdString();
    return text + ')';
}

// Of the class itself, without what it inherits.
static std::vector<std::string> membersOf(const QMetaObject &type)
{
    std::vector<std::string> members;
    for (int i = type.methodOffset(); i < type.methodCount(); ++i)
        members.push_back(describe(type.method(i)));
    return members;
}

static std::vector<std::string> propertiesOf(const QMetaObject &type)
{
    std::vector<std::string> properties;
    for (int i = type.propertyOffset(); i < type.propertyCount(); ++i)
        properties.emplace_back(type.property(i).name());
    return properties;
}

static std::vector<std::pair<std::string, std::string>> classInfoOf(const QMetaObject &type)
{
    std::vector<std::pair<std::string, std::string>> entries;
    for (int i = type.classInfoOffset(); i < type.classInfoCount(); ++i)
        entries.emplace_back(type.classInfo(i).name(), type.classInfo(i).value());
    return entries;
}

class OpenedAdaptor : public CallServiceManagerAdaptor
{
public:
    using CallServiceManagerAdaptor::autoRelaySignals;
    using CallServiceManagerAdaptor::CallServiceManagerAdaptor;
};

TEST(CallServiceAdaptorMetaObject, HasTheOneMethod)
{
    EXPECT_THAT(membersOf(CallServiceAdaptor::staticMetaObject),
        ElementsAre("slot void RegisterCallManager(QDBusObjectPath path)"));
    EXPECT_THAT(propertiesOf(CallServiceAdaptor::staticMetaObject), IsEmpty());
    EXPECT_STREQ(CallServiceAdaptor::staticMetaObject.superClass()->className(), "QDBusAbstractAdaptor");
}

TEST(CallServiceAdaptorMetaObject, CarriesInterfaceNameAndIntrospectionTextInThisOrder)
{
    EXPECT_THAT(classInfoOf(CallServiceAdaptor::staticMetaObject),
        ElementsAre(std::make_pair("D-Bus Interface", "zelkovar.Call.Service1"),
            std::make_pair("D-Bus Introspection",
                "  <interface name=\"zelkovar.Call.Service1\">\n"
                "    <method name=\"RegisterCallManager\">\n"
                "      <arg direction=\"in\" type=\"o\" name=\"path\"/>\n"
                "    </method>\n"
                "  </interface>\n")));
}

TEST(CallServiceManagerAdaptorMetaObject, HasSignalsBeforeTheMethod)
{
    EXPECT_THAT(membersOf(CallServiceManagerAdaptor::staticMetaObject),
        ElementsAre("signal void InterfacesAdded(QString service, QDBusObjectPath path, QVariantMapMap interfaces)",
            "signal void InterfacesRemoved(QString service, QDBusObjectPath path, QStringList interfaces)",
            "slot DBusCallManagerList ListCallManagers()"));
    EXPECT_THAT(propertiesOf(CallServiceManagerAdaptor::staticMetaObject), IsEmpty());
    EXPECT_STREQ(CallServiceManagerAdaptor::staticMetaObject.superClass()->className(), "QDBusAbstractAdaptor");
}

TEST(CallServiceManagerAdaptorMetaObject, CarriesInterfaceNameAndIntrospectionTextInThisOrder)
{
    EXPECT_THAT(classInfoOf(CallServiceManagerAdaptor::staticMetaObject),
        ElementsAre(std::make_pair("D-Bus Interface", "zelkovar.Call.ServiceManager1"),
            std::make_pair("D-Bus Introspection",
                "  <interface name=\"zelkovar.Call.ServiceManager1\">\n"
                "    <method name=\"ListCallManagers\">\n"
                "      <arg direction=\"out\" type=\"a(so)\" name=\"managerList\"/>\n"
                "      <annotation value=\"DBusCallManagerList\" name=\"org.qtproject.QtDBus.QtTypeName.Out0\"/>\n"
                "    </method>\n"
                "    <signal name=\"InterfacesAdded\">\n"
                "      <arg type=\"s\" name=\"service\"/>\n"
                "      <arg type=\"o\" name=\"path\"/>\n"
                "      <arg type=\"a{sa{sv}}\" name=\"interfaces\"/>\n"
                "      <annotation value=\"QVariantMapMap\" name=\"org.qtproject.QtDBus.QtTypeName.Out2\"/>\n"
                "    </signal>\n"
                "    <signal name=\"InterfacesRemoved\">\n"
                "      <arg type=\"s\" name=\"service\"/>\n"
                "      <arg type=\"o\" name=\"path\"/>\n"
                "      <arg type=\"as\" name=\"interfaces\"/>\n"
                "    </signal>\n"
                "  </interface>\n")));
}

TEST(CallServiceManagerAdaptor, BindsToTheSignalsOfTheService)
{
    CallService service(nullptr);
    const OpenedAdaptor adaptor(&service);
    EXPECT_TRUE(adaptor.autoRelaySignals());
}

TEST(CallServiceMetaObject, HasBusSignalsFirstThenItsOwnThenTheSlots)
{
    EXPECT_THAT(membersOf(CallService::staticMetaObject),
        ElementsAre("signal void InterfacesAdded(QString connection, QDBusObjectPath path, QVariantMapMap properties)",
            "signal void InterfacesRemoved(QString connection, QDBusObjectPath path, QStringList interfaces)",
            "signal void callManagerAdded(DBusCallManager callManager, pid_t )",
            "signal void callManagerRemoved(DBusCallManager callManager)",
            "slot void RegisterCallManager(QDBusObjectPath objectPath)", "slot DBusCallManagerList ListCallManagers()",
            "private slot void onNameOwnerChanged(QString name, QString oldOwner, QString newOwner)"));
}

TEST(CallService, OwnsItsTwoAdaptorsServiceBeforeManager)
{
    const CallService service(nullptr);
    const QList<QDBusAbstractAdaptor *> adaptors = service.findChildren<QDBusAbstractAdaptor *>();
    ASSERT_EQ(adaptors.size(), 2);
    EXPECT_STREQ(adaptors.at(0)->metaObject()->className(), "CallServiceAdaptor");
    EXPECT_STREQ(adaptors.at(1)->metaObject()->className(), "CallServiceManagerAdaptor");
}

TEST(CallProviderFactoryMetaObject, HasLifeCycleSlotsThenPrivateSlots)
{
    EXPECT_THAT(membersOf(CallProviderFactory::staticMetaObject),
        ElementsAre("slot bool initialize()", "slot bool configure(VoiceCallManagerInterface* manager)",
            "slot bool start()", "slot bool suspend()", "slot bool resume()", "slot void finalize()",
            "private slot void onCallManagerAdded(DBusCallManager callManager, pid_t )",
            "private slot void onCallManagerRemoved(DBusCallManager callManager)",
            "private slot void onInterfacesAdded(DBusCallObject call, QVariantMapMap interfaces)",
            "private slot void onInterfacesRemoved(DBusCallObject call, QStringList interfaces)"));
}

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

TEST(ObjectManagerMetaObject, HasItsSignalsThenTheSlotsThatApplyThem)
{
    EXPECT_THAT(membersOf(ObjectManager::staticMetaObject),
        ElementsAre("signal void interfacesAdded(QString service, QDBusObjectPath object, QVariantMapMap interfaces)",
            "signal void interfacesRemoved(QString service, QDBusObjectPath object, QStringList interfaces)",
            "slot void onInterfacesAdded(QDBusObjectPath object, QVariantMapMap interfaces)",
            "slot void onInterfacesRemoved(QDBusObjectPath object, QStringList interfaces)"));
    EXPECT_STREQ(ObjectManager::staticMetaObject.superClass()->className(), "QObject");
}

TEST(DBusObjectManagerProxyMetaObject, HasTheTwoSignalsThenTheMethod)
{
    EXPECT_THAT(membersOf(DBusObjectManagerProxy::staticMetaObject),
        ElementsAre("signal void InterfacesAdded(QDBusObjectPath object, QVariantMapMap interfaces)",
            "signal void InterfacesRemoved(QDBusObjectPath object, QStringList interfaces)",
            "slot QDBusPendingReply<DBusObjectList> GetManagedObjects()"));
    EXPECT_STREQ(DBusObjectManagerProxy::staticMetaObject.superClass()->className(), "QDBusAbstractInterface");
    EXPECT_STREQ(DBusObjectManagerProxy::staticInterfaceName(), "org.freedesktop.DBus.ObjectManager");
}
