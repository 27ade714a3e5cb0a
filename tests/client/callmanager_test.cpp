// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "clienttest.h"
#include "privatebus.h"

#include <csignal>

using Ringlet::Call;
using Ringlet::CallDescription;
using Ringlet::CallManager;
using Ringlet::CallStatus;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using State = CallManager::State;

namespace {

CallDescription named(const QString &name)
{
    CallDescription description;
    description.name = name;
    return description;
}

class Manager : public ClientTest
{
protected:
    void record()
    {
        QObject::connect(calls.get(), &CallManager::stateChanged, [this](State state) { states.append(state); });
    }

    QList<State> states;
};

} // namespace

TEST_F(Manager, LooksForTheHostAtFirst) { EXPECT_EQ(calls->state(), State::Looking); }

TEST_F(Manager, WaitsForAHostThatIsNotThere)
{
    record();
    EXPECT_TRUE(waitForState(State::Waiting));
    EXPECT_THAT(states, ElementsAre(State::Waiting));
    EXPECT_EQ(calls->hostOwner(), QString());
}

TEST_F(Manager, RegistersWithAHostThatIsThere)
{
    record();
    QSignalSpy appeared(calls.get(), &CallManager::hostAppeared);
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(waitForState(State::Registered));
    EXPECT_EQ(states.mid(states.indexOf(State::Registering)), (QList<State>{State::Registering, State::Registered}));
    EXPECT_EQ(calls->hostOwner(), host.uniqueName());
    ASSERT_EQ(appeared.size(), 1);
    EXPECT_EQ(appeared.at(0).at(0), host.uniqueName());
    EXPECT_EQ(host.wire().count("RegisterCallManager /org/example/calls"), 1);
}

// The answer to the first question may come behind the news that it is out of date. It does so now and then.
TEST_F(Manager, RegistersWithAHostThatAppearsWhileItIsLookedFor)
{
    for (int i = 0; i < 30; ++i) {
        const QString name = QString("org.example.Host%1").arg(i);
        CallManager others(QString("/org/example/others%1").arg(i), name, QDBusConnection::sessionBus());
        ASSERT_TRUE(host.takeName(name));
        ASSERT_TRUE(waitFor([&] { return others.state() == State::Registered; })) << i;
        EXPECT_EQ(others.hostOwner(), host.uniqueName());
    }
}

TEST_F(Manager, RegistersAgainEachTimeTheHostComesBack)
{
    registerWithHost();
    record();
    QSignalSpy vanished(calls.get(), &CallManager::hostVanished);
    for (int i = 0; i < 2; ++i) {
        host.dropName();
        ASSERT_TRUE(waitForState(State::Waiting));
        ASSERT_TRUE(host.takeName());
        ASSERT_TRUE(waitForState(State::Registered));
    }
    EXPECT_EQ(vanished.size(), 2);
    EXPECT_THAT(states,
        ElementsAre(State::Waiting, State::Registering, State::Registered, State::Waiting, State::Registering,
            State::Registered));
}

TEST_F(Manager, CallsThatAreUpAreInTheFirstPictureOfANewHostAndNotAnnounced)
{
    Call *call = calls->addCall({});
    call->setStatus(CallStatus::Active);
    ASSERT_TRUE(waitForState(State::Waiting));
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(waitFor([call] { return call->isShown(); }));
    const QStringList seen = wire();
    EXPECT_THAT(seen.mid(seen.indexOf("RegisterCallManager /org/example/calls")),
        ElementsAre("RegisterCallManager /org/example/calls",
            "GetManagedObjects /org/example/calls: /org/example/calls/call1=5"));
}

TEST_F(Manager, ACallThatBeginsBeforeTheHostIsFoundIsNotAnnouncedBeforeTheRegistration)
{
    calls.reset();
    ASSERT_TRUE(host.takeName());
    calls = std::make_unique<CallManager>(path);
    Call *call = calls->addCall({});
    ASSERT_TRUE(waitFor([call] { return call->isShown(); }));
    EXPECT_THAT(wire(),
        ElementsAre("RegisterCallManager /org/example/calls",
            "GetManagedObjects /org/example/calls:", "InterfacesAdded /org/example/calls/call1 3"));
}

TEST_F(Manager, ACallThatBeginsBeforeItIsKnownThatThereIsNoHostIsAnnouncedThen)
{
    Call *call = calls->addCall({});
    QSignalSpy announced(call, &Call::announced);
    EXPECT_EQ(announced.size(), 0);
    ASSERT_TRUE(waitForState(State::Waiting));
    EXPECT_EQ(announced.size(), 1);
}

TEST_F(Manager, ACallThatBeginsDuringARegistrationWaitsForTheAnswer)
{
    host.holdAnswers();
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(waitForState(State::Registering));
    ASSERT_TRUE(host.waitForWire("GetManagedObjects"));
    Call *call = calls->addCall({});
    QSignalSpy announced(call, &Call::announced);
    EXPECT_THAT(host.managedObjects(path), IsEmpty());
    EXPECT_EQ(announced.size(), 0);

    host.answerRegistrations();
    ASSERT_TRUE(host.waitForWire("InterfacesAdded"));
    EXPECT_EQ(announced.size(), 1);
    EXPECT_THAT(wire(),
        ElementsAre("RegisterCallManager /org/example/calls",
            "GetManagedObjects /org/example/calls:", "InterfacesAdded /org/example/calls/call1 3"));
}

TEST_F(Manager, ACallThatEndsBeforeTheAnswerHasNeverBeen)
{
    host.holdAnswers();
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(host.waitForWire("GetManagedObjects"));
    host.forgetWire();
    Call *call = calls->addCall({});
    call->setStatus(CallStatus::Active);
    call->end();
    host.answerRegistrations();
    ASSERT_TRUE(waitForState(State::Registered));
    EXPECT_THAT(wire(), IsEmpty());
}

TEST_F(Manager, ACallThatIsKeptBackIsLetOutWhenTheHostDies)
{
    host.holdAnswers();
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(host.waitForWire("GetManagedObjects"));
    Call *call = calls->addCall({});
    QSignalSpy announced(call, &Call::announced);
    host.dropName();
    ASSERT_TRUE(waitForState(State::Waiting));
    EXPECT_EQ(announced.size(), 1);
}

TEST_F(Manager, ACallThatIsKeptBackIsLetOutWhenTheHostRefuses)
{
    host.refuseWith("org.freedesktop.DBus.Error.AccessDenied");
    Call *call = nullptr;
    QObject::connect(calls.get(), &CallManager::stateChanged, [&](State state) {
        if (state == State::Registering)
            call = calls->addCall({});
    });
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(waitForState(State::Refused));
    EXPECT_TRUE(host.waitForWire("InterfacesAdded /org/example/calls/call1 3"));
}

TEST_F(Manager, AnAnswerOfAnEarlierHostSaysNothingOfThisOne)
{
    host.holdAnswers();
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(host.waitForWire("GetManagedObjects"));
    FakeHost next;
    next.holdAnswers();
    host.dropName();
    ASSERT_TRUE(next.takeName());
    ASSERT_TRUE(waitFor([&] { return calls->hostOwner() == next.uniqueName(); }));
    host.answerRegistrations();
    host.settle(path);
    EXPECT_EQ(calls->state(), State::Registering);
    next.answerRegistrations();
    EXPECT_TRUE(waitForState(State::Registered));
}

TEST_F(Manager, TellsWhyAHostRefuses)
{
    host.refuseWith("org.freedesktop.DBus.Error.AccessDenied");
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(waitForState(State::Refused));
    EXPECT_EQ(calls->errorName(), "org.freedesktop.DBus.Error.AccessDenied");
    EXPECT_EQ(calls->errorString(), "not \"today\"");
}

TEST_F(Manager, AsksAHostThatRefusedAgainOnRequest)
{
    host.refuseWith("org.freedesktop.DBus.Error.AccessDenied");
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(waitForState(State::Refused));
    host.refuseWith({});
    calls->registerAgain();
    ASSERT_TRUE(waitForState(State::Registered));
    EXPECT_EQ(calls->errorName(), QString());
    calls->registerAgain();
    EXPECT_EQ(wire().count("RegisterCallManager /org/example/calls"), 2) << "registered, it asks no more";
}

TEST_F(Manager, RegistersWithTheNextHostAfterARefusal)
{
    host.refuseWith("org.freedesktop.DBus.Error.AccessDenied");
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(waitForState(State::Refused));
    host.dropName();
    ASSERT_TRUE(waitForState(State::Waiting));
    host.refuseWith({});
    ASSERT_TRUE(host.takeName());
    EXPECT_TRUE(waitForState(State::Registered));
}

TEST_F(Manager, LooksForTheHostOfTheGivenName)
{
    CallManager others("/org/example/others", "org.example.Host", QDBusConnection::sessionBus());
    EXPECT_EQ(others.hostName(), "org.example.Host");
    ASSERT_TRUE(host.takeName("org.example.Host"));
    ASSERT_TRUE(waitFor([&] { return others.state() == State::Registered; }));
    EXPECT_EQ(host.wire().count("RegisterCallManager /org/example/calls"), 0);
}

TEST_F(Manager, SeveralCanBeOnOneConnection)
{
    CallManager others("/org/example/others");
    registerWithHost();
    ASSERT_TRUE(waitFor([&] { return others.state() == State::Registered; }));
    Call *call = others.addCall({});
    EXPECT_EQ(call->path(), "/org/example/others/call1");
    EXPECT_TRUE(waitFor([call] { return call->isShown(); }));
}

TEST_F(Manager, CanStandAtTheRoot)
{
    calls.reset();
    calls = std::make_unique<CallManager>("/");
    EXPECT_EQ(calls->addCall({})->path(), "/call1");
    // Found at once, the host would be told of the call behind the registration.
    ASSERT_TRUE(waitForState(State::Waiting));
    ASSERT_TRUE(host.takeName());
    EXPECT_TRUE(host.waitForWire("GetManagedObjects /: /call1=3")) << wire().join('\n').toStdString();
}

// --- What cannot work

TEST_F(Manager, FailsWithoutABus)
{
    const QDBusConnection nowhere = QDBusConnection::connectToBus("unix:path=/nonexistent/bus", "nowhere");
    CallManager others("/org/example/others", "org.example.Host", nowhere);
    EXPECT_EQ(others.state(), State::Failed);
    EXPECT_EQ(others.errorName(), "org.freedesktop.DBus.Error.Disconnected");
    EXPECT_THAT(others.errorString().toStdString(), HasSubstr("no session bus"));
    Call *call = others.addCall({});
    ASSERT_NE(call, nullptr);
    call->setStatus(CallStatus::Active);
    call->end();
    EXPECT_TRUE(call->hasEnded());
    others.registerAgain();
    QSignalSpy flushed(&others, &CallManager::flushed);
    others.endCalls();
    EXPECT_TRUE(waitFor([&] { return flushed.size() == 1; }));
}

TEST_F(Manager, FailsWhenItsPathIsTaken)
{
    const CallManager second(path);
    EXPECT_EQ(second.state(), State::Failed);
    EXPECT_THAT(second.errorString().toStdString(), HasSubstr("/org/example/calls"));
}

TEST_F(Manager, FailsWithAPathThatIsNone)
{
    for (const char *path : {"", "calls", "/calls/", "//", "/a-b", "/\xc3\xa4"}) {
        const CallManager manager(QString::fromUtf8(path));
        EXPECT_EQ(manager.state(), State::Failed) << path;
        EXPECT_THAT(manager.errorString().toStdString(), HasSubstr("no object path")) << path;
    }
}

TEST_F(Manager, FailsWithAHostNameThatIsNone)
{
    for (const char *name : {"", "host", "not a name.at all", ".org.example", "org.1st", ":1"}) {
        const CallManager manager("/org/example/others", name, QDBusConnection::sessionBus());
        EXPECT_EQ(manager.state(), State::Failed) << name;
        EXPECT_EQ(manager.errorName(), "org.freedesktop.DBus.Error.InvalidArgs");
        EXPECT_THAT(manager.errorString().toStdString(), HasSubstr("no bus name")) << name;
    }
}

TEST_F(Manager, FailsForGoodWhenTheBusGoes)
{
    PrivateBus bus;
    CallManager others("/org/example/others", "org.example.Host", bus.connect("dying"));
    Call *call = others.addCall({});
    ASSERT_TRUE(waitFor([&] { return others.state() == State::Waiting; }));
    bus.daemon().signal(SIGTERM);
    ASSERT_TRUE(waitFor([&] { return others.state() == State::Failed; }));
    EXPECT_EQ(others.errorString(), "the session bus has gone");
    call->end();
    EXPECT_EQ(others.state(), State::Failed);
}

// --- Calls

TEST_F(Manager, NamesCallsInOrderUnlessTheyHaveAName)
{
    EXPECT_EQ(calls->addCall({})->name(), "call1");
    EXPECT_EQ(calls->addCall(named("call2"))->name(), "call2");
    EXPECT_EQ(calls->addCall({})->name(), "call3");
    EXPECT_EQ(calls->addCall(named("b_2"))->path(), "/org/example/calls/b_2");
    EXPECT_EQ(calls->calls().size(), 4);
}

TEST_F(Manager, EscapesWhatCannotStandInAPath)
{
    Call *call = calls->addCall(named(QString::fromUtf8("a-1@\xc3\xa4")));
    EXPECT_EQ(call->name(), "a_2d1_40_c3_a4");
    EXPECT_EQ(calls->findCall(QString::fromUtf8("a-1@\xc3\xa4")), call);
    EXPECT_EQ(calls->findCall("a_2d1_40_c3_a4"), call);
    EXPECT_EQ(calls->findCall("a"), nullptr);
}

TEST_F(Manager, RefusesASecondCallOfTheSameName)
{
    Call *call = calls->addCall(named("ann"));
    EXPECT_EQ(calls->addCall(named("ann")), nullptr);
    EXPECT_THAT(calls->calls(), ElementsAre(call));
    call->end();
    EXPECT_THAT(calls->calls(), IsEmpty());
    EXPECT_NE(calls->addCall(named("ann")), nullptr);
}

TEST_F(Manager, TellsOfACallBeforeAnybodyElseLearnsOfIt)
{
    registerWithHost();
    QStringList order;
    QObject::connect(calls.get(), &CallManager::callAdded, [&](Call *call) {
        order.append("added");
        QObject::connect(call, &Call::announced, [&] { order.append("announced"); });
    });
    calls->addCall({});
    EXPECT_THAT(order, ElementsAre("added", "announced"));
}

TEST_F(Manager, EndsAllCallsAndTellsWhenTheBusHasIt)
{
    addKnownCall();
    addKnownCall();
    QSignalSpy flushed(calls.get(), &CallManager::flushed);
    calls->endCalls();
    EXPECT_THAT(calls->calls(), IsEmpty());
    ASSERT_TRUE(waitFor([&] { return flushed.size() == 1; }));
    EXPECT_TRUE(host.waitForWire("InterfacesRemoved", 2));
}

TEST_F(Manager, DestroyedItEndsItsCallsAndFreesItsPath)
{
    addKnownCall();
    calls.reset();
    ASSERT_TRUE(host.waitForWire("InterfacesRemoved"));
    EXPECT_THAT(host.wire(),
        ElementsAre("StatusChanged /org/example/calls/call1 1",
            "InterfacesRemoved /org/example/calls/call1 zelkovar.Call.AudioControl1 zelkovar.Call.Call1 "
            "zelkovar.Call.DTMF1"));
    calls = std::make_unique<CallManager>(path);
    EXPECT_TRUE(waitForState(State::Registered));
}

TEST_F(Manager, AnswersCommandsToACallThatHasGoneWithAnError)
{
    const Call *call = addKnownCall();
    const QString gone = call->path();
    QSignalSpy late(calls.get(), &CallManager::lateCommand);
    calls->endCalls();
    EXPECT_EQ(command(gone, "Call1", "Accept", {}), "org.freedesktop.DBus.Error.UnknownObject");
    ASSERT_EQ(late.size(), 1);
    EXPECT_THAT(late.at(0), ElementsAre(gone, "Accept"));
}
