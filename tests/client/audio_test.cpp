// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "clienttest.h"

#include <QtCore/QTimer>

using Ringlet::AudioRoute;
using Ringlet::Call;
using Ringlet::CallDescription;
using Ringlet::CallStatus;
using testing::ElementsAre;
using testing::IsEmpty;
using Outcome = Call::Outcome;

namespace {

class Audio : public ClientTest
{
protected:
    /** An active call whose host has told of its audio: not muted. */
    void bringUp()
    {
        call = addActiveCall();
        updateAudioState(call, false);
    }

    void mute(bool muted) { updateAudioRoute(call, muted, "mic", "ear"); }

    Call *call = nullptr;
};

} // namespace

// --- What the host tells

TEST_F(Audio, IsUnknownUntilTheHostTells)
{
    const Call *call = addActiveCall();
    EXPECT_FALSE(call->audioRoute());
    EXPECT_THAT(call->audioDevices(), IsEmpty());
}

TEST_F(Audio, ComesWithTheFirstState)
{
    call = addKnownCall();
    QSignalSpy routes(call, &Call::audioRouteChanged);
    QSignalSpy devices(call, &Call::audioDevicesChanged);
    updateAudioState(call, true, {{"mic", 1, true, false, "Microphone", {{"Builtin", true}}}});
    EXPECT_EQ(call->audioRoute(), (AudioRoute{true, "mic", "ear"}));
    EXPECT_THAT(call->audioDevices(),
        ElementsAre(Ringlet::AudioDevice{"mic", 1, true, false, "Microphone", {{"Builtin", true}}}));
    EXPECT_EQ(routes.size(), 1);
    EXPECT_EQ(devices.size(), 1);
}

TEST_F(Audio, IsToldEvenWhenItIsAsOneWouldExpect)
{
    call = addKnownCall();
    QSignalSpy routes(call, &Call::audioRouteChanged);
    EXPECT_EQ(command(call->path(), "AudioControl1", "UpdateAudioRouteState",
                  {QVariant::fromValue(FakeDeviceList()), false, "", ""}),
        QString());
    EXPECT_EQ(routes.size(), 1);
    EXPECT_EQ(call->audioRoute(), AudioRoute());
}

TEST_F(Audio, FollowsTheHostAndTellsOnlyChanges)
{
    bringUp();
    QSignalSpy routes(call, &Call::audioRouteChanged);
    QSignalSpy devices(call, &Call::audioDevicesChanged);
    updateAudioRoute(call, false, "mic", "ear");
    updateAudioState(call, false);
    EXPECT_EQ(routes.size(), 0);
    updateAudioRoute(call, false, "headset", "headset");
    EXPECT_EQ(call->audioRoute(), (AudioRoute{false, "headset", "headset"}));
    EXPECT_EQ(routes.size(), 1);
    EXPECT_EQ(devices.size(), 0);
}

TEST_F(Audio, AnUpdateBeforeTheFirstStateTellsNothing)
{
    call = addActiveCall();
    mute(true);
    EXPECT_FALSE(call->audioRoute());
}

TEST_F(Audio, DevicesOfAnotherFormAreUnknownAndTheRouteIsNot)
{
    call = addActiveCall();
    EXPECT_EQ(command(call->path(), "AudioControl1", "UpdateAudioRouteState", {QStringList{"a"}, true, "mic", "ear"}),
        QString());
    EXPECT_EQ(call->audioRoute(), (AudioRoute{true, "mic", "ear"}));
    EXPECT_EQ(
        command(call->path(), "AudioControl1", "UpdateAudioRouteState", {QVariantMap{{"mic", 1}}, false, "mic", "ear"}),
        QString());
    EXPECT_EQ(call->audioRoute(), (AudioRoute{false, "mic", "ear"}));
    EXPECT_THAT(call->audioDevices(), IsEmpty());
    EXPECT_EQ(command(call->path(), "AudioControl1", "UpdateAudioRouteState", {1, true, "mic", "ear"}),
        "org.freedesktop.DBus.Error.InvalidArgs");
}

TEST_F(Audio, IsUnknownAgainWhenTheHostHasGone)
{
    bringUp();
    updateAudioState(call, true, {{"mic", 1, true, false, "Microphone", {}}});
    QSignalSpy routes(call, &Call::audioRouteChanged);
    QSignalSpy devices(call, &Call::audioDevicesChanged);
    host.dropName();
    ASSERT_TRUE(waitForState(Ringlet::CallManager::State::Waiting));
    EXPECT_FALSE(call->audioRoute());
    EXPECT_THAT(call->audioDevices(), IsEmpty());
    EXPECT_EQ(routes.size(), 1);
    EXPECT_EQ(devices.size(), 1);
    EXPECT_EQ(call->requestMicrophoneMute(true), Outcome::TooEarly);
}

TEST_F(Audio, MayEndTheCall)
{
    call = addActiveCall();
    QObject::connect(call, &Call::audioDevicesChanged, calls.get(), [this] {
        call->end();
        QCoreApplication::sendPostedEvents(call, QEvent::DeferredDelete);
    });
    updateAudioState(call, true, {{"mic", 1, true, false, "Microphone", {}}});
    EXPECT_THAT(calls->calls(), IsEmpty());
}

// --- What the application asks for

TEST_F(Audio, RequestsGoToTheHost)
{
    bringUp();
    EXPECT_EQ(call->requestMicrophoneMute(true), Outcome::Sent);
    EXPECT_EQ(call->requestAudioRoute("headset", "speaker"), Outcome::Sent);
    EXPECT_THAT(wire(),
        ElementsAre(
            "RequestMute /org/example/calls/call1 true", "RequestAudioRoute /org/example/calls/call1 headset speaker"));
    EXPECT_EQ(call->audioRoute(), (AudioRoute{false, "mic", "ear"})) << "the host has granted nothing yet";
}

TEST_F(Audio, NothingIsRequestedThatIsSoAlready)
{
    bringUp();
    EXPECT_EQ(call->requestMicrophoneMute(false), Outcome::Unchanged);
    EXPECT_EQ(call->requestAudioRoute("mic", "ear"), Outcome::Unchanged);
    EXPECT_THAT(wire(), IsEmpty());
}

TEST_F(Audio, ARequestOnItsWayCanBeTakenBack)
{
    bringUp();
    call->requestMicrophoneMute(true);
    EXPECT_EQ(call->requestMicrophoneMute(false), Outcome::Sent);
    call->requestAudioRoute("headset", "ear");
    EXPECT_EQ(call->requestAudioRoute("mic", "ear"), Outcome::Sent);
    EXPECT_THAT(wire(),
        ElementsAre("RequestMute /org/example/calls/call1 true", "RequestMute /org/example/calls/call1 false",
            "RequestAudioRoute /org/example/calls/call1 headset ear",
            "RequestAudioRoute /org/example/calls/call1 mic ear"));
}

TEST_F(Audio, WhatTheHostTellsSettlesEarlierRequests)
{
    bringUp();
    call->requestMicrophoneMute(true);
    call->requestAudioRoute("headset", "ear");
    mute(false);
    EXPECT_EQ(call->requestMicrophoneMute(false), Outcome::Unchanged) << "the host has not granted the mute";
    EXPECT_EQ(call->requestAudioRoute("mic", "ear"), Outcome::Unchanged);
}

TEST_F(Audio, NothingIsRequestedBeforeTheHostListens)
{
    call = addActiveCall();
    EXPECT_EQ(call->requestMicrophoneMute(true), Outcome::TooEarly);
    EXPECT_EQ(call->requestAudioRoute("headset", "headset"), Outcome::TooEarly);
    EXPECT_THAT(wire(), IsEmpty());
}

TEST_F(Audio, NothingIsRequestedInAStatusInWhichNoHostListens)
{
    bringUp();
    for (const CallStatus status : {CallStatus::Incoming, CallStatus::Held, CallStatus::Disconnected}) {
        call->setStatus(status);
        EXPECT_EQ(call->requestMicrophoneMute(true), Outcome::WrongStatus);
        EXPECT_EQ(call->requestAudioRoute("headset", "headset"), Outcome::WrongStatus);
    }
    EXPECT_EQ(host.wire().filter("Request").size(), 0);
    call->setStatus(CallStatus::Dialing);
    EXPECT_EQ(call->requestMicrophoneMute(true), Outcome::Sent);
}

TEST_F(Audio, NothingIsRequestedWithoutAudioControl)
{
    CallDescription description;
    description.audioControl = false;
    call = addKnownCall(description);
    call->setStatus(CallStatus::Active);
    EXPECT_EQ(call->requestMicrophoneMute(true), Outcome::Unsupported);
    EXPECT_EQ(call->requestAudioRoute("headset", "headset"), Outcome::Unsupported);
}

// --- Echoes

TEST_F(Audio, AReportOfWhatTheHostToldIsNotSentBack)
{
    bringUp();
    mute(true);
    EXPECT_EQ(call->reportMicrophoneMuted(true), Outcome::Unchanged);
    EXPECT_THAT(wire(), IsEmpty());
}

TEST_F(Audio, AReportOfAnOwnChangeIsAskedOfTheHost)
{
    bringUp();
    EXPECT_EQ(call->reportMicrophoneMuted(true), Outcome::Sent);
    EXPECT_THAT(wire(), ElementsAre("RequestMute /org/example/calls/call1 true"));
}

TEST_F(Audio, ReportsThatLagBehindAreNotSentBack)
{
    bringUp();
    mute(true);
    mute(false);
    EXPECT_EQ(call->reportMicrophoneMuted(true), Outcome::Unchanged);
    EXPECT_EQ(call->reportMicrophoneMuted(false), Outcome::Unchanged);
    EXPECT_THAT(wire(), IsEmpty());
}

TEST_F(Audio, AChangeOfDevicesTellsNothingOfTheMute)
{
    bringUp();
    mute(true);
    call->reportMicrophoneMuted(true);
    updateAudioRoute(call, true, "headset", "headset");
    EXPECT_EQ(call->reportMicrophoneMuted(false), Outcome::Sent);
    mute(false);
    EXPECT_EQ(call->reportMicrophoneMuted(true), Outcome::Sent);
}

TEST_F(Audio, WhatTheHostGrantsIsNoNewsToTheApplicationThatAsked)
{
    bringUp();
    call->reportMicrophoneMuted(true);
    mute(true);
    wire();
    host.forgetWire();
    EXPECT_EQ(call->reportMicrophoneMuted(false), Outcome::Sent) << "the user has unmuted at once";
    EXPECT_THAT(wire(), ElementsAre("RequestMute /org/example/calls/call1 false"));
}

// An audio engine that takes its time and tells of every change, whoever made it, beside a host that grants
// everything: each would answer the other for ever.
TEST_F(Audio, AnEngineThatTellsEveryChangeAndAHostThatGrantsEverythingComeToRest)
{
    bringUp();
    QObject::connect(call, &Call::audioRouteChanged, call, [this] {
        const bool muted = call->audioRoute()->microphoneMuted;
        QTimer::singleShot(5, call, [this, muted] { call->reportMicrophoneMuted(muted); });
    });
    int granted = 0;
    const auto grant = [&] {
        const QStringList requests = host.wire().filter("RequestMute");
        for (; granted < requests.size(); ++granted)
            mute(requests.at(granted).endsWith("true"));
    };
    mute(true);
    mute(false);
    mute(true);
    QElapsedTimer clock;
    clock.start();
    ASSERT_TRUE(waitFor([&] {
        grant();
        return clock.elapsed() > 200;
    }));
    EXPECT_EQ(granted, 0);
    EXPECT_TRUE(call->audioRoute()->microphoneMuted);
}
