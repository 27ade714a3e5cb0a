// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "hostprogram.h"

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <fcntl.h>
#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

static std::string text(const QString &string) { return string.toStdString(); }

class FakeAudio : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(host.start());
        host.listen();
    }

    void TearDown() override { EXPECT_EQ(host.end(), 0) << text(host.program().errorOutput()); }

    std::string audio(const QString &member, const QString &arguments)
    {
        return text(host.ask(HostProgram::root(), QStringLiteral("Audio1.") + member, arguments));
    }

    std::string fake(const QString &member, const QString &arguments)
    {
        return text(host.ask(HostProgram::root(), QStringLiteral("FakeAudio1.") + member, arguments));
    }

    std::string property(const QString &name) { return text(host.property(QStringLiteral("Audio1"), name)); }

    std::string input() { return property(QStringLiteral("InputDevice")); }
    std::string output() { return property(QStringLiteral("OutputDevice")); }
    std::string muted() { return property(QStringLiteral("MicrophoneMuted")); }

    // What of the audio changed, in order: "Devices", "InputDevice: <'headset'>", ...
    std::vector<std::string> changes()
    {
        const std::string before = "/org/tarnwickle/voicecall org.freedesktop.DBus.Properties.PropertiesChanged("
                                   "'org.tarnwickle.voicecall.Audio1', {'";
        std::vector<std::string> result;
        const QStringList heard = host.takeSignals();
        for (const QString &signal : heard) {
            const std::string all = text(signal);
            EXPECT_EQ(all.substr(0, before.size()), before);
            const std::string change = all.substr(before.size(), all.rfind("}, @as []") - before.size());
            const bool isDevices = change.rfind("Devices'", 0) == 0;
            result.push_back(isDevices ? "Devices" : change);
        }
        return result;
    }

    HostProgram host;
};

TEST_F(FakeAudio, StartsWithAHandsetASpeakerAndAHeadset)
{
    EXPECT_EQ(property(QStringLiteral("Devices")),
        "<[('microphone', 4, true, false, 'Microphone', @a{sv} {}), ('earpiece', 1, false, true, 'Earpiece', {}),"
        " ('speaker', 2, false, true, 'Speaker', {}), ('headset', 3, true, true, 'Wired headset', {})]>");
    EXPECT_EQ(input(), "<'microphone'>");
    EXPECT_EQ(output(), "<'earpiece'>");
    EXPECT_EQ(muted(), "<false>");
}

TEST_F(FakeAudio, SelectingAnInputDeviceIsPublished)
{
    EXPECT_EQ(audio(QStringLiteral("SelectInputDevice"), QStringLiteral("'headset'")), "()");
    EXPECT_EQ(input(), "<'headset'>");
    EXPECT_THAT(changes(), ElementsAre("InputDevice': <'headset'>"));
}

TEST_F(FakeAudio, SelectingAnOutputDeviceIsPublished)
{
    EXPECT_EQ(audio(QStringLiteral("SelectOutputDevice"), QStringLiteral("'speaker'")), "()");
    EXPECT_EQ(output(), "<'speaker'>");
    EXPECT_THAT(changes(), ElementsAre("OutputDevice': <'speaker'>"));
}

TEST_F(FakeAudio, MutingIsPublished)
{
    EXPECT_EQ(audio(QStringLiteral("SetMicrophoneMuted"), QStringLiteral("true")), "()");
    EXPECT_EQ(muted(), "<true>");
    EXPECT_THAT(changes(), ElementsAre("MicrophoneMuted': <true>"));
}

TEST_F(FakeAudio, WhatChangesNothingIsNeitherPublishedNorToldToPlugins)
{
    EXPECT_EQ(audio(QStringLiteral("SelectInputDevice"), QStringLiteral("'microphone'")), "()");
    EXPECT_EQ(audio(QStringLiteral("SelectOutputDevice"), QStringLiteral("'earpiece'")), "()");
    EXPECT_EQ(audio(QStringLiteral("SetMicrophoneMuted"), QStringLiteral("false")), "()");
    EXPECT_THAT(changes(), IsEmpty());
    EXPECT_EQ(text(host.pluginNotes()), "([],)");
}

TEST_F(FakeAudio, AnOutputIsNoInputAndAnInputIsNoOutput)
{
    EXPECT_EQ(audio(QStringLiteral("SelectInputDevice"), QStringLiteral("'speaker'")),
        "org.tarnwickle.voicecall.Error.NoSuchDevice");
    EXPECT_EQ(audio(QStringLiteral("SelectOutputDevice"), QStringLiteral("'microphone'")),
        "org.tarnwickle.voicecall.Error.NoSuchDevice");
    EXPECT_THAT(changes(), IsEmpty());
}

TEST_F(FakeAudio, AnUnknownOrEmptyDeviceIsNoSuchDevice)
{
    EXPECT_EQ(audio(QStringLiteral("SelectInputDevice"), QStringLiteral("'x'")),
        "org.tarnwickle.voicecall.Error.NoSuchDevice");
    EXPECT_EQ(audio(QStringLiteral("SelectOutputDevice"), QStringLiteral("''")),
        "org.tarnwickle.voicecall.Error.NoSuchDevice");
    EXPECT_EQ(
        fake(QStringLiteral("RemoveDevice"), QStringLiteral("'x'")), "org.tarnwickle.voicecall.Error.NoSuchDevice");
}

TEST_F(FakeAudio, TheErrorNamesTheDevicesThatFit)
{
    QDBusMessage call = QDBusMessage::createMethodCall(HostProgram::service(), HostProgram::root(),
        QStringLiteral("org.tarnwickle.voicecall.Audio1"), QStringLiteral("SelectInputDevice"));
    EXPECT_EQ(text(QDBusConnection::sessionBus().call(call << QStringLiteral("speaker")).errorMessage()),
        "No input device has the id 'speaker'; there are: microphone, headset");
}

// --- Devices that come and go

TEST_F(FakeAudio, AnAddedDeviceStandsBehindTheOthersWithItsProperties)
{
    EXPECT_EQ(fake(QStringLiteral("AddDevice"),
                  QStringLiteral("('bt', 9, true, true, 'Earbuds', {'battery': <80>, 'tags': <['a', 'b']>})")),
        "()");
    EXPECT_THAT(property(QStringLiteral("Devices")),
        HasSubstr(", ('bt', 9, true, true, 'Earbuds', {'battery': <80>, 'tags': <['a', 'b']>})]>"));
    EXPECT_THAT(changes(), ElementsAre("Devices"));
}

TEST_F(FakeAudio, AKnownIdCannotBeAddedAgain)
{
    EXPECT_EQ(fake(QStringLiteral("AddDevice"), QStringLiteral("('speaker', 2, false, true, '', @a{sv} {})")),
        "org.tarnwickle.voicecall.Error.DeviceExists");
    EXPECT_THAT(changes(), IsEmpty());
}

TEST_F(FakeAudio, ADeviceNeedsAnId)
{
    EXPECT_EQ(fake(QStringLiteral("AddDevice"), QStringLiteral("('', 2, false, true, '', @a{sv} {})")),
        "org.freedesktop.DBus.Error.InvalidArgs");
}

TEST_F(FakeAudio, ADeviceWithValuesThatWouldPinItsMessageIsRefused)
{
    EXPECT_EQ(fake(QStringLiteral("AddDevice"), QStringLiteral("('x', 2, false, true, '', {'p': <[1, 2]>})")),
        "org.freedesktop.DBus.Error.InvalidArgs");
    EXPECT_EQ(fake(QStringLiteral("AddDevice"), QStringLiteral("('x', 2, false, true, '', {'p': <<1>>})")),
        "org.freedesktop.DBus.Error.InvalidArgs");
    EXPECT_THAT(changes(), IsEmpty());
}

TEST_F(FakeAudio, ADeviceWithAFileDescriptorIsRefused)
{
    ScriptedApplication client;
    const int descriptor = open("/dev/null", O_RDONLY);
    EXPECT_EQ(text(client.call(HostProgram::service(), HostProgram::root(),
                  QStringLiteral("org.tarnwickle.voicecall.FakeAudio1"), QStringLiteral("AddDevice"),
                  QStringLiteral("('x', 2, false, true, '', {'p': <handle 0>})"), {descriptor})),
        "org.freedesktop.DBus.Error.InvalidArgs");
    close(descriptor);
}

// Qt reads an empty signature, and refuses to send it ever again.
TEST_F(FakeAudio, ADeviceWithAnEmptySignatureIsRefusedAndTheAudioStaysReadable)
{
    for (const char *value : {"<signature ''>", "<<signature ''>>", "<[<signature ''>]>", "<{'k': <signature ''>}>"}) {
        EXPECT_EQ(fake(QStringLiteral("AddDevice"),
                      QStringLiteral("('x', 2, false, true, '', {'p': %1})").arg(QLatin1String(value))),
            "org.freedesktop.DBus.Error.InvalidArgs")
            << value;
    }
    EXPECT_THAT(text(host.askStandard(HostProgram::root(), QStringLiteral("Properties.GetAll"),
                    QStringLiteral("'org.tarnwickle.voicecall.Audio1'"))),
        HasSubstr("'Devices': <[('microphone'"));
    EXPECT_EQ(
        fake(QStringLiteral("AddDevice"), QStringLiteral("('x', 2, false, true, '', {'p': <signature 'a{sv}'>})")),
        "()");
    EXPECT_THAT(property(QStringLiteral("Devices")), HasSubstr("{'p': <signature 'a{sv}'>}"));
}

TEST_F(FakeAudio, RemovingADeviceThatIsNotSelectedLeavesTheSelection)
{
    EXPECT_EQ(fake(QStringLiteral("RemoveDevice"), QStringLiteral("'speaker'")), "()");
    EXPECT_THAT(changes(), ElementsAre("Devices"));
    EXPECT_EQ(output(), "<'earpiece'>");
}

TEST_F(FakeAudio, RemovingTheSelectedDeviceFallsBackToTheFirstThatFitsAndSignalsDevicesFirst)
{
    audio(QStringLiteral("SelectInputDevice"), QStringLiteral("'headset'"));
    audio(QStringLiteral("SelectOutputDevice"), QStringLiteral("'headset'"));
    changes();
    host.pluginNotes();

    EXPECT_EQ(fake(QStringLiteral("RemoveDevice"), QStringLiteral("'headset'")), "()");

    EXPECT_THAT(changes(), ElementsAre("Devices", "InputDevice': <'microphone'>", "OutputDevice': <'earpiece'>"));
    // Whoever asks during a signal sees the new state as a whole.
    EXPECT_EQ(text(host.pluginNotes()),
        "(['devices: microphone,earpiece,speaker microphone earpiece open',"
        " 'input: microphone,earpiece,speaker microphone earpiece open',"
        " 'output: microphone,earpiece,speaker microphone earpiece open'],)");
}

TEST_F(FakeAudio, WithoutAnyDeviceThatFitsNothingIsSelectedUntilOneComes)
{
    fake(QStringLiteral("RemoveDevice"), QStringLiteral("'microphone'"));
    EXPECT_EQ(input(), "<'headset'>");
    fake(QStringLiteral("RemoveDevice"), QStringLiteral("'headset'"));
    EXPECT_EQ(input(), "<''>");
    changes();
    fake(QStringLiteral("AddDevice"), QStringLiteral("('bt', 0, true, false, '', @a{sv} {})"));
    EXPECT_THAT(changes(), ElementsAre("Devices", "InputDevice': <'bt'>"));
}

// --- Plug-ins

TEST_F(FakeAudio, EveryChangeIsToldToPluginsBySignal)
{
    audio(QStringLiteral("SelectInputDevice"), QStringLiteral("'headset'"));
    audio(QStringLiteral("SelectOutputDevice"), QStringLiteral("'speaker'"));
    audio(QStringLiteral("SetMicrophoneMuted"), QStringLiteral("true"));
    fake(QStringLiteral("RemoveDevice"), QStringLiteral("'earpiece'"));
    EXPECT_EQ(text(host.pluginNotes()),
        "(['input: microphone,earpiece,speaker,headset headset earpiece open',"
        " 'output: microphone,earpiece,speaker,headset headset speaker open',"
        " 'mute: microphone,earpiece,speaker,headset headset speaker muted',"
        " 'devices: microphone,speaker,headset headset speaker muted'],)");
}

TEST_F(FakeAudio, APluginMutesAndUnmutes)
{
    host.plugin(QStringLiteral("RequestMute"), QStringLiteral("true"));
    EXPECT_EQ(muted(), "<true>");
    host.plugin(QStringLiteral("RequestMute"), QStringLiteral("false"));
    EXPECT_EQ(muted(), "<false>");
    EXPECT_THAT(changes(), ElementsAre("MicrophoneMuted': <true>", "MicrophoneMuted': <false>"));
}

TEST_F(FakeAudio, APluginSelectsDevices)
{
    host.plugin(QStringLiteral("SelectInput"), QStringLiteral("'headset'"));
    host.plugin(QStringLiteral("SelectOutput"), QStringLiteral("'speaker'"));
    EXPECT_THAT(changes(), ElementsAre("InputDevice': <'headset'>", "OutputDevice': <'speaker'>"));
}

TEST_F(FakeAudio, APluginThatAsksForAnUnknownDeviceIsIgnoredAndLogged)
{
    host.plugin(QStringLiteral("SelectInput"), QStringLiteral("'nowhere'"));
    host.plugin(QStringLiteral("SelectOutput"), QStringLiteral("'microphone'"));
    EXPECT_THAT(changes(), IsEmpty());
    EXPECT_TRUE(host.program().waitForError(
        QStringLiteral("voicecall: A plug-in asked for the unknown input device 'nowhere': ignored")));
    EXPECT_TRUE(host.program().waitForError(
        QStringLiteral("voicecall: A plug-in asked for the unknown output device 'microphone': ignored")));
}

TEST_F(FakeAudio, WhatAPluginDoesAboutNewDevicesIsPublishedBehindThem)
{
    host.plugin(QStringLiteral("SelectInputWheneverDevicesChange"), QStringLiteral("'headset'"));
    fake(QStringLiteral("RemoveDevice"), QStringLiteral("'microphone'"));
    EXPECT_THAT(changes(), ElementsAre("Devices", "InputDevice': <'headset'>"));
    fake(QStringLiteral("AddDevice"), QStringLiteral("('bt', 0, true, false, '', @a{sv} {})"));
    EXPECT_THAT(changes(), ElementsAre("Devices"));
}
