// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "callfixture.h"
#include "calls/callhandler.h"
#include "objectwatch.h"

#include <QtCore/QAbstractEventDispatcher>
#include <QtCore/QPointer>
#include <QtCore/QTimerEvent>
#include <QtCore/QVector>
#include <fcntl.h>
#include <unistd.h>

using Status = AbstractVoiceCallHandler::VoiceCallStatus;

namespace {

/**
 * Notes what a handler emits from inside its constructor: it listens from the moment at which the
 * provider hears that it has a child, before anybody else can.
 */
class ConstructorListener : public QObject
{
public:
    ConstructorListener(CallProvider *provider, RecordingHost *host) : host(host)
    {
        provider->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::ChildAdded) {
            // Not a handler yet, but at the address of one.
            listenTo(reinterpret_cast<AbstractVoiceCallHandler *>(static_cast<QChildEvent *>(event)->child()));
        }
        return false;
    }

private:
    void listenTo(AbstractVoiceCallHandler *handler)
    {
        connect(handler, &AbstractVoiceCallHandler::statusChanged, host,
            [=](Status status) { host->note(QString("early status %1").arg(int(status))); });
        connect(handler, &AbstractVoiceCallHandler::startedAtChanged, host, [=](const QDateTime &at) {
            host->note(at.isNull() && !at.isValid() ? QString("early start unknown") : QString("early start known"));
        });
        connect(handler, &AbstractVoiceCallHandler::supportsDtmfChanged, host,
            [=](bool supported) { host->note(QString("early dtmf %1").arg(int(supported))); });
        connect(handler, &AbstractVoiceCallHandler::durationChanged, host, [=] { host->note("early duration"); });
    }

    RecordingHost *host;
};

/** Keeps a call's timer from ticking by itself, so that a test decides when a tick arrives. */
class TickSuppressor : public QObject
{
public:
    explicit TickSuppressor(QObject *handler) : handler(handler) { handler->installEventFilter(this); }

    /** Lets one tick through. */
    void tick()
    {
        handler->removeEventFilter(this);
        QTimerEvent event(timerId());
        QCoreApplication::sendEvent(handler, &event);
        handler->installEventFilter(this);
    }

    /** Id of the call's only timer; 0 when it has none. */
    int timerId() const
    {
        const auto timers = QAbstractEventDispatcher::instance()->registeredTimers(handler);
        return timers.size() == 1 ? timers.first().timerId : 0;
    }

protected:
    bool eventFilter(QObject *, QEvent *event) override { return event->type() == QEvent::Timer; }

private:
    QObject *handler;
};

QList<QAbstractEventDispatcher::TimerInfo> timersOf(QObject *object)
{
    return QAbstractEventDispatcher::instance()->registeredTimers(object);
}

struct Mapping
{
    uint remote;
    Status status;
};

const QVector<Mapping> mappings = {
    {0, AbstractVoiceCallHandler::StatusDisconnected},
    {1, AbstractVoiceCallHandler::StatusDisconnected},
    {2, AbstractVoiceCallHandler::StatusDialing},
    {3, AbstractVoiceCallHandler::StatusIncoming},
    {4, AbstractVoiceCallHandler::StatusDisconnected},
    {5, AbstractVoiceCallHandler::StatusActive},
    {6, AbstractVoiceCallHandler::StatusActive},
    {7, AbstractVoiceCallHandler::StatusHeld},
    {8, AbstractVoiceCallHandler::StatusNull},
    {9, AbstractVoiceCallHandler::StatusNull},
    {0x7fffffff, AbstractVoiceCallHandler::StatusNull},
    {0x80000000, AbstractVoiceCallHandler::StatusNull},
    {0xfffffffe, AbstractVoiceCallHandler::StatusNull},
    {0xffffffff, AbstractVoiceCallHandler::StatusNull},
};

} // namespace

class CallHandlerTest : public CallFixture
{
};

// --- Status

class CallStatusTest : public CallFixture, public testing::WithParamInterface<int>
{
protected:
    Mapping mapping() const { return mappings.at(GetParam()); }
};

TEST_P(CallStatusTest, IsMappedFromTheFirstReport)
{
    AbstractVoiceCallHandler *handler = addCall(QString("'Status': <uint32 %1>").arg(mapping().remote));
    ASSERT_TRUE(handler);
    EXPECT_EQ(handler->status(), mapping().status);
    EXPECT_EQ(handler->isRemoteHeld(), mapping().remote == 7);
}

TEST_P(CallStatusTest, IsMappedFromAChangeAndToldOnce)
{
    AbstractVoiceCallHandler *handler = addCall(incoming);
    ASSERT_TRUE(handler);
    host.events.clear();
    changeStatus(mapping().remote);
    EXPECT_EQ(handler->status(), mapping().status);
    EXPECT_EQ(handler->isRemoteHeld(), mapping().remote == 7);
    EXPECT_EQ(host.events, QStringList({QString("h1 status %1").arg(int(mapping().status))}));
}

TEST_P(CallStatusTest, DecidesThroughTheHostWhetherTheDurationCounts)
{
    AbstractVoiceCallHandler *handler = addCall(QString("'Status': <uint32 %1>").arg(mapping().remote));
    ASSERT_TRUE(handler);
    EXPECT_EQ(timersOf(handler).size(), handler->isOngoing() ? 1 : 0);
    changeStatus(0);
    EXPECT_EQ(timersOf(handler).size(), 0);
    changeStatus(mapping().remote);
    EXPECT_EQ(timersOf(handler).size(), handler->isOngoing() ? 1 : 0);
}

TEST_P(CallStatusTest, LeavesTheStartUnknown)
{
    AbstractVoiceCallHandler *handler = addCall(QString("'Status': <uint32 %1>").arg(mapping().remote));
    ASSERT_TRUE(handler);
    EXPECT_TRUE(handler->startedAt().isNull());
    EXPECT_FALSE(handler->startedAt().isValid());
}

INSTANTIATE_TEST_SUITE_P(OfRemoteStatus, CallStatusTest, testing::Range(0, mappings.size()),
    [](const testing::TestParamInfo<int> &info) { return std::to_string(mappings.at(info.param).remote); });

TEST_F(CallHandlerTest, AChangeToTheSameStatusIsToldAgain)
{
    ASSERT_TRUE(addCall(incoming));
    host.events.clear();
    changeStatus(3);
    changeStatus(3);
    EXPECT_EQ(host.events, QStringList({"h1 status 5", "h1 status 5"}));
}

TEST_F(CallHandlerTest, TheNewStatusIsReadableWhenItIsTold)
{
    AbstractVoiceCallHandler *handler = addCall(incoming);
    ASSERT_TRUE(handler);
    QList<int> seen;
    QObject::connect(handler, &AbstractVoiceCallHandler::statusChanged, &host, [&](Status told) {
        seen = {int(told), int(handler->status()), int(handler->isRemoteHeld()), timersOf(handler).size()};
    });
    changeStatus(7);
    EXPECT_EQ(seen, QList<int>({2, 2, 1, 1})) << "told, read, remote held, timers running";
}

TEST_F(CallHandlerTest, AChangeFromAStrangerIsIgnored)
{
    ScriptedApplication stranger;
    AbstractVoiceCallHandler *handler = addCall(incoming);
    ASSERT_TRUE(handler);
    host.events.clear();
    stranger.changeStatus(callPath, 5);
    ASSERT_TRUE(stranger.settle());
    EXPECT_EQ(handler->status(), AbstractVoiceCallHandler::StatusIncoming);
    stranger.signal(callPath, "zelkovar.Call.Call1", "StatusChanged", "uint32 5", ScriptedApplication::thisProcess());
    ASSERT_TRUE(stranger.settle());
    EXPECT_EQ(handler->status(), AbstractVoiceCallHandler::StatusIncoming) << "nor when it is sent to the host alone";
    EXPECT_EQ(host.events, QStringList());
}

TEST_F(CallHandlerTest, AChangeOnAnotherPathOrInterfaceOrOfAnotherNameIsIgnored)
{
    AbstractVoiceCallHandler *handler = addCall(incoming);
    ASSERT_TRUE(handler);
    host.events.clear();
    application.changeStatus(managerPath, 5);
    application.changeStatus("/m/c1/child", 5);
    application.changeStatus("/m/c2", 5);
    application.signal(callPath, "zelkovar.Call.DTMF1", "StatusChanged", "uint32 5");
    application.signal(callPath, "zelkovar.Call.Call1", "statusChanged", "uint32 5");
    settle();
    EXPECT_EQ(handler->status(), AbstractVoiceCallHandler::StatusIncoming);
    EXPECT_EQ(host.events, QStringList());
}

TEST_F(CallHandlerTest, AChangeOfAnotherSignatureIsIgnored)
{
    AbstractVoiceCallHandler *handler = addCall(incoming);
    ASSERT_TRUE(handler);
    host.events.clear();
    for (const char *arguments : {"", "int32 5", "'5'", "<uint32 5>", "uint64 5", "byte 5", "[uint32 5]"})
        application.signal(callPath, "zelkovar.Call.Call1", "StatusChanged", arguments);
    settle();
    EXPECT_EQ(handler->status(), AbstractVoiceCallHandler::StatusIncoming);
    EXPECT_EQ(host.events, QStringList());
    changeStatus(5);
    EXPECT_EQ(host.events, QStringList({"h1 status 1"})) << "and the next good one is heard";
}

TEST_F(CallHandlerTest, AChangeReachesOnlyTheCallItIsFor)
{
    ASSERT_TRUE(addCall(incoming));
    AbstractVoiceCallHandler *second = addCall(incoming, {}, "/m/c2");
    ASSERT_TRUE(second);
    host.events.clear();
    changeStatus(5, "/m/c2");
    EXPECT_EQ(host.events, QStringList({"h2 status 1"}));
}

TEST_F(CallHandlerTest, PropertyChangesOnTheBusAreIgnored)
{
    AbstractVoiceCallHandler *handler = addCall("'Status': <uint32 3>, 'RemoteName': <'Ada'>");
    ASSERT_TRUE(handler);
    host.events.clear();
    application.signal(callPath, "org.freedesktop.DBus.Properties", "PropertiesChanged",
        "'zelkovar.Call.Call1', {'Status': <uint32 5>, 'RemoteName': <'Bob'>}, @as []");
    settle();
    EXPECT_EQ(handler->status(), AbstractVoiceCallHandler::StatusIncoming);
    EXPECT_EQ(handler->lineId(), "Ada");
    EXPECT_EQ(host.events, QStringList());
}

// --- Construction

TEST_F(CallHandlerTest, TellsStatusThenStartThenTonesFromInsideItsConstructor)
{
    const ConstructorListener listener(provider, &host);
    const DBusCallObject object(application.name(), QDBusObjectPath(callPath));
    const CallHandler handler("x", object, {{tones, {}}, {"zelkovar.Call.Call1", {{"Status", 5U}}}}, provider);
    EXPECT_EQ(host.events, QStringList({"early status 1", "early start unknown", "early dtmf 1"}));
}

TEST_F(CallHandlerTest, TellsOfItsFirstStatusBeforeTheCallIsAnnounced)
{
    const ConstructorListener listener(provider, &host);
    ASSERT_TRUE(addCall(incoming));
    EXPECT_EQ(host.events,
        QStringList({"early status 5", "early start unknown", "interfaces added /m/c1 zelkovar.Call.Call1",
            "call added h1", "calls changed"}));
}

TEST_F(CallHandlerTest, DirectionIsKnownWhenTheFirstStatusIsTold)
{
    // The status comes last, so whoever asks for the call's other properties at that moment sees them.
    QStringList seen;
    class Asker : public QObject
    {
    public:
        explicit Asker(QStringList *seen) : seen(seen) { }
        bool eventFilter(QObject *, QEvent *event) override
        {
            if (event->type() == QEvent::ChildAdded) {
                auto *call = reinterpret_cast<AbstractVoiceCallHandler *>(static_cast<QChildEvent *>(event)->child());
                connect(call, &AbstractVoiceCallHandler::statusChanged, this,
                    [=] { *seen << call->lineId() << call->handlerId() << (call->isIncoming() ? "in" : "out"); });
            }
            return false;
        }
        QStringList *seen;
    } asker(&seen);
    provider->installEventFilter(&asker);
    ASSERT_TRUE(addCall("'Status': <uint32 3>, 'Incoming': <true>, 'RemoteName': <'Ada'>"));
    EXPECT_EQ(seen, QStringList({"Ada", "h1", "in"}));
}

TEST_F(CallHandlerTest, WithoutTheCallInterfaceItIsADisconnectedCallWithoutProperties)
{
    const ConstructorListener listener(provider, &host);
    const DBusCallObject object(application.name(), QDBusObjectPath(callPath));
    const CallHandler handler("x", object, {}, provider);
    EXPECT_EQ(host.events, QStringList({"early status 7", "early start unknown"}));
    EXPECT_EQ(handler.status(), AbstractVoiceCallHandler::StatusDisconnected);
    EXPECT_FALSE(handler.isIncoming());
    EXPECT_FALSE(handler.supportsDtmf());
    EXPECT_EQ(handler.lineId(), "");
    EXPECT_TRUE(timersOf(const_cast<CallHandler *>(&handler)).isEmpty());
}

TEST_F(CallHandlerTest, ACallInterfaceThatComesLaterIsNotRead)
{
    const DBusCallObject object(application.name(), QDBusObjectPath(callPath));
    CallHandler handler("x", object, {}, provider);
    handler.addInterfaces({{"zelkovar.Call.Call1", {{"Status", 5U}, {"Incoming", true}, {"RemoteName", "Ada"}}}});
    EXPECT_EQ(handler.status(), AbstractVoiceCallHandler::StatusDisconnected);
    EXPECT_FALSE(handler.isIncoming());
    EXPECT_EQ(handler.lineId(), "");
}

TEST_F(CallHandlerTest, SendsNothingOfItsOwnAccord)
{
    ASSERT_TRUE(addCall(active, {tones}));
    changeStatus(7);
    application.withdraw(managerPath, callPath, {"zelkovar.Call.Call1"});
    EXPECT_EQ(commands(), QStringList());
}

// --- Properties

TEST_F(CallHandlerTest, AnswersFromTheFirstReport)
{
    AbstractVoiceCallHandler *handler
        = addCall("'Status': <uint32 3>, 'Incoming': <true>, 'Holdable': <true>, 'RemoteName': <'Ada'>, "
                  "'Uri': <'sip:ada@example.org'>, 'LocalName': <'me'>, 'RemoteHandle': <'4711'>, 'Custom': <5>");
    ASSERT_TRUE(handler);
    EXPECT_EQ(handler->handlerId(), "h1");
    EXPECT_EQ(handler->lineId(), "Ada");
    EXPECT_EQ(handler->uri(), "sip:ada@example.org");
    EXPECT_TRUE(handler->isIncoming());
    EXPECT_TRUE(handler->holdable());
    EXPECT_EQ(handler->duration(), 0);
}

TEST_F(CallHandlerTest, OffersNoConferencesEmergenciesOrForwarding)
{
    AbstractVoiceCallHandler *handler = addCall("'Status': <uint32 5>, 'Multiparty': <true>, 'Emergency': <true>, "
                                                "'Forwarded': <true>, 'ParentHandlerId': <'h7'>");
    ASSERT_TRUE(handler);
    EXPECT_FALSE(handler->isMultiparty());
    EXPECT_FALSE(handler->isEmergency());
    EXPECT_FALSE(handler->isForwarded());
    EXPECT_FALSE(handler->supportsMultiparty());
    EXPECT_EQ(handler->parentHandlerId(), "");
    EXPECT_TRUE(handler->childCalls().isEmpty());
}

TEST_F(CallHandlerTest, GivesTheApplicationIdOfItsProvider)
{
    CallProvider other(
        DBusCallManager(application.name(), QDBusObjectPath("/n")), "org.example.Dialer", &host, nullptr);
    const DBusCallObject object(application.name(), QDBusObjectPath("/n/c1"));
    const CallHandler handler("x", object, {}, &other);
    EXPECT_EQ(handler.appId(), "org.example.Dialer");
    EXPECT_EQ(handler.provider(), &other);
    EXPECT_EQ(handler.handlerId(), "x");
}

TEST_F(CallHandlerTest, WhatIsMissingReadsAsFalseDisconnectedOrEmpty)
{
    AbstractVoiceCallHandler *handler = addCall("'incoming': <true>, 'status': <uint32 5>, 'holdable': <true>");
    ASSERT_TRUE(handler);
    EXPECT_FALSE(handler->isIncoming());
    EXPECT_FALSE(handler->holdable());
    EXPECT_FALSE(handler->isRemoteHeld());
    EXPECT_EQ(handler->lineId(), "");
    EXPECT_EQ(handler->uri(), "");
    EXPECT_EQ(handler->status(), AbstractVoiceCallHandler::StatusDisconnected);
}

TEST_F(CallHandlerTest, TheNameShownIsTheRemoteNameAlone)
{
    AbstractVoiceCallHandler *handler
        = addCall("'RemoteHandle': <'4711'>, 'LocalName': <'me'>, 'LocalHandle': <'0815'>, 'Uri': <'sip:a@b'>");
    ASSERT_TRUE(handler);
    EXPECT_EQ(handler->lineId(), "");
    EXPECT_EQ(handler->uri(), "sip:a@b");
}

struct Conversion
{
    const char *name;
    const char *value;
    uint status;
    bool flag;
    const char *text;
};

// What a value reads as where a number, a flag or a text is expected.
static const QVector<Conversion> conversions = {
    {"NumberInText", "<'5'>", 5, true, "5"},
    {"YesInText", "<'yes'>", 0, true, "yes"},
    {"FalseInText", "<'false'>", 0, false, "false"},
    {"ZeroInText", "<'0'>", 0, false, "0"},
    {"EmptyText", "<''>", 0, false, ""},
    {"Byte", "<byte 7>", 7, true, "\a"}, // a character, as a text
    {"SignedNumber", "<int32 6>", 6, true, "6"},
    {"SmallNumber", "<int16 3>", 3, true, "3"},
    {"LongNumber", "<uint64 2>", 2, true, "2"},
    {"True", "<true>", 1, true, "true"},
    {"False", "<false>", 0, false, "false"},
    {"FloatingNumber", "<5.0>", 5, true, "5"},
    {"Variant", "<<uint32 5>>", 0, false, ""},
    {"Dictionary", "<{'a': <uint32 5>}>", 0, false, ""},
    {"ArrayOfNumbers", "<[5, 6]>", 0, false, ""},
    {"Structure", "<(uint32 5, 'yes')>", 0, false, ""},
    {"Nested", "<[{'a': [(1, 'x')]}]>", 0, false, ""},
};

class PropertyConversionTest : public CallFixture, public testing::WithParamInterface<int>
{
protected:
    const Conversion &conversion() const { return conversions.at(GetParam()); }
};

TEST_P(PropertyConversionTest, IsTheVariantsOwn)
{
    AbstractVoiceCallHandler *handler = addCall(
        QString("'Status': %1, 'Incoming': %1, 'Holdable': %1, 'RemoteName': %1, 'Uri': %1").arg(conversion().value));
    ASSERT_TRUE(handler);
    EXPECT_EQ(handler->status(), mappings.at(int(conversion().status)).status);
    EXPECT_EQ(handler->isRemoteHeld(), conversion().status == 7);
    EXPECT_EQ(handler->isIncoming(), conversion().flag);
    EXPECT_EQ(handler->holdable(), conversion().flag);
    EXPECT_EQ(handler->lineId(), QString(conversion().text));
    EXPECT_EQ(handler->uri(), QString(conversion().text));
}

INSTANTIATE_TEST_SUITE_P(Of, PropertyConversionTest, testing::Range(0, conversions.size()),
    [](const testing::TestParamInfo<int> &info) { return std::string(conversions.at(info.param).name); });

TEST_F(CallHandlerTest, FileDescriptorsReadAsFalseDisconnectedOrEmpty)
{
    const int descriptor = open("/dev/null", O_RDONLY | O_CLOEXEC);
    ASSERT_GE(descriptor, 0);
    application.announce(managerPath, callPath,
        callInterfaces("'Status': <handle 0>, 'Incoming': <handle 0>, 'Holdable': <handle 0>, "
                       "'RemoteName': <handle 0>, 'Uri': <[handle 0]>"),
        {descriptor});
    close(descriptor);
    settle();
    AbstractVoiceCallHandler *handler = host.call();
    ASSERT_TRUE(handler);
    EXPECT_EQ(handler->status(), AbstractVoiceCallHandler::StatusDisconnected);
    EXPECT_FALSE(handler->isIncoming());
    EXPECT_FALSE(handler->holdable());
    EXPECT_EQ(handler->lineId(), "");
    EXPECT_EQ(handler->uri(), "");
}

TEST_F(CallHandlerTest, ANegativeStatusIsNoStatus)
{
    AbstractVoiceCallHandler *handler = addCall("'Status': <int32 -1>");
    ASSERT_TRUE(handler);
    EXPECT_EQ(handler->status(), AbstractVoiceCallHandler::StatusNull);
}

TEST_F(CallHandlerTest, ReadsThePropertiesOnceAndNeverAgain)
{
    AbstractVoiceCallHandler *handler = addCall("'Status': <uint32 3>, 'Incoming': <true>, 'RemoteName': <'Ada'>");
    ASSERT_TRUE(handler);
    host.events.clear();
    addCall("'Status': <uint32 5>, 'Incoming': <false>, 'Holdable': <true>, 'RemoteName': <'Bob'>, 'Uri': <'u'>");
    EXPECT_EQ(handler->status(), AbstractVoiceCallHandler::StatusIncoming);
    EXPECT_TRUE(handler->isIncoming());
    EXPECT_FALSE(handler->holdable());
    EXPECT_EQ(handler->lineId(), "Ada");
    EXPECT_EQ(handler->uri(), "");
    EXPECT_TRUE(timersOf(handler).isEmpty());
    EXPECT_EQ(host.events, QStringList({"interfaces added /m/c1 zelkovar.Call.Call1"})) << "no status is told";
}

TEST_F(CallHandlerTest, ASecondReportListensToStatusChangesNoSecondTime)
{
    ASSERT_TRUE(addCall(incoming));
    addCall(incoming);
    host.events.clear();
    changeStatus(5);
    EXPECT_EQ(host.events, QStringList({"h1 status 1"}));
}

// --- Tones

TEST_F(CallHandlerTest, SupportsTonesExactlyWhenTheInterfaceWasSeen)
{
    AbstractVoiceCallHandler *handler = addCall(active);
    ASSERT_TRUE(handler);
    EXPECT_FALSE(handler->supportsDtmf());
    application.announce(managerPath, callPath, "{'zelkovar.Call.DTMF1': {}}");
    settle();
    EXPECT_TRUE(handler->supportsDtmf());
}

TEST_F(CallHandlerTest, TellsOfTonesOnceAndKeepsThemWhenTheInterfaceGoes)
{
    AbstractVoiceCallHandler *handler = addCall(active);
    ASSERT_TRUE(handler);
    application.announce(managerPath, callPath, "{'zelkovar.Call.DTMF1': {}}");
    application.announce(managerPath, callPath, "{'zelkovar.Call.DTMF1': {}}");
    application.withdraw(managerPath, callPath, {tones});
    application.announce(managerPath, callPath, "{'zelkovar.Call.DTMF1': {}}");
    settle();
    EXPECT_TRUE(handler->supportsDtmf());
    EXPECT_EQ(host.events.filter("dtmf"), QStringList({"h1 dtmf true"}));
}

TEST_F(CallHandlerTest, TonesAreSupportedAlreadyWhenTheyAreTold)
{
    AbstractVoiceCallHandler *handler = addCall(active);
    ASSERT_TRUE(handler);
    bool supported = false;
    QObject::connect(
        handler, &AbstractVoiceCallHandler::supportsDtmfChanged, &host, [&] { supported = handler->supportsDtmf(); });
    application.announce(managerPath, callPath, "{'zelkovar.Call.DTMF1': {}}");
    settle();
    EXPECT_TRUE(supported);
}

// --- Proxies

TEST_F(CallHandlerTest, MakesOneProxyPerInterfaceInThisOrderHoweverOftenReported)
{
    ObjectWatch watch;
    const QVariantMapMap all = {{"zelkovar.Call.Call1", {}}, {tones, {}}, {audioControl, {}}};
    CallHandler handler("x", DBusCallObject(application.name(), QDBusObjectPath(callPath)), all, provider);
    handler.addInterfaces(all);
    EXPECT_EQ(watch.living("Proxy"), QStringList({"CallProxy", "DTMFProxy", "AudioControlProxy"}));
}

TEST_F(CallHandlerTest, MakesNoProxyForAnInterfaceThatTheObjectLacks)
{
    ObjectWatch watch;
    CallHandler handler("x", DBusCallObject(application.name(), QDBusObjectPath(callPath)), {}, provider);
    EXPECT_EQ(watch.living("Proxy"), QStringList({"CallProxy"}));
    handler.addInterfaces({{audioControl, {}}});
    EXPECT_EQ(watch.living("Proxy"), QStringList({"CallProxy", "AudioControlProxy"}));
}

TEST_F(CallHandlerTest, ReleasesAudioThenTonesThenCall)
{
    ObjectWatch watch;
    const QVariantMapMap all = {{"zelkovar.Call.Call1", {}}, {tones, {}}, {audioControl, {}}};
    auto *handler = new CallHandler("x", DBusCallObject(application.name(), QDBusObjectPath(callPath)), all, provider);
    ASSERT_EQ(watch.living("Proxy").size(), 3);
    delete handler;
    EXPECT_EQ(watch.destroyed("Proxy"), QStringList({"AudioControlProxy", "DTMFProxy", "CallProxy"}));
    EXPECT_EQ(watch.living("Proxy"), QStringList());
}

TEST_F(CallHandlerTest, GoesWithoutASignal)
{
    QPointer<AbstractVoiceCallHandler> handler = addCall(active, {tones, audioControl});
    ASSERT_TRUE(handler);
    host.events.clear();
    application.withdraw(managerPath, callPath, {"zelkovar.Call.Call1"});
    ASSERT_TRUE(waitFor([&] { return handler.isNull(); }));
    EXPECT_EQ(host.events.filter("h1 "), QStringList());

    AbstractVoiceCallHandler *another = addCall(active, {tones, audioControl});
    ASSERT_TRUE(another);
    host.events.clear();
    delete another;
    EXPECT_EQ(host.events, QStringList());
}

// --- Duration

TEST_F(CallHandlerTest, CountsTheDurationWithACoarseTimerOfOneSecond)
{
    AbstractVoiceCallHandler *handler = addCall(active);
    ASSERT_TRUE(handler);
    const auto timers = timersOf(handler);
    ASSERT_EQ(timers.size(), 1);
    EXPECT_EQ(timers.first().interval, 1000);
    EXPECT_EQ(timers.first().timerType, Qt::CoarseTimer);
}

// The clock stands still, so that every duration is exact.
class CallDurationTest : public CallFixture
{
protected:
    /** Makes the call with these properties, whose own timer is kept from ticking. */
    void begin(const QString &properties = active)
    {
        handler = addCall(properties);
        ASSERT_TRUE(handler);
        ticks.reset(new TickSuppressor(handler));
        host.events.clear();
    }

    /** Lets time pass and a tick through; the duration, which the tick has to tell by itself. */
    int tickAfter(qint64 milliseconds)
    {
        clock.advance(milliseconds);
        host.events.clear();
        ticks->tick();
        EXPECT_EQ(host.events, QStringList({QString("h1 duration %1").arg(handler->duration())}));
        return handler->duration();
    }

    AbstractVoiceCallHandler *handler = nullptr;
    QScopedPointer<TickSuppressor> ticks;
};

TEST_F(CallDurationTest, GrowsBySecondsAtTheTimersTicks)
{
    handler = addCall(active);
    ASSERT_TRUE(handler);
    host.events.clear();
    // The timer is a coarse one: it may come by a twentieth of its interval late.
    for (int seconds = 1; seconds <= 3; ++seconds) {
        clock.advance(1000);
        ASSERT_TRUE(waitFor([&] {
            if (host.events.size() < seconds)
                clock.advance(1);
            return host.events.size() == seconds;
        }));
        EXPECT_EQ(host.events.last(), QString("h1 duration %1").arg(seconds));
        EXPECT_EQ(handler->duration(), seconds);
    }
}

TEST_F(CallDurationTest, IsToldWhenItCanBeRead)
{
    begin();
    int told = -1;
    int read = -1;
    QObject::connect(handler, &AbstractVoiceCallHandler::durationChanged, &host, [&](int seconds) {
        told = seconds;
        read = handler->duration();
    });
    EXPECT_EQ(tickAfter(1000), 1);
    EXPECT_EQ(told, 1);
    EXPECT_EQ(read, 1);
}

TEST_F(CallDurationTest, GrowsAtTicksAlone)
{
    begin();
    clock.advance(2100);
    settle();
    EXPECT_EQ(handler->duration(), 0);
    EXPECT_EQ(tickAfter(0), 2) << "a late tick counts all that has passed";
}

TEST_F(CallDurationTest, IsWholeSecondsOfWhatHasPassed)
{
    begin();
    EXPECT_EQ(tickAfter(0), 0);
    EXPECT_EQ(tickAfter(999), 0);
    EXPECT_EQ(tickAfter(1), 1);
    EXPECT_EQ(tickAfter(999), 1);
    EXPECT_EQ(tickAfter(1), 2);
    EXPECT_EQ(tickAfter(1997999), 1999);
    EXPECT_EQ(tickAfter(1), 2000);
}

TEST_F(CallDurationTest, KeepsTheRemainderOfEveryTick)
{
    begin();
    for (int tick = 1; tick <= 100; ++tick)
        EXPECT_EQ(tickAfter(70), tick * 70 / 1000);
}

TEST_F(CallDurationTest, CountsNothingBeforeTheCallIsOngoing)
{
    begin({});
    clock.advance(5000);
    changeStatus(5);
    EXPECT_EQ(tickAfter(999), 0);
    EXPECT_EQ(tickAfter(1), 1);
}

TEST_F(CallDurationTest, OutlastsTheMillisecondsOfAnInteger)
{
    begin();
    constexpr qint64 dayMs = 24 * 60 * 60 * 1000;
    EXPECT_EQ(tickAfter(24 * dayMs), 2073600);
    EXPECT_EQ(tickAfter(dayMs), 2160000);
    EXPECT_EQ(tickAfter(100 * dayMs), 10800000) << "a machine that slept";
    EXPECT_EQ(tickAfter(1000), 10800001);
}

TEST_F(CallDurationTest, RunsOnThroughChangesBetweenOngoingStatuses)
{
    begin();
    const int timer = ticks->timerId();
    ASSERT_GT(timer, 0);
    for (const uint status : {6, 5, 7, 5}) {
        clock.advance(300);
        changeStatus(status);
        EXPECT_EQ(ticks->timerId(), timer) << status;
    }
    EXPECT_EQ(tickAfter(799), 1);
    EXPECT_EQ(tickAfter(1), 2);
}

TEST_F(CallDurationTest, LosesWhatPassedSinceTheLastTickWhenTheCallStopsAndCountsNothingWhileItStands)
{
    begin();
    EXPECT_EQ(tickAfter(1700), 1);
    clock.advance(900);
    host.events.clear();
    changeStatus(0);
    EXPECT_EQ(handler->duration(), 1);
    EXPECT_TRUE(timersOf(handler).isEmpty());
    EXPECT_EQ(host.events, QStringList({"h1 status 7"})) << "the stop tells no duration";
    clock.advance(60000);
    changeStatus(5);
    EXPECT_EQ(handler->duration(), 1);
    ASSERT_EQ(timersOf(handler).size(), 1);
    // The remainder of the last tick is kept, the part behind it is not.
    EXPECT_EQ(tickAfter(299), 1);
    EXPECT_EQ(tickAfter(1), 2);
}

TEST_F(CallDurationTest, IgnoresTimerEventsOfOtherTimers)
{
    begin();
    const int own = ticks->timerId();
    ASSERT_GT(own, 0);
    clock.advance(1100);
    handler->removeEventFilter(ticks.data());
    for (const int id : {own + 1000, 0, -1}) {
        QTimerEvent event(id);
        QCoreApplication::sendEvent(handler, &event);
    }
    EXPECT_EQ(host.events, QStringList());
    EXPECT_EQ(handler->duration(), 0);
    EXPECT_EQ(tickAfter(0), 1) << "and they have not touched the clock";
}

TEST_F(CallHandlerTest, ATimerEventWhileTheCallIsNotOngoingIsIgnored)
{
    AbstractVoiceCallHandler *handler = addCall(active);
    ASSERT_TRUE(handler);
    const int timer = TickSuppressor(handler).timerId();
    changeStatus(3);
    host.events.clear();
    for (const int id : {timer, -1}) {
        QTimerEvent event(id);
        QCoreApplication::sendEvent(handler, &event);
    }
    EXPECT_EQ(host.events, QStringList());
    EXPECT_EQ(handler->duration(), 0);
}
