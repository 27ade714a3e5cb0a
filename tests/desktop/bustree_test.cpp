// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "hostprogram.h"

#include <QtCore/QXmlStreamReader>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusMetaType>
#include <QtDBus/QDBusVariant>
#include <gmock/gmock.h>

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

static std::string text(const QString &string) { return string.toStdString(); }

class BusTree : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(host.start());
        host.plugin(QStringLiteral("AddProvider"), QStringLiteral("'fake/1'"));
    }

    void TearDown() override { EXPECT_EQ(host.end(), 0) << text(host.program().errorOutput()); }

    std::string ask(const QString &interfaceAndMember, const QString &arguments = {})
    {
        return text(host.ask(HostProgram::root(), interfaceAndMember, arguments));
    }

    std::string askStandard(const QString &interfaceAndMember, const QString &arguments = {})
    {
        return text(host.askStandard(HostProgram::root(), interfaceAndMember, arguments));
    }

    static QString introspect(const QString &path)
    {
        const QDBusMessage call = QDBusMessage::createMethodCall(HostProgram::service(), path,
            QStringLiteral("org.freedesktop.DBus.Introspectable"), QStringLiteral("Introspect"));
        return QDBusConnection::sessionBus().call(call).arguments().value(0).toString();
    }

    static int parseErrors(const QString &xml)
    {
        QXmlStreamReader reader(xml);
        while (!reader.atEnd())
            reader.readNext();
        return reader.hasError() ? 1 : 0;
    }

    HostProgram host;
};

TEST_F(BusTree, TheRootDescribesAllItsInterfaces)
{
    const QString xml = introspect(HostProgram::root());
    EXPECT_EQ(parseErrors(xml), 0) << text(xml);
    for (const char *interface : {"org.freedesktop.DBus.Introspectable", "org.freedesktop.DBus.Properties",
             "org.freedesktop.DBus.ObjectManager", "org.tarnwickle.voicecall.Manager1",
             "org.tarnwickle.voicecall.Audio1", "org.tarnwickle.voicecall.FakeAudio1"})
        EXPECT_THAT(text(xml), HasSubstr("<interface name=\"" + std::string(interface) + "\">"));
    EXPECT_THAT(text(xml), Not(HasSubstr("Call1")));
}

TEST_F(BusTree, ACallIsFoundFromTheTopOfTheTree)
{
    EXPECT_THAT(text(introspect(HostProgram::root())), Not(HasSubstr("<node name=")));
    const QString id = host.addCall(QStringLiteral("fake/1"));
    EXPECT_THAT(text(introspect(QStringLiteral("/"))), HasSubstr("<node name=\"org\"/>"));
    EXPECT_THAT(text(introspect(QStringLiteral("/org/tarnwickle"))), HasSubstr("<node name=\"voicecall\"/>"));
    EXPECT_THAT(text(introspect(HostProgram::root())), HasSubstr("<node name=\"calls\"/>"));
    EXPECT_THAT(text(introspect(HostProgram::root() + QStringLiteral("/calls"))),
        AllOf(HasSubstr("<node name=\"" + text(id) + "\"/>"), Not(HasSubstr("Manager1"))));
    const QString xml = introspect(HostProgram::call(id));
    EXPECT_EQ(parseErrors(xml), 0) << text(xml);
    EXPECT_THAT(text(xml), HasSubstr("<interface name=\"org.tarnwickle.voicecall.Call1\">"));
    EXPECT_THAT(text(xml), HasSubstr("<method name=\"SendDtmf\">"));
}

TEST_F(BusTree, BusctlShowsTreeAndMembers)
{
    const QString id = host.addCall(QStringLiteral("fake/1"), QStringLiteral("{'LineId': <'Anna'>}"));
    Program busctl;
    ASSERT_TRUE(busctl.start(QStringLiteral("busctl"),
        {QStringLiteral("--user"), QStringLiteral("tree"), QStringLiteral("--list"), HostProgram::service()}));
    EXPECT_EQ(busctl.waitForExit(), 0) << text(busctl.errorOutput());
    EXPECT_TRUE(busctl.lines().contains(HostProgram::call(id))) << text(busctl.lines().join(QLatin1Char('\n')));

    ASSERT_TRUE(busctl.start(QStringLiteral("busctl"),
        {QStringLiteral("--user"), QStringLiteral("introspect"), HostProgram::service(), HostProgram::call(id)}));
    EXPECT_EQ(busctl.waitForExit(), 0) << text(busctl.errorOutput());
    EXPECT_THAT(text(busctl.lines().filter(QStringLiteral(".LineId")).join(QString())), HasSubstr("\"Anna\""));
}

TEST_F(BusTree, EveryObjectAnswersPings)
{
    const QString id = host.addCall(QStringLiteral("fake/1"));
    for (const QString &path : {HostProgram::root(), HostProgram::call(id)})
        EXPECT_EQ(text(host.askStandard(path, QStringLiteral("Peer.Ping"))), "()");
}

TEST_F(BusTree, AnUnknownObjectIsTheStandardError)
{
    for (const char *path : {"/org/tarnwickle/voicecall/calls/none", "/org/tarnwickle/voicecall/nothing",
             "/org/tarnwickle/voicecall/calls"}) {
        EXPECT_EQ(text(host.askStandard(QLatin1String(path), QStringLiteral("Introspectable.Introspect"))),
            "org.freedesktop.DBus.Error.UnknownObject")
            << path;
    }
}

TEST_F(BusTree, AnUnknownInterfaceIsTheStandardError)
{
    EXPECT_EQ(ask(QStringLiteral("Manager2.Dial"), QStringLiteral("'a', 'b'")),
        "org.freedesktop.DBus.Error.UnknownInterface");
    const QString id = host.addCall(QStringLiteral("fake/1"));
    EXPECT_EQ(text(host.ask(HostProgram::call(id), QStringLiteral("Manager1.Dial"), QStringLiteral("'a', 'b'"))),
        "org.freedesktop.DBus.Error.UnknownInterface");
}

TEST_F(BusTree, AnUnknownMethodIsTheStandardError)
{
    EXPECT_EQ(ask(QStringLiteral("Manager1.Answer")), "org.freedesktop.DBus.Error.UnknownMethod");
    EXPECT_EQ(askStandard(QStringLiteral("Properties.Take")), "org.freedesktop.DBus.Error.UnknownMethod");
}

TEST_F(BusTree, WrongArgumentsAreTheStandardError)
{
    const std::string invalid = "org.freedesktop.DBus.Error.InvalidArgs";
    EXPECT_EQ(ask(QStringLiteral("Manager1.Dial"), QStringLiteral("'a'")), invalid);
    EXPECT_EQ(ask(QStringLiteral("Manager1.Dial"), QStringLiteral("'a', 'b', 'c'")), invalid);
    EXPECT_EQ(ask(QStringLiteral("Audio1.SetMicrophoneMuted"), QStringLiteral("'true'")), invalid);
    EXPECT_EQ(ask(QStringLiteral("Audio1.SelectInputDevice"), QStringLiteral("objectpath '/a'")), invalid);
    EXPECT_EQ(ask(QStringLiteral("FakeAudio1.AddDevice"), QStringLiteral("('x', 1, true, true, 5)")), invalid);
    EXPECT_EQ(ask(QStringLiteral("FakeAudio1.AddDevice"), QStringLiteral("[1, 2]")), invalid);
    EXPECT_EQ(askStandard(QStringLiteral("Properties.Get"), QStringLiteral("[1]")), invalid);
    EXPECT_EQ(askStandard(QStringLiteral("ObjectManager.GetManagedObjects"), QStringLiteral("1")), invalid);
    const QString id = host.addCall(QStringLiteral("fake/1"));
    EXPECT_EQ(text(host.ask(HostProgram::call(id), QStringLiteral("Call1.Hold"))), invalid);
    EXPECT_EQ(text(host.ask(HostProgram::call(id), QStringLiteral("Call1.Answer"), QStringLiteral("1"))), invalid);
}

TEST_F(BusTree, AnUnknownPropertyIsTheStandardError)
{
    const std::string unknown = "org.freedesktop.DBus.Error.UnknownProperty";
    EXPECT_EQ(
        askStandard(QStringLiteral("Properties.Get"), QStringLiteral("'org.tarnwickle.voicecall.Audio1', 'Volume'")),
        unknown);
    EXPECT_EQ(askStandard(
                  QStringLiteral("Properties.Set"), QStringLiteral("'org.tarnwickle.voicecall.Audio1', 'Volume', <1>")),
        unknown);
    EXPECT_EQ(askStandard(QStringLiteral("Properties.Get"), QStringLiteral("'', 'Volume'")), unknown);
}

TEST_F(BusTree, PropertiesOfAnUnknownInterfaceAreTheStandardError)
{
    const std::string unknown = "org.freedesktop.DBus.Error.UnknownInterface";
    EXPECT_EQ(askStandard(QStringLiteral("Properties.Get"), QStringLiteral("'org.example.X', 'Volume'")), unknown);
    EXPECT_EQ(askStandard(QStringLiteral("Properties.Set"), QStringLiteral("'org.example.X', 'Volume', <1>")), unknown);
    EXPECT_EQ(askStandard(QStringLiteral("Properties.GetAll"), QStringLiteral("'org.example.X'")), unknown);
}

TEST_F(BusTree, NoPropertyCanBeWritten)
{
    EXPECT_EQ(askStandard(QStringLiteral("Properties.Set"),
                  QStringLiteral("'org.tarnwickle.voicecall.Audio1', 'InputDevice', <'headset'>")),
        "org.freedesktop.DBus.Error.PropertyReadOnly");
    EXPECT_EQ(text(host.property(QStringLiteral("Audio1"), QStringLiteral("InputDevice"))), "<'microphone'>");
}

TEST_F(BusTree, AllPropertiesOfAnInterfaceComeAtOnce)
{
    EXPECT_EQ(askStandard(QStringLiteral("Properties.GetAll"), QStringLiteral("'org.tarnwickle.voicecall.Manager1'")),
        "({'Providers': <[('fake/1', 'fake')]>},)");
    EXPECT_EQ(
        askStandard(QStringLiteral("Properties.GetAll"), QStringLiteral("'org.freedesktop.DBus.Properties'")), "({},)");
}

TEST_F(BusTree, NoInterfaceNameMeansAnyInterface)
{
    EXPECT_EQ(askStandard(QStringLiteral("Properties.Get"), QStringLiteral("'', 'InputDevice'")), "(<'microphone'>,)");
    EXPECT_THAT(askStandard(QStringLiteral("Properties.GetAll"), QStringLiteral("''")),
        AllOf(HasSubstr("'InputDevice'"), HasSubstr("'Providers'")));
    const QDBusMessage call = QDBusMessage::createMethodCall(
        HostProgram::service(), HostProgram::root(), QString(), QStringLiteral("GetManagedObjects"));
    EXPECT_EQ(text(QDBusConnection::sessionBus().call(call).signature()), "a{oa{sa{sv}}}");
    const QDBusMessage unknown = QDBusMessage::createMethodCall(
        HostProgram::service(), HostProgram::root(), QString(), QStringLiteral("Nothing"));
    EXPECT_EQ(
        text(QDBusConnection::sessionBus().call(unknown).errorName()), "org.freedesktop.DBus.Error.UnknownMethod");
}

TEST_F(BusTree, EveryPropertyHasTheDescribedType)
{
    const QString id = host.addCall(QStringLiteral("fake/1"));
    for (const QString &path : {HostProgram::root(), HostProgram::call(id)}) {
        QXmlStreamReader reader(introspect(path));
        int properties = 0;
        while (!reader.atEnd()) {
            if (reader.readNext() != QXmlStreamReader::StartElement || reader.name() != QLatin1String("property"))
                continue;
            QDBusMessage call = QDBusMessage::createMethodCall(
                HostProgram::service(), path, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
            call << QString() << reader.attributes().value(QLatin1String("name")).toString();
            const QVariant value
                = QDBusConnection::sessionBus().call(call).arguments().value(0).value<QDBusVariant>().variant();
            const QString type = value.userType() == qMetaTypeId<QDBusArgument>()
                ? value.value<QDBusArgument>().currentSignature()
                : QLatin1String(QDBusMetaType::typeToSignature(value.userType()));
            EXPECT_EQ(text(type), text(reader.attributes().value(QLatin1String("type")).toString()))
                << text(call.arguments().at(1).toString());
            ++properties;
        }
        EXPECT_EQ(properties, path == HostProgram::root() ? 5 : 18);
    }
}

TEST_F(BusTree, TheObjectManagerListsTheCallsAlone)
{
    const QString id = host.addCall(QStringLiteral("fake/1"), QStringLiteral("{'LineId': <'Anna'>}"));
    const std::string objects = askStandard(QStringLiteral("ObjectManager.GetManagedObjects"));
    EXPECT_EQ(
        objects.find("({'" + text(HostProgram::call(id)) + "': {'org.tarnwickle.voicecall.Call1': {'AppId': <''>,"), 0u)
        << objects;
    EXPECT_THAT(objects, HasSubstr("'LineId': <'Anna'>"));
    EXPECT_THAT(objects, Not(HasSubstr("Manager1")));
}

TEST_F(BusTree, ACallThatWantsNoReplyGetsNone)
{
    const QString id = host.addCall(QStringLiteral("fake/1"));
    ScriptedApplication client;
    client.becomeMonitor();
    ScriptedApplication caller;
    caller.send(HostProgram::service(), HostProgram::call(id), QStringLiteral("org.tarnwickle.voicecall.Call1"),
        QStringLiteral("Answer"));
    EXPECT_NE(text(host.pluginNotes()).find("answer"), std::string::npos);
    EXPECT_TRUE(client.traffic()
                    .filter(QStringLiteral("> %1: reply").arg(caller.name()))
                    .filter(QStringLiteral("reply ()"))
                    .isEmpty())
        << text(client.traffic().join(QLatin1Char('\n')));
}
