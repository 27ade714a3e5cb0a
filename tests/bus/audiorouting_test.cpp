// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "callfixture.h"
#include "calls/callhandler.h"

#include <QtCore/QMetaMethod>
#include <QtCore/QPointer>

/** Notes which of its signals are connected to, and when it is asked for its audio state. */
class WiringHost : public RecordingHost
{
public:
    AudioRouteState audioRouteState() const override
    {
        wiring.append("state asked");
        return RecordingHost::audioRouteState();
    }

    mutable QStringList wiring;

protected:
    void connectNotify(const QMetaMethod &signal) override { wiring.append(signal.name()); }
};

class AudioRoutingTest : public CallFixture
{
protected:
    void SetUp() override
    {
        CallFixture::SetUp();
        host.audio.inputDeviceId = "mic";
        host.audio.outputDeviceId = "speaker";
    }

    /** An active call with audio control, whose first update has been taken off the record. */
    AbstractVoiceCallHandler *addWiredCall(const QString &properties = active, const QString &path = callPath)
    {
        AbstractVoiceCallHandler *handler = addCall(properties, {audioControl}, path);
        settle();
        application.forgetWhatArrived();
        host.events.clear();
        return handler;
    }

    void request(const QString &member, const QString &arguments, const QString &path = callPath)
    {
        application.signal(path, audioControl, member, arguments);
        settle();
    }

    static QString route(const QString &arguments, const QString &path = callPath)
    {
        return path + " zelkovar.Call.AudioControl1.UpdateAudioRoute" + arguments;
    }

    static QString state(const QString &arguments, const QString &path = callPath)
    {
        return path + " zelkovar.Call.AudioControl1.UpdateAudioRouteState" + arguments;
    }
};

static AudioDevice earpiece()
{
    AudioDevice device;
    device.id = "ear";
    device.type = AudioDevice::Earpiece;
    device.isOutput = true;
    device.name = "Earpiece";
    device.properties = {{"volume", 7}};
    return device;
}

static AudioDevice microphone()
{
    AudioDevice device;
    device.id = "mic";
    device.type = AudioDevice::Microphone;
    device.isInput = true;
    return device;
}

// --- Pushes to the application

TEST_F(AudioRoutingTest, ACallWithAudioControlGetsTheWholeStateExactlyOnce)
{
    host.audio.devices = {earpiece(), microphone()};
    host.audio.microphoneMuted = true;
    ASSERT_TRUE(addCall(active, {audioControl}));
    EXPECT_EQ(commands(),
        QStringList({state("([('ear', 1, false, true, 'Earpiece', {'volume': <7>}), ('mic', 4, true, false, '', {})], "
                           "true, 'mic', 'speaker')")}));
}

TEST_F(AudioRoutingTest, ACallWithoutAudioControlGetsNothing)
{
    ASSERT_TRUE(addCall(active, {tones}));
    emit host.devicesChanged();
    emit host.microphoneMutedChanged();
    emit host.selectedInputDeviceChanged();
    emit host.selectedOutputDeviceChanged();
    EXPECT_EQ(commands(), QStringList());
}

TEST_F(AudioRoutingTest, AnEmptyDeviceListIsSentAsTheFirstArgument)
{
    ASSERT_TRUE(addCall(active, {audioControl}));
    EXPECT_EQ(commands(), QStringList({state("(@a(sibbsa{sv}) [], false, 'mic', 'speaker')")}));
}

TEST_F(AudioRoutingTest, EmptyDeviceIdsAreSentAsEmptyStrings)
{
    host.audio = {};
    ASSERT_TRUE(addCall(active, {audioControl}));
    emit host.microphoneMutedChanged();
    EXPECT_EQ(commands(), QStringList({state("(@a(sibbsa{sv}) [], false, '', '')"), route("(false, '', '')")}));
}

TEST_F(AudioRoutingTest, AChangeOfDevicesSendsTheWholeStateAsItIsThen)
{
    ASSERT_TRUE(addWiredCall());
    host.audio.devices = {microphone()};
    host.audio.inputDeviceId = "in";
    host.audio.outputDeviceId = "out";
    host.audio.microphoneMuted = true;
    emit host.devicesChanged();
    EXPECT_EQ(commands(), QStringList({state("([('mic', 4, true, false, '', @a{sv} {})], true, 'in', 'out')")}));
}

TEST_F(AudioRoutingTest, EachChangeOfMuteOrSelectionSendsTheRouteWithoutDevices)
{
    ASSERT_TRUE(addWiredCall());
    host.audio.devices = {earpiece()};
    host.audio.microphoneMuted = true;
    emit host.microphoneMutedChanged();
    EXPECT_EQ(commands(), QStringList({route("(true, 'mic', 'speaker')")}));

    application.forgetWhatArrived();
    host.audio.inputDeviceId = "in";
    emit host.selectedInputDeviceChanged();
    EXPECT_EQ(commands(), QStringList({route("(true, 'in', 'speaker')")}));

    application.forgetWhatArrived();
    host.audio.outputDeviceId = "out";
    emit host.selectedOutputDeviceChanged();
    EXPECT_EQ(commands(), QStringList({route("(true, 'in', 'out')")}));
}

TEST_F(AudioRoutingTest, NothingIsCoalescedOrLeftOut)
{
    ASSERT_TRUE(addWiredCall());
    emit host.selectedInputDeviceChanged();
    emit host.selectedInputDeviceChanged();
    emit host.selectedOutputDeviceChanged();
    emit host.devicesChanged();
    emit host.devicesChanged();
    emit host.microphoneMutedChanged();
    const QString wholeRoute = route("(false, 'mic', 'speaker')");
    const QString wholeState = state("(@a(sibbsa{sv}) [], false, 'mic', 'speaker')");
    EXPECT_EQ(commands(), QStringList({wholeRoute, wholeRoute, wholeRoute, wholeState, wholeState, wholeRoute}));
}

TEST_F(AudioRoutingTest, APushIsSentWithinTheHostsSignalAndCarriesTheStateOfThatMoment)
{
    ASSERT_TRUE(addWiredCall());
    host.audio.inputDeviceId = "first";
    emit host.microphoneMutedChanged();
    host.audio.inputDeviceId = "second";
    emit host.selectedInputDeviceChanged();
    host.audio.inputDeviceId = "third";
    emit host.selectedOutputDeviceChanged();
    host.audio.inputDeviceId = "fourth";
    emit host.devicesChanged();
    host.audio.inputDeviceId = "fifth";
    EXPECT_EQ(commands(),
        QStringList({route("(false, 'first', 'speaker')"), route("(false, 'second', 'speaker')"),
            route("(false, 'third', 'speaker')"), state("(@a(sibbsa{sv}) [], false, 'fourth', 'speaker')")}));
}

TEST_F(AudioRoutingTest, AudioControlThatComesLaterIsWiredThen)
{
    ASSERT_TRUE(addCall(active));
    EXPECT_EQ(commands(), QStringList());
    host.events.clear();
    application.announce(managerPath, callPath, "{'zelkovar.Call.AudioControl1': {}}");
    EXPECT_EQ(commands(), QStringList({state("(@a(sibbsa{sv}) [], false, 'mic', 'speaker')")}));
    request("RequestMute", "true");
    EXPECT_EQ(host.events, QStringList({"interfaces added /m/c1 zelkovar.Call.AudioControl1", "mute true"}));
}

TEST_F(AudioRoutingTest, ASecondReportWiresNothingASecondTime)
{
    ASSERT_TRUE(addWiredCall());
    application.announce(managerPath, callPath, callInterfaces(active, {audioControl}));
    application.announce(managerPath, callPath, "{'zelkovar.Call.AudioControl1': {}}");
    EXPECT_EQ(commands(), QStringList()) << "no second state";
    host.events.clear();

    emit host.devicesChanged();
    emit host.microphoneMutedChanged();
    emit host.selectedInputDeviceChanged();
    emit host.selectedOutputDeviceChanged();
    EXPECT_EQ(commands().size(), 4);
    request("RequestMute", "true");
    request("RequestAudioRoute", "'a', 'b'");
    EXPECT_EQ(host.events, QStringList({"mute true", "input a", "output b"}));
}

TEST_F(AudioRoutingTest, LosingTheInterfaceAloneKeepsTheWiring)
{
    ASSERT_TRUE(addWiredCall());
    application.withdraw(managerPath, callPath, {audioControl});
    settle();
    host.events.clear();
    emit host.microphoneMutedChanged();
    EXPECT_EQ(commands(), QStringList({route("(false, 'mic', 'speaker')")}));
    request("RequestMute", "false");
    EXPECT_EQ(host.events, QStringList({"mute false"}));
    // Nor is it wired anew when the interface comes back.
    application.forgetWhatArrived();
    application.announce(managerPath, callPath, "{'zelkovar.Call.AudioControl1': {}}");
    EXPECT_EQ(commands(), QStringList());
}

TEST_F(AudioRoutingTest, TheWiringEndsWithTheCall)
{
    const QPointer<QObject> handler = addWiredCall();
    ASSERT_TRUE(handler);
    application.withdraw(managerPath, callPath, {"zelkovar.Call.Call1"});
    ASSERT_TRUE(waitFor([&] { return handler.isNull(); }));
    host.events.clear();
    emit host.devicesChanged();
    emit host.microphoneMutedChanged();
    request("RequestMute", "true");
    EXPECT_EQ(commands(), QStringList());
    EXPECT_EQ(host.events, QStringList());
}

TEST_F(AudioRoutingTest, EveryCallOfEveryApplicationIsUpdatedWhateverItsStatus)
{
    ScriptedApplication other;
    ASSERT_TRUE(other.registerCallManager("/o"));
    other.announce("/o", "/o/c1", callInterfaces(incoming, {audioControl}));
    ASSERT_TRUE(other.settle());
    ASSERT_TRUE(addWiredCall());
    ASSERT_TRUE(addWiredCall(held, "/m/c2"));
    other.forgetWhatArrived();

    emit host.devicesChanged();
    const QString arguments = "(@a(sibbsa{sv}) [], false, 'mic', 'speaker')";
    EXPECT_THAT(commands(), testing::UnorderedElementsAre(state(arguments), state(arguments, "/m/c2")));
    ASSERT_TRUE(other.settle());
    EXPECT_EQ(other.commands(), QStringList({state(arguments, "/o/c1")}));
}

TEST_F(AudioRoutingTest, AnApplicationThatRefusesUpdatesCausesNothing)
{
    application.refuseCommands("org.freedesktop.DBus.Error.UnknownMethod");
    ASSERT_TRUE(addWiredCall());
    emit host.devicesChanged();
    emit host.microphoneMutedChanged();
    EXPECT_EQ(commands().size(), 2);
    settle();
    EXPECT_EQ(host.events, QStringList());
    EXPECT_EQ(host.calls.size(), 1);
}

// --- Wiring

TEST_F(AudioRoutingTest, WiresTheHostsSignalsInOrderAndThenAsksForTheState)
{
    WiringHost wiringHost;
    CallProvider other(DBusCallManager(application.name(), QDBusObjectPath("/o")), QString(), &wiringHost, nullptr);
    wiringHost.wiring.clear();
    CallHandler handler("x", DBusCallObject(application.name(), QDBusObjectPath("/o/c1")),
        {{"zelkovar.Call.Call1", {}}, {audioControl, {}}}, &other);
    const QStringList wired = {"microphoneMutedChanged", "selectedInputDeviceChanged", "selectedOutputDeviceChanged",
        "devicesChanged", "state asked"};
    EXPECT_EQ(wiringHost.wiring, wired);
    handler.addInterfaces({{audioControl, {}}});
    EXPECT_EQ(wiringHost.wiring, wired) << "once only";
}

TEST_F(AudioRoutingTest, WiresAudioAfterStatusAndTones)
{
    WiringHost wiringHost;
    CallProvider other(DBusCallManager(application.name(), QDBusObjectPath("/o")), QString(), &wiringHost, nullptr);
    const DBusCallObject object(application.name(), QDBusObjectPath("/o/c1"));
    CallHandler handler("x", object, {{"zelkovar.Call.Call1", {}}}, &other);
    wiringHost.wiring.clear();
    QObject::connect(
        &handler, &AbstractVoiceCallHandler::supportsDtmfChanged, &handler, [&] { wiringHost.wiring.append("tones"); });
    handler.addInterfaces({{audioControl, {}}, {tones, {}}});
    EXPECT_EQ(wiringHost.wiring.first(), "tones");
    EXPECT_EQ(wiringHost.wiring.last(), "state asked");
}

TEST_F(AudioRoutingTest, WithoutAudioControlTheHostIsLeftAlone)
{
    WiringHost wiringHost;
    CallProvider other(DBusCallManager(application.name(), QDBusObjectPath("/o")), QString(), &wiringHost, nullptr);
    wiringHost.wiring.clear();
    const CallHandler handler("x", DBusCallObject(application.name(), QDBusObjectPath("/o/c1")),
        {{"zelkovar.Call.Call1", {}}, {tones, {}}}, &other);
    EXPECT_EQ(wiringHost.wiring, QStringList());
}

// --- Requests of the application

class AudioRequestTest : public AudioRoutingTest, public testing::WithParamInterface<uint>
{
protected:
    void SetUp() override
    {
        AudioRoutingTest::SetUp();
        ASSERT_TRUE(addWiredCall(QString("'Status': <uint32 %1>, 'Incoming': <true>").arg(GetParam())));
    }

    /** Whether the call is active or dialing. */
    static bool isHeard() { return GetParam() == 2 || GetParam() == 5 || GetParam() == 6; }
};

TEST_P(AudioRequestTest, MuteIsPassedOnOnlyWhileActiveOrDialing)
{
    request("RequestMute", "true");
    request("RequestMute", "false");
    EXPECT_EQ(host.events, isHeard() ? QStringList({"mute true", "mute false"}) : QStringList());
    EXPECT_EQ(commands(), QStringList()) << "no answer goes back";
}

TEST_P(AudioRequestTest, RouteIsPassedOnOnlyWhileActiveOrDialingInputFirst)
{
    request("RequestAudioRoute", "'wanted-input', 'wanted-output'");
    EXPECT_EQ(host.events, isHeard() ? QStringList({"input wanted-input", "output wanted-output"}) : QStringList());
    EXPECT_EQ(commands(), QStringList());
}

TEST_P(AudioRequestTest, PushesFlowInEveryStatus)
{
    emit host.devicesChanged();
    emit host.selectedOutputDeviceChanged();
    EXPECT_EQ(commands(),
        QStringList({state("(@a(sibbsa{sv}) [], false, 'mic', 'speaker')"), route("(false, 'mic', 'speaker')")}));
}

INSTANTIATE_TEST_SUITE_P(
    OfRemoteStatus, AudioRequestTest, testing::Values(0U, 1U, 2U, 3U, 4U, 5U, 6U, 7U, 8U, 0xffffffffU));

TEST_F(AudioRoutingTest, AnIncomingCallIsHeardOnceItIsAnsweredAndNoLongerWhenItIsOver)
{
    ASSERT_TRUE(addWiredCall(incoming));
    request("RequestMute", "true");
    changeStatus(5);
    request("RequestMute", "false");
    changeStatus(1);
    request("RequestMute", "true");
    EXPECT_EQ(host.events, QStringList({"h1 status 1", "mute false", "h1 status 7"}));
}

TEST_F(AudioRoutingTest, EmptyAndUnknownDeviceIdsArePassedOnUnchanged)
{
    host.audio.devices = {microphone()};
    ASSERT_TRUE(addWiredCall());
    request("RequestAudioRoute", "'', ''");
    request("RequestAudioRoute", "'no-such-device', 'mic'");
    EXPECT_EQ(host.events, QStringList({"input ", "output ", "input no-such-device", "output mic"}));
}

TEST_F(AudioRoutingTest, ARequestThatChangesNothingIsPassedOnAllTheSame)
{
    ASSERT_TRUE(addWiredCall());
    request("RequestMute", "false");
    request("RequestMute", "false");
    request("RequestAudioRoute", "'mic', 'speaker'");
    EXPECT_EQ(host.events, QStringList({"mute false", "mute false", "input mic", "output speaker"}));
}

TEST_F(AudioRoutingTest, TheOutcomeOfARequestReachesTheApplicationThroughTheHost)
{
    ASSERT_TRUE(addWiredCall());
    QObject::connect(&host, &VoiceCallManagerInterface::setMuteMicrophoneRequested, &host, [&](bool mute) {
        host.audio.microphoneMuted = mute;
        emit host.microphoneMutedChanged();
    });
    request("RequestMute", "true");
    EXPECT_EQ(commands(), QStringList({route("(true, 'mic', 'speaker')")}));
}

TEST_F(AudioRoutingTest, RequestsOfAnotherSignatureReachNobody)
{
    ASSERT_TRUE(addWiredCall());
    for (const char *arguments : {"'one'", "", "'a', 'b', 'c'", "true, 'a'", "['a', 'b']", "objectpath '/a', 'b'"})
        request("RequestAudioRoute", arguments);
    for (const char *arguments : {"1", "uint32 1", "", "'true'", "<true>", "true, true"})
        request("RequestMute", arguments);
    EXPECT_EQ(host.events, QStringList());
    request("RequestMute", "true");
    EXPECT_EQ(host.events, QStringList({"mute true"})) << "and the next good one is heard";
}

TEST_F(AudioRoutingTest, RequestsOfAStrangerOrOnAnotherPathOrInterfaceReachNobody)
{
    ScriptedApplication stranger;
    ASSERT_TRUE(addWiredCall());
    stranger.signal(callPath, audioControl, "RequestMute", "true");
    stranger.signal(callPath, audioControl, "RequestAudioRoute", "'a', 'b'");
    ASSERT_TRUE(stranger.settle());
    request("RequestMute", "true", "/m/c2");
    request("RequestMute", "true", managerPath);
    application.signal(callPath, "zelkovar.Call.Call1", "RequestMute", "true");
    settle();
    EXPECT_EQ(host.events, QStringList());
}

TEST_F(AudioRoutingTest, ARequestIsJudgedByTheStatusOfItsOwnCall)
{
    ASSERT_TRUE(addWiredCall(active));
    ASSERT_TRUE(addWiredCall(incoming, "/m/c2"));
    request("RequestMute", "true", "/m/c2");
    EXPECT_EQ(host.events, QStringList());
    request("RequestMute", "true", callPath);
    EXPECT_EQ(host.events, QStringList({"mute true"}));
}

TEST_F(AudioRoutingTest, TheFirstArgumentOfTheSlotIsTheInputWhateverItsName)
{
    AbstractVoiceCallHandler *handler = addWiredCall();
    ASSERT_TRUE(handler);
    ASSERT_TRUE(
        QMetaObject::invokeMethod(handler, "onAudioRouteRequested", Q_ARG(QString, "first"), Q_ARG(QString, "second")));
    EXPECT_EQ(host.events, QStringList({"input first", "output second"}));
}
