// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// What is read of signatures and interface files.

#include "busserver/businterface.h"
#include "busserver/signature.h"
#include "printers.h"

#include <QtCore/QXmlStreamReader>
#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Change = InterfaceDescription::Change;

TEST(Signatures, AreReadTypeByType)
{
    EXPECT_THAT(Signature::types(""), IsEmpty());
    EXPECT_THAT(Signature::types("abss"), ElementsAre("ab", "s", "s"));
    EXPECT_THAT(Signature::types("aabss"), ElementsAre("aab", "s", "s"));
    EXPECT_THAT(Signature::types("a(sibbsa{sv})bss"), ElementsAre("a(sibbsa{sv})", "b", "s", "s"));
    EXPECT_THAT(Signature::types("(a(ss)v)a{oa{sa{sv}}}aav"), ElementsAre("(a(ss)v)", "a{oa{sa{sv}}}", "aav"));
}

TEST(Descriptions, TellTheTypesThatMethodsTake)
{
    const InterfaceDescription &manager = InterfaceDescription::of("org.tarnwickle.voicecall.Manager1");
    EXPECT_THAT(manager.methods.keys(), ElementsAre("Dial"));
    EXPECT_THAT(manager.methods.value("Dial"), ElementsAre("s", "s"));
    const InterfaceDescription &control = InterfaceDescription::of("zelkovar.Call.AudioControl1");
    EXPECT_THAT(control.methods.value("UpdateAudioRouteState"), ElementsAre("a(sibbsa{sv})", "b", "s", "s"));
    // What comes out is no argument.
    EXPECT_THAT(
        InterfaceDescription::of("org.freedesktop.DBus.Properties").methods.value("Get"), ElementsAre("s", "s"));
}

TEST(Descriptions, TellHowAPropertyAnnouncesItsChanges)
{
    const auto change = [](const char *interface, const char *property) {
        return InterfaceDescription::of(interface).properties.value(property);
    };
    EXPECT_EQ(change("org.tarnwickle.voicecall.Audio1", "Devices"), Change::Value);
    EXPECT_EQ(change("org.tarnwickle.voicecall.Manager1", "Providers"), Change::Name);
    EXPECT_EQ(change("org.tarnwickle.voicecall.Call1", "HandlerId"), Change::Nothing);
    EXPECT_EQ(change("org.tarnwickle.voicecall.Call1", "Uri"), Change::Value);
    // Said of the whole interface.
    EXPECT_EQ(change("zelkovar.Call.Call1", "Status"), Change::Nothing);
}

TEST(Descriptions, AreShownWholeAndWithoutComments)
{
    for (const char *name : {"org.tarnwickle.voicecall.Call1", "org.tarnwickle.voicecall.FakeAudio1",
             "zelkovar.Call.ServiceManager1", "org.freedesktop.DBus.Properties"}) {
        const QString xml = InterfaceDescription::of(name).xml;
        EXPECT_THAT(xml.trimmed().toStdString(), testing::StartsWith("<interface name=\"" + std::string(name) + "\">"));
        EXPECT_THAT(xml.toStdString(), testing::EndsWith("</interface>"));
        EXPECT_THAT(xml.toStdString(), Not(HasSubstr("<!--")));
        QXmlStreamReader reader(xml);
        while (!reader.atEnd())
            reader.readNext();
        EXPECT_FALSE(reader.hasError()) << reader.errorString().toStdString();
    }
    EXPECT_THAT(InterfaceDescription::of("org.tarnwickle.voicecall.FakeAudio1").xml.toStdString(),
        HasSubstr("<arg direction=\"in\" type=\"(sibbsa{sv})\" name=\"device\"/>"));
}

TEST(DescriptionsDeathTest, OfNoInterfaceEndTheProgram)
{
    EXPECT_DEATH(InterfaceDescription::of("org.example.None"), "no description of the interface org.example.None");
}

TEST(DescriptionsDeathTest, AMethodThatNothingAnswersEndsTheProgram)
{
    EXPECT_DEATH(BusInterface("org.tarnwickle.voicecall.Manager1"),
        "Nothing answers the method Dial of org.tarnwickle.voicecall.Manager1");
}
