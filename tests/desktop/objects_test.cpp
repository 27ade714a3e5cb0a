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

class HostObjects : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(host.start());
        host.plugin(QStringLiteral("AddProvider"), QStringLiteral("'fake/1'"));
    }

    void TearDown() override { EXPECT_EQ(host.end(), 0) << text(host.program().errorOutput()); }

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

TEST_F(HostObjects, TheRootDescribesAllItsInterfaces)
{
    const QString xml = introspect(HostProgram::root());
    EXPECT_EQ(parseErrors(xml), 0) << text(xml);
    for (const char *interface : {"org.freedesktop.DBus.Introspectable", "org.freedesktop.DBus.Properties",
             "org.freedesktop.DBus.ObjectManager", "org.tarnwickle.voicecall.Manager1",
             "org.tarnwickle.voicecall.Audio1", "org.tarnwickle.voicecall.FakeAudio1"})
        EXPECT_THAT(text(xml), HasSubstr("<interface name=\"" + std::string(interface) + "\">"));
    EXPECT_THAT(text(xml), Not(HasSubstr("Call1")));
}

TEST_F(HostObjects, ACallIsFoundFromTheTopOfTheTree)
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

TEST_F(HostObjects, BusctlShowsTreeAndMembers)
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

TEST_F(HostObjects, EveryPropertyHasTheDescribedType)
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

TEST_F(HostObjects, TheObjectManagerListsTheCallsAlone)
{
    const QString id = host.addCall(QStringLiteral("fake/1"), QStringLiteral("{'LineId': <'Anna'>}"));
    const std::string objects = askStandard(QStringLiteral("ObjectManager.GetManagedObjects"));
    EXPECT_EQ(
        objects.find("({'" + text(HostProgram::call(id)) + "': {'org.tarnwickle.voicecall.Call1': {'AppId': <''>,"), 0u)
        << objects;
    EXPECT_THAT(objects, HasSubstr("'LineId': <'Anna'>"));
    EXPECT_THAT(objects, Not(HasSubstr("Manager1")));
}
