// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "clienttest.h"

#include <QtDBus/QDBusVariant>

using Ringlet::Call;
using Ringlet::CallDescription;
using Ringlet::CallStatus;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

const QString call1 = QStringLiteral("/org/example/calls/call1");
const QString removed
    = "InterfacesRemoved " + call1 + " zelkovar.Call.AudioControl1 zelkovar.Call.Call1 zelkovar.Call.DTMF1";

using CallTest = ClientTest;

/** The names of all signals that say what a call is asked for or becomes, in their order. */
QStringList *recordSignals(Call *call)
{
    auto *record = new QStringList;
    QObject::connect(call, &QObject::destroyed, [record] { delete record; });
    QObject::connect(call, &Call::answerRequested, [record] { record->append("answer"); });
    QObject::connect(
        call, &Call::rejectRequested, [record](uint reason) { record->append(QString("reject %1").arg(reason)); });
    QObject::connect(call, &Call::holdRequested, [record](bool hold) { record->append(hold ? "hold" : "resume"); });
    QObject::connect(call, &Call::tonesRequested, [record](const QString &tones) { record->append("tones " + tones); });
    QObject::connect(
        call, &Call::commandIgnored, [record](const QString &method) { record->append("ignored " + method); });
    QObject::connect(call, &Call::statusChanged, [record, call] { record->append(statusName(call->status())); });
    QObject::connect(call, &Call::ended, [record] { record->append("ended"); });
    return record;
}

class Commands : public CallTest
{
protected:
    void bringUp(CallStatus status, const CallDescription &description = {})
    {
        call = addKnownCall(description);
        call->setStatus(status);
        record = recordSignals(call);
    }

    QString send(const QString &member, const QVariantList &arguments = {})
    {
        return command(call->path(), "Call1", member, arguments);
    }

    Call *call = nullptr;
    QStringList *record = nullptr;
};

} // namespace

// --- What the host sees

TEST_F(CallTest, ShowsItsDescriptionToTheHost)
{
    CallDescription description;
    description.incoming = false;
    description.address = "sip:ann@example.org";
    description.remoteName = QString::fromUtf8("Ann \xc3\x84xample");
    description.localAddress = "sip:me@example.org";
    description.localName = "Me";
    const Call *call = addKnownCall(description);
    const QVariantMap properties = host.calls().value(QDBusObjectPath(call->path())).value("zelkovar.Call.Call1");
    EXPECT_EQ(properties,
        (QVariantMap{{"Holdable", true}, {"Incoming", false}, {"LocalHandle", "sip:me@example.org"},
            {"LocalName", "Me"}, {"RemoteHandle", "sip:ann@example.org"},
            {"RemoteName", QString::fromUtf8("Ann \xc3\x84xample")}, {"Status", 2U}, {"Uri", "sip:ann@example.org"}}));
    EXPECT_EQ(properties.value("Status").userType(), QMetaType::UInt);
}

TEST_F(CallTest, OffersOnlyWhatItWasDescribedWith)
{
    CallDescription description;
    description.tones = false;
    description.audioControl = false;
    const Call *call = addKnownCall(description);
    EXPECT_THAT(host.calls().value(QDBusObjectPath(call->path())).keys(), ElementsAre("zelkovar.Call.Call1"));
    EXPECT_EQ(command(call->path(), "DTMF1", "SendDTMF", {"1"}), "org.freedesktop.DBus.Error.UnknownInterface");
    EXPECT_EQ(command(call->path(), "AudioControl1", "UpdateAudioRoute", {true, "", ""}),
        "org.freedesktop.DBus.Error.UnknownInterface");
}

TEST_F(CallTest, BeginsAsItsDirectionSays)
{
    CallDescription outgoing;
    outgoing.incoming = false;
    EXPECT_EQ(calls->addCall({})->status(), CallStatus::Incoming);
    EXPECT_EQ(calls->addCall(outgoing)->status(), CallStatus::Dialing);
}

TEST_F(CallTest, TellsAChangeOnce)
{
    Call *call = addKnownCall();
    call->setStatus(CallStatus::Active);
    call->setStatus(CallStatus::Active);
    EXPECT_THAT(wire(), ElementsAre("StatusChanged /org/example/calls/call1 5"));
    EXPECT_EQ(host.managedObjects(path).first().value("zelkovar.Call.Call1").value("Status"), 5U);
}

TEST_F(CallTest, SendsBeforeItTellsTheApplication)
{
    Call *call = addKnownCall();
    QObject::connect(call, &Call::statusChanged, call, [call](CallStatus status) {
        if (status == CallStatus::Active)
            call->setStatus(CallStatus::Held);
    });
    call->setStatus(CallStatus::Active);
    EXPECT_THAT(
        wire(), ElementsAre("StatusChanged /org/example/calls/call1 5", "StatusChanged /org/example/calls/call1 7"));
}

TEST_F(CallTest, EndsWithItsFinalStatusAndThenLeaves)
{
    Call *call = addKnownCall();
    const QPointer<Call> watched(call);
    call->end();
    EXPECT_TRUE(call->hasEnded());
    EXPECT_THAT(wire(), ElementsAre("StatusChanged /org/example/calls/call1 1", removed));
    EXPECT_TRUE(waitFor([&] { return watched.isNull(); }));
}

TEST_F(CallTest, IsNotDisconnectedTwice)
{
    Call *call = addKnownCall();
    call->setStatus(CallStatus(4));
    call->end();
    EXPECT_THAT(wire(), ElementsAre("StatusChanged /org/example/calls/call1 4", removed));
}

TEST_F(CallTest, SaysNothingAfterItsEnd)
{
    Call *call = addKnownCall();
    const QStringList *record = recordSignals(call);
    call->end();
    call->end();
    call->setStatus(CallStatus::Active);
    EXPECT_THAT(*record, ElementsAre("disconnected", "ended"));
    EXPECT_EQ(call->status(), CallStatus::Disconnected);
    EXPECT_THAT(wire(), ElementsAre("StatusChanged /org/example/calls/call1 1", removed));
}

TEST_F(CallTest, EndsWhenItIsDeleted)
{
    delete addKnownCall();
    EXPECT_THAT(wire(), ElementsAre("StatusChanged /org/example/calls/call1 1", removed));
    EXPECT_THAT(calls->calls(), IsEmpty());
}

TEST_F(CallTest, CanBeEndedByWhatItsEndCauses)
{
    Call *call = addKnownCall();
    QObject::connect(call, &Call::statusChanged, call, &Call::end);
    call->end();
    EXPECT_THAT(wire(), ElementsAre("StatusChanged /org/example/calls/call1 1", removed));
}

TEST_F(CallTest, KnowsWhatStatusesMean)
{
    Call *call = calls->addCall({});
    call->setStatus(CallStatus(6));
    EXPECT_TRUE(call->is(CallStatus::Active));
    EXPECT_EQ(statusName(call->status()), "active");
    call->setStatus(CallStatus(0));
    EXPECT_TRUE(call->is(CallStatus::Disconnected));
    call->setStatus(CallStatus(8));
    EXPECT_EQ(statusName(call->status()), "unknown");
    EXPECT_EQ(canonical(CallStatus(8)), CallStatus::Disconnected);
}

// --- The host's broadcast

TEST_F(CallTest, TellsThatTheHostShowsIt)
{
    registerWithHost();
    Call *call = calls->addCall({});
    QSignalSpy shown(call, &Call::shown);
    QSignalSpy shownChanged(call, &Call::shownChanged);
    EXPECT_FALSE(call->isShown());
    ASSERT_TRUE(waitFor([&] { return call->isShown(); }));
    ASSERT_EQ(shown.size(), 1);
    EXPECT_EQ(shown.at(0).at(0).value<CallStatus>(), CallStatus::Incoming);
    host.dropName();
    ASSERT_TRUE(waitFor([&] { return !call->isShown(); }));
    EXPECT_EQ(shownChanged.size(), 2);
}

TEST_F(CallTest, SendsItsStatusAgainWhenTheHostShowsAnOlderOne)
{
    registerWithHost();
    Call *call = calls->addCall({});
    QSignalSpy repeated(call, &Call::statusRepeated);
    call->setStatus(CallStatus::Active);
    ASSERT_TRUE(host.waitForWire("StatusChanged /org/example/calls/call1 5", 2));
    EXPECT_EQ(repeated.size(), 1);
    EXPECT_THAT(wire(),
        ElementsAre("InterfacesAdded /org/example/calls/call1 3", "StatusChanged /org/example/calls/call1 5",
            "StatusChanged /org/example/calls/call1 5"));
}

TEST_F(CallTest, SendsNothingWhenTheHostShowsItAsItIs)
{
    addKnownCall();
    EXPECT_THAT(wire(), IsEmpty());
}

TEST_F(CallTest, BelievesNobodyButTheHost)
{
    host.keepQuiet();
    registerWithHost();
    const Call *call = calls->addCall({});
    ASSERT_TRUE(host.waitForWire("InterfacesAdded"));
    const FakeHost stranger;
    FakeHost().broadcast(call->path(), host.calls().first(), host.application());
    const InterfaceMap untyped{{"zelkovar.Call.Call1", {{"Status", "5"}}}};
    host.broadcast(call->path(), untyped);
    host.broadcast("/elsewhere/call1", host.calls().first());
    host.broadcast(call->path() + "x", host.calls().first());
    EXPECT_THAT(wire(), ElementsAre("InterfacesAdded /org/example/calls/call1 3"));
    EXPECT_FALSE(call->isShown());
}

// --- Commands

TEST_F(Commands, AnswerIsForAnIncomingCall)
{
    bringUp(CallStatus::Incoming);
    EXPECT_EQ(send("Accept"), QString());
    EXPECT_THAT(*record, ElementsAre("answer"));
    EXPECT_EQ(call->status(), CallStatus::Incoming) << "nothing has happened yet";
}

TEST_F(Commands, AnswerMeansNothingToAnyOtherCall)
{
    for (const CallStatus status : {CallStatus::Active, CallStatus::Held, CallStatus::Disconnected}) {
        call ? call->setStatus(status) : bringUp(status);
        record->clear();
        EXPECT_EQ(send("Accept"), QString());
        EXPECT_THAT(*record, ElementsAre("ignored Accept"));
    }
}

TEST_F(Commands, RejectComesWithItsReasonInEveryStatus)
{
    for (const CallStatus status : {CallStatus::Incoming, CallStatus::Active, CallStatus::Held}) {
        call ? call->setStatus(status) : bringUp(status);
        record->clear();
        EXPECT_EQ(send("Reject", {1U}), QString());
        EXPECT_THAT(*record, ElementsAre("reject 1"));
    }
}

TEST_F(Commands, HoldIsForAnActiveCallAndResumeForAHeldOne)
{
    bringUp(CallStatus::Active);
    EXPECT_EQ(send("SetHold", {false}), QString());
    EXPECT_EQ(send("SetHold", {true}), QString());
    EXPECT_THAT(*record, ElementsAre("ignored SetHold", "hold"));
    call->setStatus(CallStatus::Held);
    record->clear();
    EXPECT_EQ(send("SetHold", {true}), QString());
    EXPECT_EQ(send("SetHold", {false}), QString());
    EXPECT_THAT(*record, ElementsAre("ignored SetHold", "resume"));
}

TEST_F(Commands, HoldMeansNothingToARingingCallOrOneThatCannotBeHeld)
{
    bringUp(CallStatus::Incoming);
    send("SetHold", {true});
    EXPECT_THAT(*record, ElementsAre("ignored SetHold"));

    CallDescription description;
    description.holdable = false;
    bringUp(CallStatus::Active, description);
    send("SetHold", {true});
    EXPECT_THAT(*record, ElementsAre("ignored SetHold"));
}

// The host's wish, what the application does about it, and nothing more.
TEST_F(Commands, HoldDoesNotEcho)
{
    bringUp(CallStatus::Active);
    QObject::connect(call, &Call::holdRequested, call,
        [this](bool hold) { call->setStatus(hold ? CallStatus::Held : CallStatus::Active); });
    wire();
    host.forgetWire();
    send("SetHold", {true});
    send("SetHold", {true});
    send("SetHold", {false});
    EXPECT_THAT(
        wire(), ElementsAre("StatusChanged /org/example/calls/call1 7", "StatusChanged /org/example/calls/call1 5"));
}

TEST_F(Commands, TonesComeAsTheyAre)
{
    bringUp(CallStatus::Active);
    EXPECT_EQ(command(call->path(), "DTMF1", "SendDTMF", {"12#*A"}), QString());
    EXPECT_THAT(*record, ElementsAre("tones 12#*A"));
}

TEST_F(Commands, AreReportedBeforeAnythingIsMadeOfThem)
{
    bringUp(CallStatus::Incoming);
    QObject::connect(call, &Call::commandReceived, [this](const QString &method, const QVariantList &arguments) {
        record->append(QString("%1/%2").arg(method).arg(arguments.size()));
    });
    send("Accept");
    send("SetHold", {true});
    send("Reject", {1U});
    EXPECT_THAT(*record, ElementsAre("Accept/0", "answer", "SetHold/1", "ignored SetHold", "Reject/1", "reject 1"));
}

TEST_F(Commands, WithOtherArgumentsAreRefused)
{
    bringUp(CallStatus::Active);
    EXPECT_EQ(send("Accept", {1}), "org.freedesktop.DBus.Error.InvalidArgs");
    EXPECT_EQ(send("Reject", {"1"}), "org.freedesktop.DBus.Error.InvalidArgs");
    EXPECT_EQ(send("SetHold", {1U}), "org.freedesktop.DBus.Error.InvalidArgs");
    EXPECT_EQ(send("Transfer"), "org.freedesktop.DBus.Error.UnknownMethod");
    EXPECT_EQ(command(call->path(), "DTMF1", "Accept", {}), "org.freedesktop.DBus.Error.UnknownMethod");
    EXPECT_THAT(*record, IsEmpty());
}

// A dialog that an application opens runs an event loop, in which the far end may hang up.
TEST_F(Commands, MayOutliveTheCall)
{
    bringUp(CallStatus::Incoming);
    const QString object = call->path();
    QObject::connect(call, &Call::answerRequested, calls.get(), [this] {
        call->end();
        QCoreApplication::sendPostedEvents(call, QEvent::DeferredDelete);
    });
    QObject::connect(call, &Call::shown, calls.get(), [this] { call->end(); });
    EXPECT_EQ(command(object, "Call1", "Accept", {}), QString());
    EXPECT_THAT(calls->calls(), IsEmpty());
}

TEST_F(CallTest, MayEndWhenItIsShown)
{
    registerWithHost();
    Call *call = calls->addCall({});
    QObject::connect(call, &Call::shown, calls.get(), [call] {
        call->end();
        QCoreApplication::sendPostedEvents(call, QEvent::DeferredDelete);
    });
    ASSERT_TRUE(host.waitForWire("InterfacesRemoved"));
    EXPECT_THAT(wire(),
        ElementsAre("InterfacesAdded /org/example/calls/call1 3", "StatusChanged /org/example/calls/call1 1", removed));
}
