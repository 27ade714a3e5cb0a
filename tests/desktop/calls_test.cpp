// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "hostprogram.h"
#include "waitfor.h"

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

static const QString provider = QStringLiteral("fake/1");
static const QString objectManager = QStringLiteral("org.freedesktop.DBus.ObjectManager");

static std::string text(const QString &string) { return string.toStdString(); }

static std::vector<std::string> texts(const QStringList &strings)
{
    std::vector<std::string> result;
    for (const QString &string : strings)
        result.push_back(string.toStdString());
    return result;
}

static QString quoted(const QString &string) { return QStringLiteral("'%1'").arg(string); }

class HostCalls : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(host.start());
        ASSERT_EQ(text(host.plugin(QStringLiteral("AddProvider"), quoted(provider))), "()");
        host.listen();
    }

    // Whatever a test has done, the host must come through it whole.
    void TearDown() override { EXPECT_EQ(host.end(), 0) << text(host.program().errorOutput()); }

    void change(const QString &id, const QString &changes, const QString &signal)
    {
        ASSERT_EQ(text(host.plugin(
                      QStringLiteral("ChangeCall"), QStringLiteral("'%1', @a{sv} %2, '%3'").arg(id, changes, signal))),
            "()");
    }

    std::string command(const QString &id, const QString &member, const QString &arguments = {})
    {
        return text(host.ask(HostProgram::call(id), QStringLiteral("Call1.") + member, arguments));
    }

    QString managedObjects()
    {
        return host.askStandard(HostProgram::root(), QStringLiteral("ObjectManager.GetManagedObjects"));
    }

    HostProgram host;
};

TEST_F(HostCalls, AnAnnouncedCallAppearsWithItsWholeState)
{
    const QString id = host.addCall(provider,
        QStringLiteral("{'AppId': <'org.example.App'>, 'LineId': <'Anna'>, 'Uri': <'sip:anna@example.org'>,"
                       " 'Incoming': <true>, 'Status': <5>, 'Duration': <7>, 'RemoteHeld': <true>,"
                       " 'Holdable': <true>, 'SupportsDtmf': <true>, 'SupportsMultiparty': <true>,"
                       " 'Multiparty': <true>, 'Emergency': <true>, 'Forwarded': <true>}"));

    EXPECT_THAT(texts(host.takeSignals()),
        ElementsAre("/org/tarnwickle/voicecall org.freedesktop.DBus.ObjectManager.InterfacesAdded("
                    "objectpath '/org/tarnwickle/voicecall/calls/"
            + text(id)
            + "', {'org.tarnwickle.voicecall.Call1': {'AppId': <'org.example.App'>, 'Duration': <7>,"
              " 'Emergency': <true>, 'Forwarded': <true>, 'HandlerId': <'"
            + text(id)
            + "'>, 'Holdable': <true>, 'Incoming': <true>, 'LineId': <'Anna'>, 'Multiparty': <true>,"
              " 'Ongoing': <false>, 'ProviderId': <'fake/1'>, 'ProviderType': <'fake'>, 'RemoteHeld': <true>,"
              " 'Status': <5>, 'StatusText': <'incoming'>, 'SupportsDtmf': <true>, 'SupportsMultiparty': <true>,"
              " 'Uri': <'sip:anna@example.org'>}})"));
}

TEST_F(HostCalls, AllPropertiesOfAnUnknownCallAreFalseZeroOrEmpty)
{
    const QString id = host.addCall(provider);

    EXPECT_EQ(text(host.askStandard(HostProgram::call(id), QStringLiteral("Properties.GetAll"),
                  QStringLiteral("'org.tarnwickle.voicecall.Call1'"))),
        "({'AppId': <''>, 'Duration': <0>, 'Emergency': <false>, 'Forwarded': <false>, 'HandlerId': <'" + text(id)
            + "'>, 'Holdable': <false>, 'Incoming': <false>, 'LineId': <''>, 'Multiparty': <false>,"
              " 'Ongoing': <false>, 'ProviderId': <'fake/1'>, 'ProviderType': <'fake'>, 'RemoteHeld': <false>,"
              " 'Status': <0>, 'StatusText': <'null'>, 'SupportsDtmf': <false>, 'SupportsMultiparty': <false>,"
              " 'Uri': <''>},)");
}

TEST_F(HostCalls, EveryStatusHasItsTextAndIsOngoingWhenActiveOrHeld)
{
    const QStringList statuses = {QStringLiteral("null"), QStringLiteral("active"), QStringLiteral("held"),
        QStringLiteral("dialing"), QStringLiteral("alerting"), QStringLiteral("incoming"), QStringLiteral("waiting"),
        QStringLiteral("disconnected")};
    const QString id = host.addCall(provider);
    for (int status = 0; status < statuses.size(); ++status) {
        change(id, QStringLiteral("{'Status': <%1>}").arg(status), QStringLiteral("statusChanged"));
        EXPECT_EQ(text(host.callProperty(id, QStringLiteral("Status"))), "<" + std::to_string(status) + ">");
        EXPECT_EQ(text(host.callProperty(id, QStringLiteral("StatusText"))), "<'" + text(statuses.at(status)) + "'>");
        EXPECT_EQ(
            text(host.callProperty(id, QStringLiteral("Ongoing"))), status == 1 || status == 2 ? "<true>" : "<false>");
    }
}

TEST_F(HostCalls, AStatusThatTheHostDoesNotKnowKeepsItsNumberAndReadsAsNull)
{
    const QString id = host.addCall(provider, QStringLiteral("{'Status': <-3>}"));
    EXPECT_EQ(text(host.callProperty(id, QStringLiteral("Status"))), "<-3>");
    EXPECT_EQ(text(host.callProperty(id, QStringLiteral("StatusText"))), "<'null'>");
}

TEST_F(HostCalls, OnlyPropertiesThatReallyChangedArePublished)
{
    const QString id = host.addCall(provider, QStringLiteral("{'Status': <5>}"));
    host.takeSignals();

    change(id, QStringLiteral("{'Status': <1>, 'Holdable': <true>}"), QStringLiteral("statusChanged"));

    EXPECT_THAT(texts(host.takeSignals()),
        ElementsAre(text(HostProgram::call(id))
            + " org.freedesktop.DBus.Properties.PropertiesChanged('org.tarnwickle.voicecall.Call1',"
              " {'Holdable': <true>, 'Ongoing': <true>, 'Status': <1>, 'StatusText': <'active'>}, @as [])"));
}

TEST_F(HostCalls, ASignalThatChangesNoValueIsNotPublished)
{
    const QString id = host.addCall(provider);
    host.takeSignals();
    change(id, QStringLiteral("{}"), QStringLiteral("statusChanged"));
    EXPECT_THAT(host.takeSignals(), IsEmpty());
}

class EveryHandlerSignal : public HostCalls, public testing::WithParamInterface<const char *>
{
};

TEST_P(EveryHandlerSignal, MakesTheHostReadTheWholeCallAnew)
{
    const QString id = host.addCall(provider);
    change(id, QStringLiteral("{'Uri': <'tel:1'>, 'SupportsMultiparty': <true>}"), QLatin1String(GetParam()));
    EXPECT_EQ(text(host.callProperty(id, QStringLiteral("Uri"))), "<'tel:1'>");
    EXPECT_EQ(text(host.callProperty(id, QStringLiteral("SupportsMultiparty"))), "<true>");
}

INSTANTIATE_TEST_SUITE_P(Signals, EveryHandlerSignal,
    testing::Values("statusChanged", "lineIdChanged", "durationChanged", "startedAtChanged", "emergencyChanged",
        "multipartyChanged", "forwardedChanged", "remoteHeldChanged", "supportsDtmfChanged", "parentHandlerIdChanged",
        "childCallsChanged"));

TEST_F(HostCalls, ARemovedCallIsAnnouncedAndThenUnknown)
{
    const QString id = host.addCall(provider);
    host.takeSignals();

    host.plugin(QStringLiteral("RemoveCall"), quoted(id));

    EXPECT_THAT(texts(host.takeSignals()),
        ElementsAre("/org/tarnwickle/voicecall org.freedesktop.DBus.ObjectManager.InterfacesRemoved(objectpath '"
            + text(HostProgram::call(id)) + "', ['org.tarnwickle.voicecall.Call1'])"));
    EXPECT_EQ(command(id, QStringLiteral("Answer")), "org.freedesktop.DBus.Error.UnknownObject");
    EXPECT_EQ(text(managedObjects()), "({},)");
}

TEST_F(HostCalls, ARemovedCallIsNotListenedToAlthoughItStillLives)
{
    const QString id = host.addCall(provider);
    host.takeSignals();
    EXPECT_EQ(text(host.plugin(QStringLiteral("RemoveCallThatGoesOnTalking"), quoted(id))), "()");
    EXPECT_EQ(host.takeSignals().size(), 1); // its removal
}

TEST_F(HostCalls, ACallDestroyedWithoutNoticeIsDropped)
{
    const QString id = host.addCall(provider);
    host.takeSignals();
    host.plugin(QStringLiteral("DestroyCall"), quoted(id));
    EXPECT_THAT(host.takeSignals().join(QString()).toStdString(), HasSubstr("InterfacesRemoved"));
    EXPECT_EQ(text(managedObjects()), "({},)");
}

TEST_F(HostCalls, RemovingOneCallLeavesTheOthers)
{
    const QString first = host.addCall(provider);
    const QString second = host.addCall(provider);
    host.plugin(QStringLiteral("RemoveCall"), quoted(first));
    EXPECT_EQ(command(second, QStringLiteral("Answer")), "()");
}

TEST_F(HostCalls, CallIdsAreNeverUsedTwice)
{
    const QString first = host.addCall(provider);
    host.plugin(QStringLiteral("RemoveCall"), quoted(first));
    EXPECT_NE(first, host.addCall(provider));
}

TEST_F(HostCalls, ACallThatIsAnnouncedTwiceIsListedOnce)
{
    const QString id = host.addCall(provider);
    host.takeSignals();
    host.plugin(QStringLiteral("RepeatCall"), quoted(id));
    EXPECT_THAT(host.takeSignals(), IsEmpty());
    EXPECT_TRUE(host.program().waitForError(QStringLiteral("is there already")));
}

TEST_F(HostCalls, AnAnnouncementOfNoCallIsIgnored)
{
    host.plugin(QStringLiteral("AnnounceNull"), quoted(provider));
    EXPECT_THAT(host.takeSignals(), IsEmpty());
}

TEST_F(HostCalls, AnIdThatCannotStandInAPathIsEscapedThere)
{
    host.addCall(provider, QStringLiteral("{'HandlerId': <'a-b/_c'>}"));
    EXPECT_EQ(text(host.callProperty(QStringLiteral("a_2db_2f_5fc"), QStringLiteral("HandlerId"))), "<'a-b/_c'>");
    EXPECT_EQ(command(QStringLiteral("a_2db_2f_5fc"), QStringLiteral("Answer")), "()");
}

TEST_F(HostCalls, AnEmptyIdHasAPathToo)
{
    host.addCall(provider, QStringLiteral("{'HandlerId': <''>, 'LineId': <'nobody'>}"));
    EXPECT_EQ(text(host.callProperty(QStringLiteral("_"), QStringLiteral("LineId"))), "<'nobody'>");
}

// --- Commands

TEST_F(HostCalls, EveryCommandReachesTheHandlerUnjudgedAndIsAnsweredEmpty)
{
    const QString id = host.addCall(provider); // neither holdable nor able to send tones
    EXPECT_EQ(command(id, QStringLiteral("Answer")), "()");
    EXPECT_EQ(command(id, QStringLiteral("Hangup")), "()");
    EXPECT_EQ(command(id, QStringLiteral("Hold"), QStringLiteral("true")), "()");
    EXPECT_EQ(command(id, QStringLiteral("Hold"), QStringLiteral("false")), "()");
    EXPECT_EQ(command(id, QStringLiteral("SendDtmf"), QStringLiteral("'12#x'")), "()");
    EXPECT_EQ(command(id, QStringLiteral("Deflect"), QStringLiteral("'tel:2'")), "()");
    EXPECT_EQ(command(id, QStringLiteral("Merge"), QStringLiteral("'c9'")), "()");
    EXPECT_EQ(command(id, QStringLiteral("Split")), "()");

    EXPECT_EQ(text(host.pluginNotes()),
        text(QStringLiteral("(['%1 answer', '%1 hangup', '%1 hold true', '%1 hold false', '%1 dtmf 12#x',"
                            " '%1 deflect tel:2', '%1 merge c9', '%1 split'],)")
                 .arg(id)));
}

TEST_F(HostCalls, ACommandThatEndsTheCallAtOnceIsStillAnswered)
{
    const QString id = host.addCall(provider, QStringLiteral("{'LeavesOnHangup': <true>}"));
    EXPECT_EQ(command(id, QStringLiteral("Hangup")), "()");
    EXPECT_EQ(command(id, QStringLiteral("Hangup")), "org.freedesktop.DBus.Error.UnknownObject");
}

// --- What is shown of much

class BoundedCalls : public testing::Test
{
protected:
    void start(const QStringList &options)
    {
        ASSERT_TRUE(host.start(QStringList{QStringLiteral("--plugin"), QStringLiteral(FAKE_PLUGIN)} + options));
        host.plugin(QStringLiteral("AddProvider"), quoted(provider));
        host.listen();
    }

    void TearDown() override { EXPECT_EQ(host.end(), 0) << text(host.program().errorOutput()); }

    std::string shown(const QString &id) { return text(host.callProperty(id, QStringLiteral("HandlerId"))); }

    int warnings() { return host.program().errorOutput().count(QStringLiteral("Too many ")); }

    HostProgram host;
    const QString provider = QStringLiteral("fake/:1.1/a");
};

TEST_F(BoundedCalls, LongTextsAreCutWithAMarkAndNotInTheMiddleOfACharacter)
{
    ASSERT_NO_FATAL_FAILURE(start({QStringLiteral("--longest-text"), QStringLiteral("4")}));
    const QString id
        = host.addCall(provider, QStringLiteral("{'LineId': <'12345'>, 'Uri': <'123😀'>, 'AppId': <'1234'>}"));
    EXPECT_EQ(text(host.callProperty(id, QStringLiteral("LineId"))), "<'1234…'>");
    EXPECT_EQ(text(host.callProperty(id, QStringLiteral("Uri"))), "<'123…'>");
    EXPECT_EQ(text(host.callProperty(id, QStringLiteral("AppId"))), "<'1234'>");
}

TEST_F(BoundedCalls, ZeroLiftsABound)
{
    ASSERT_NO_FATAL_FAILURE(start({QStringLiteral("--longest-text"), QStringLiteral("0")}));
    const QString name(3000, QLatin1Char('x'));
    const QString id = host.addCall(provider, QStringLiteral("{'LineId': <'%1'>}").arg(name));
    EXPECT_EQ(text(host.callProperty(id, QStringLiteral("LineId"))), text(QStringLiteral("<'%1'>").arg(name)));
}

TEST_F(BoundedCalls, CallsBeyondAnApplicationsShareAreHiddenUntilThereIsRoom)
{
    ASSERT_NO_FATAL_FAILURE(start({QStringLiteral("--most-calls-each"), QStringLiteral("2")}));
    const QString sibling = QStringLiteral("fake/:1.1/b");
    const QString other = QStringLiteral("fake/:1.2/a");
    host.plugin(QStringLiteral("AddProvider"), quoted(sibling));
    host.plugin(QStringLiteral("AddProvider"), quoted(other));
    const QString first = host.addCall(provider);
    const QString second = host.addCall(sibling);
    const QString third = host.addCall(provider);
    const QString fourth = host.addCall(sibling);
    const QString strangers = host.addCall(other);
    for (const QString &id : {first, second, strangers})
        EXPECT_EQ(shown(id), text(QStringLiteral("<'%1'>").arg(id)));
    for (const QString &id : {third, fourth})
        EXPECT_THAT(shown(id), Not(HasSubstr("<'")));
    EXPECT_EQ(warnings(), 1);

    host.plugin(QStringLiteral("RemoveCall"), quoted(first));
    EXPECT_EQ(shown(third), text(QStringLiteral("<'%1'>").arg(third)));
    EXPECT_THAT(shown(fourth), Not(HasSubstr("<'")));
    // One that was never shown leaves without a word.
    host.takeSignals();
    host.plugin(QStringLiteral("RemoveCall"), quoted(fourth));
    EXPECT_THAT(texts(host.takeSignals()), ElementsAre());
    EXPECT_EQ(warnings(), 1);
}

TEST_F(BoundedCalls, ProvidersBeyondTheBoundAreHiddenWithTheirCallsUntilThereIsRoom)
{
    ASSERT_NO_FATAL_FAILURE(start({QStringLiteral("--most-providers"), QStringLiteral("1")}));
    const QString late = QStringLiteral("fake/:1.2/a");
    host.plugin(QStringLiteral("AddProvider"), quoted(late));
    const QString call = host.addCall(late);
    EXPECT_EQ(
        text(host.property(QStringLiteral("Manager1"), QStringLiteral("Providers"))), "<[('fake/:1.1/a', 'fake')]>");
    EXPECT_THAT(shown(call), Not(HasSubstr("<'")));
    EXPECT_THAT(
        text(host.ask(HostProgram::root(), QStringLiteral("Manager1.Dial"), QStringLiteral("'%1', '1'").arg(late))),
        HasSubstr("NoSuchProvider"));
    host.takeSignals();

    host.plugin(QStringLiteral("RemoveProvider"), quoted(provider));
    EXPECT_EQ(shown(call), text(QStringLiteral("<'%1'>").arg(call)));
    EXPECT_THAT(texts(host.takeSignals()),
        testing::IsSupersetOf({HasSubstr("Manager1.ProviderRemoved('fake/:1.1/a')"),
            HasSubstr("Manager1.ProviderAdded('fake/:1.2/a', 'fake')"), HasSubstr("InterfacesAdded")}));
}

TEST_F(BoundedCalls, AProviderWhoseIdIsTooLongIsNeverShown)
{
    ASSERT_NO_FATAL_FAILURE(start({}));
    host.plugin(QStringLiteral("AddProvider"), quoted(QString(1025, QLatin1Char('x'))));
    EXPECT_EQ(
        text(host.property(QStringLiteral("Manager1"), QStringLiteral("Providers"))), "<[('fake/:1.1/a', 'fake')]>");
    EXPECT_TRUE(host.program().waitForError(QStringLiteral("too long to be shown")));
}

// --- Providers

TEST_F(HostCalls, ProvidersAreListedInTheOrderInWhichTheyCame)
{
    host.plugin(QStringLiteral("AddProvider"), QStringLiteral("'fake/0'"));
    EXPECT_EQ(text(host.property(QStringLiteral("Manager1"), QStringLiteral("Providers"))),
        "<[('fake/1', 'fake'), ('fake/0', 'fake')]>");
    EXPECT_THAT(texts(host.takeSignals()),
        ElementsAre("/org/tarnwickle/voicecall org.freedesktop.DBus.Properties.PropertiesChanged("
                    "'org.tarnwickle.voicecall.Manager1', @a{sv} {}, ['Providers'])",
            "/org/tarnwickle/voicecall org.tarnwickle.voicecall.Manager1.ProviderAdded('fake/0', 'fake')"));
}

TEST_F(HostCalls, AProviderBringsTheCallsThatItHasAlready)
{
    host.plugin(QStringLiteral("AddProviderWithCall"), QStringLiteral("'fake/2', {'LineId': <'Bert'>}"));
    EXPECT_THAT(text(managedObjects()), HasSubstr("'Bert'"));
}

TEST_F(HostCalls, RemovingAProviderDropsItsCallsFirstAndLeavesThoseOfOthers)
{
    const QString id = host.addCall(provider);
    host.plugin(QStringLiteral("AddProvider"), QStringLiteral("'fake/2'"));
    const QString other = host.addCall(QStringLiteral("fake/2"));
    host.takeSignals();

    host.plugin(QStringLiteral("RemoveProvider"), quoted(provider));

    const QStringList heard = host.takeSignals();
    ASSERT_EQ(heard.size(), 3);
    EXPECT_THAT(text(heard.at(0)), HasSubstr("InterfacesRemoved(objectpath '" + text(HostProgram::call(id))));
    EXPECT_THAT(text(heard.at(1)), HasSubstr("['Providers']"));
    EXPECT_THAT(text(heard.at(2)), HasSubstr("Manager1.ProviderRemoved('fake/1')"));
    EXPECT_EQ(command(other, QStringLiteral("Answer")), "()");
}

TEST_F(HostCalls, AProviderDestroyedWithoutNoticeIsDroppedWithItsCalls)
{
    host.addCall(provider);
    host.plugin(QStringLiteral("DestroyProvider"), quoted(provider));
    EXPECT_EQ(text(managedObjects()), "({},)");
    EXPECT_EQ(text(host.property(QStringLiteral("Manager1"), QStringLiteral("Providers"))), "<@a(ss) []>");
}

TEST_F(HostCalls, ASecondProviderOfTheSameIdIsIgnored)
{
    host.takeSignals();
    host.plugin(QStringLiteral("AddTwinOfProvider"), quoted(provider));
    EXPECT_TRUE(host.program().waitForError(QStringLiteral("A second provider with the id 'fake/1'")));
    EXPECT_THAT(host.takeSignals(), IsEmpty());
}

TEST_F(HostCalls, DiallingIsAnsweredEmptyWhenTheProviderAccepts)
{
    EXPECT_EQ(
        text(host.ask(HostProgram::root(), QStringLiteral("Manager1.Dial"), QStringLiteral("'fake/1', '12'"))), "()");
}

static QDBusMessage dial(const QString &providerId, const QString &number)
{
    QDBusMessage call = QDBusMessage::createMethodCall(HostProgram::service(), HostProgram::root(),
        QStringLiteral("org.tarnwickle.voicecall.Manager1"), QStringLiteral("Dial"));
    return QDBusConnection::sessionBus().call(call << providerId << number);
}

TEST_F(HostCalls, DiallingThatIsRefusedTellsTheProvidersReason)
{
    const QDBusMessage reply = dial(provider, QStringLiteral("home"));
    EXPECT_EQ(text(reply.errorName()), "org.tarnwickle.voicecall.Error.DialRefused");
    EXPECT_EQ(text(reply.errorMessage()), "cannot dial 'home'");
}

TEST_F(HostCalls, DiallingWithAnUnknownProviderNamesThoseThereAre)
{
    const QDBusMessage reply = dial(QStringLiteral("x"), QStringLiteral("1"));
    EXPECT_EQ(text(reply.errorName()), "org.tarnwickle.voicecall.Error.NoSuchProvider");
    EXPECT_EQ(text(reply.errorMessage()), "No provider has the id 'x'; there are: fake/1");
}
