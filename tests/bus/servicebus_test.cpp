// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// The service as other programs see it on the bus.

#include "callserviceadaptor.h"
#include "callservicemanageradaptor.h"
#include "service/callservice.h"

#include "printers.h"
#include "scriptedapplication.h"
#include "waitfor.h"

#include <QtCore/QRegularExpression>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusPendingReply>
#include <gmock/gmock.h>

using testing::StartsWith;

namespace {

const QString servicePath = QStringLiteral("/zelkovar/call/service");
const QString serviceInterface = QStringLiteral("zelkovar.Call.Service1");
const QString managerInterface = QStringLiteral("zelkovar.Call.ServiceManager1");

class ServiceBus : public testing::Test
{
protected:
    ServiceBus()
    {
        QDBusConnection::sessionBus().registerObject(servicePath, &service, QDBusConnection::ExportAdaptors);
    }

    /** From a Qt connection of its own, which keeps the types of the reply. */
    static QDBusMessage ask(const QString &interface, const QString &member)
    {
        const QDBusConnection client = QDBusConnection::connectToBus(
            QString::fromLatin1(qgetenv("DBUS_SESSION_BUS_ADDRESS")), QStringLiteral("client"));
        const QDBusPendingCall call = client.asyncCall(
            QDBusMessage::createMethodCall(ScriptedApplication::thisProcess(), servicePath, interface, member));
        waitFor([&] { return call.isFinished(); });
        QDBusConnection::disconnectFromBus(QStringLiteral("client"));
        return call.reply();
    }

    static QString callService(
        ScriptedApplication &application, const QString &interface, const QString &member, const QString &arguments)
    {
        return application.call(ScriptedApplication::thisProcess(), servicePath, interface, member, arguments);
    }

    CallService service{nullptr};
};

QStringList matches(const QString &text, const QString &pattern)
{
    QStringList found;
    QRegularExpressionMatchIterator match = QRegularExpression(pattern).globalMatch(text);
    while (match.hasNext())
        found.append(match.next().captured(1));
    return found;
}

} // namespace

TEST_F(ServiceBus, IntrospectionShowsTheTwoInterfacesWordByWord)
{
    const QString text = ask("org.freedesktop.DBus.Introspectable", "Introspect").arguments().value(0).toString();
    EXPECT_TRUE(text.contains("  <interface name=\"zelkovar.Call.Service1\">\n"
                              "    <method name=\"RegisterCallManager\">\n"
                              "      <arg direction=\"in\" type=\"o\" name=\"path\"/>\n"
                              "    </method>\n"
                              "  </interface>\n"))
        << text.toStdString();
    EXPECT_TRUE(text.contains(
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
        "  </interface>\n"))
        << text.toStdString();
}

TEST_F(ServiceBus, IntrospectionShowsNoInterfaceBeyondTheTwoAndTheStandardOnes)
{
    const QString text = ask("org.freedesktop.DBus.Introspectable", "Introspect").arguments().value(0).toString();
    QStringList interfaces = matches(text, "<interface name=\"([^\"]*)\"");
    interfaces.sort();
    EXPECT_EQ(interfaces,
        QStringList({"org.freedesktop.DBus.Introspectable", "org.freedesktop.DBus.Peer",
            "org.freedesktop.DBus.Properties", "zelkovar.Call.Service1", "zelkovar.Call.ServiceManager1"}))
        << text.toStdString();
}

TEST_F(ServiceBus, TheSlotsOfTheServiceItselfCannotBeReached)
{
    ScriptedApplication application;
    EXPECT_EQ(callService(application, "local.CallService", "onNameOwnerChanged", "':1.1', ':1.1', ''"),
        QLatin1String("org.freedesktop.DBus.Error.UnknownInterface"));
    EXPECT_EQ(callService(application, "local.CallService", "ListCallManagers", {}),
        QLatin1String("org.freedesktop.DBus.Error.UnknownInterface"));
}

TEST_F(ServiceBus, AnEmptyListHasTheTypeOfAList)
{
    const QDBusMessage reply = ask(managerInterface, "ListCallManagers");
    EXPECT_EQ(reply.type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(reply.signature(), QLatin1String("a(so)"));
    EXPECT_TRUE(QDBusPendingReply<DBusCallManagerList>(reply).value().isEmpty());
}

TEST_F(ServiceBus, AListHoldsNameAndPathOfEachRegistration)
{
    ScriptedApplication application;
    ASSERT_TRUE(application.registerCallManager("/app/calls"));
    const QDBusMessage reply = ask(managerInterface, "ListCallManagers");
    EXPECT_EQ(reply.signature(), QLatin1String("a(so)"));
    EXPECT_EQ(QDBusPendingReply<DBusCallManagerList>(reply).value(),
        DBusCallManagerList({{application.name(), QDBusObjectPath("/app/calls")}}));
}

TEST_F(ServiceBus, RegistrationIsAnsweredWithTheEmptyReplyAlsoForADuplicate)
{
    ScriptedApplication application;
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(
            callService(application, serviceInterface, "RegisterCallManager", "objectpath '/a'"), QLatin1String("()"));
}

TEST_F(ServiceBus, MalformedCallsAreRefusedByTheBusLayerAndRegisterNothing)
{
    ScriptedApplication application;
    for (const char *arguments : {"", "'/a'", "uint32 1", "@ao []", "<objectpath '/a'>", "signature 'o'"})
        EXPECT_THAT(callService(application, serviceInterface, "RegisterCallManager", arguments).toStdString(),
            StartsWith("org.freedesktop.DBus.Error."))
            << arguments;
    EXPECT_TRUE(service.ListCallManagers().isEmpty());
    EXPECT_TRUE(application.registerCallManager("/a"));
}

TEST_F(ServiceBus, AdditionsAreBroadcastOnceForEachEmissionWithTheirArgumentsUnchanged)
{
    ScriptedApplication monitor;
    monitor.becomeMonitor();
    const QVariantMapMap interfaces{{"test.A", {{"Number", 5}, {"Text", "x"}}}, {"test.B", {}}};
    emit service.InterfacesAdded(":1.77", QDBusObjectPath("/m/c1"), interfaces);
    emit service.InterfacesAdded(":1.78", QDBusObjectPath("/m/c2"), {});
    const QString host = ScriptedApplication::thisProcess();
    const QString prefix = host + " > *: /zelkovar/call/service zelkovar.Call.ServiceManager1.InterfacesAdded(";
    ASSERT_TRUE(waitFor([&] { return monitor.traffic().filter("/m/c2").size() == 1; }));
    EXPECT_EQ(monitor.traffic().filter(host + " > "),
        QStringList({prefix + "':1.77', objectpath '/m/c1', {'test.A': {'Number': <5>, 'Text': <'x'>}, 'test.B': {}})",
            prefix + "':1.78', objectpath '/m/c2', @a{sa{sv}} {})"}));
}

TEST_F(ServiceBus, RemovalsAreBroadcastOnceForEachEmissionWithTheirArgumentsUnchanged)
{
    ScriptedApplication monitor;
    monitor.becomeMonitor();
    emit service.InterfacesRemoved(":1.77", QDBusObjectPath("/m/c1"), {"test.B", "test.A", "test.B"});
    emit service.InterfacesRemoved(":1.78", QDBusObjectPath("/m/c2"), {});
    const QString host = ScriptedApplication::thisProcess();
    const QString prefix = host + " > *: /zelkovar/call/service zelkovar.Call.ServiceManager1.InterfacesRemoved(";
    ASSERT_TRUE(waitFor([&] { return monitor.traffic().filter("/m/c2").size() == 1; }));
    EXPECT_EQ(monitor.traffic().filter(host + " > "),
        QStringList({prefix + "':1.77', objectpath '/m/c1', ['test.B', 'test.A', 'test.B'])",
            prefix + "':1.78', objectpath '/m/c2', @as [])"}));
}

TEST_F(ServiceBus, RegistrationAndDepartureSendNoSignal)
{
    ScriptedApplication monitor;
    monitor.becomeMonitor();
    int removed = 0;
    QObject::connect(&service, &CallService::callManagerRemoved, [&] { ++removed; });
    {
        ScriptedApplication application;
        ASSERT_TRUE(application.registerCallManager("/app/calls"));
    }
    ASSERT_TRUE(waitFor([&] { return removed == 1; }));
    ScriptedApplication last;
    ASSERT_TRUE(last.settle());
    const QString reply = ScriptedApplication::thisProcess() + " > " + last.name() + ": reply";
    ASSERT_TRUE(waitFor([&] { return !monitor.traffic().filter(reply).isEmpty(); }));
    EXPECT_TRUE(monitor.traffic().filter(ScriptedApplication::thisProcess() + " > *").isEmpty())
        << monitor.traffic().join('\n').toStdString();
}

// The adaptors forward by name to whatever owns them, and answer all the same when nothing takes it.
TEST(ServiceAdaptors, AnswerAlsoWhenTheirOwnerDoesNotTakeTheCall)
{
    QObject owner;
    CallServiceAdaptor serviceAdaptor(&owner);
    CallServiceManagerAdaptor managerAdaptor(&owner);
    ASSERT_TRUE(QDBusConnection::sessionBus().registerObject(servicePath, &owner, QDBusConnection::ExportAdaptors));
    ScriptedApplication application;
    EXPECT_TRUE(application.registerCallManager("/app/calls"));
    EXPECT_EQ(application.call(ScriptedApplication::thisProcess(), servicePath, managerInterface, "ListCallManagers"),
        QLatin1String("([],)"));
}
