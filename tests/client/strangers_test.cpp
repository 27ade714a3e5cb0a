// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// What others than the host can do to an application, and a host that sends what no host should.

#include "clienttest.h"
#include "scriptedapplication.h"

#include <QtDBus/QDBusMetaType>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

using Ringlet::Call;
using Ringlet::CallManager;
using Ringlet::CallStatus;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Commanders = CallManager::Commanders;

Q_DECLARE_METATYPE(QList<QList<bool>>)

namespace {

const QString denied = QStringLiteral("org.freedesktop.DBus.Error.AccessDenied");
const QString invalid = QStringLiteral("org.freedesktop.DBus.Error.InvalidArgs");

class Strangers : public ClientTest
{
protected:
    void bringUp()
    {
        call = addKnownCall();
        QObject::connect(call, &Call::commandReceived, [this](const QString &method) { received.append(method); });
    }

    QString command(const QString &interface, const QString &member, const QString &arguments = {})
    {
        return stranger.call(host.application(), call->path(), "zelkovar.Call." + interface, member, arguments);
    }

    QString audioState(const QVariantList &arguments)
    {
        return ClientTest::command(call->path(), "AudioControl1", "UpdateAudioRouteState", arguments);
    }

    Call *call = nullptr;
    QStringList received;
    ScriptedApplication stranger;
};

// True when nobody can write to the pipe any more.
bool isAtItsEnd(int reading)
{
    pollfd file{reading, POLLIN, 0};
    return poll(&file, 1, 0) == 1 && (file.revents & POLLHUP);
}

} // namespace

// --- Shapes

TEST_F(Strangers, AnAudioStateOfAnotherShapeIsRefused)
{
    qDBusRegisterMetaType<QList<QList<bool>>>();
    bringUp();
    const QVariant flags = QVariant::fromValue(QList<bool>{true});
    const QVariant listsOfFlags = QVariant::fromValue(QList<QList<bool>>{{true}});
    EXPECT_EQ(audioState({flags, "mic", "ear"}), invalid);
    EXPECT_EQ(audioState({listsOfFlags, "mic", "ear"}), invalid);
    EXPECT_EQ(audioState({flags, flags, true, "mic", "ear"}), invalid);
    EXPECT_EQ(audioState({true, "mic", "ear"}), invalid);
    EXPECT_EQ(audioState({}), invalid);
    EXPECT_THAT(received, IsEmpty());
    EXPECT_EQ(audioState({listsOfFlags, true, "mic", "ear"}), QString());
    EXPECT_EQ(audioState({QByteArray("bytes"), true, "mic", "ear"}), QString());
    EXPECT_THAT(call->audioDevices(), IsEmpty());
    EXPECT_EQ(call->audioRoute(), (Ringlet::AudioRoute{true, "mic", "ear"}));
}

TEST_F(Strangers, AnAudioStateKeepsNothingOfItsMessage)
{
    bringUp();
    calls->setCommanders(Commanders::Anyone);
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    EXPECT_EQ(stranger.call(host.application(), call->path(), "zelkovar.Call.AudioControl1", "UpdateAudioRouteState",
                  "[('mic', 4, true, false, '', {'plain': <1>, 'bare': <handle 0>, 'wrapped': <<handle 0>>, "
                  "'inside': <[handle 0]>, 'list': <[1, 2]>})], true, 'mic', ''",
                  {ends[1]}),
        "()");
    close(ends[1]);
    ASSERT_EQ(call->audioDevices().size(), 1);
    EXPECT_EQ(call->audioDevices().constFirst().properties, (QVariantMap{{"plain", 1}}));
    EXPECT_TRUE(waitFor([&] { return isAtItsEnd(ends[0]); }));
    close(ends[0]);
}

// --- Who may command

TEST_F(Strangers, CannotCommandACall)
{
    bringUp();
    EXPECT_EQ(command("Call1", "Accept"), denied);
    EXPECT_EQ(command("Call1", "Reject", "uint32 1"), denied);
    EXPECT_EQ(command("Call1", "SetHold", "true"), denied);
    EXPECT_EQ(command("DTMF1", "SendDTMF", "'1'"), denied);
    EXPECT_EQ(command("AudioControl1", "UpdateAudioRoute", "true, '', ''"), denied);
    EXPECT_EQ(command("AudioControl1", "UpdateAudioRouteState", "@a(sibbsa{sv}) [], true, '', ''"), denied);
    EXPECT_EQ(stranger.call(host.application(), call->path(), "zelkovar.Call.Call1", "Accept"), denied);
    EXPECT_THAT(received, IsEmpty());
    EXPECT_EQ(ClientTest::command(call->path(), "Call1", "Accept", {}), QString()) << "the host can";
    EXPECT_THAT(received, ElementsAre("Accept"));
}

TEST_F(Strangers, AreToldWhoMay)
{
    bringUp();
    const QDBusConnection other = QDBusConnection::connectToBus(QDBusConnection::SessionBus, "stranger");
    const QDBusPendingCall pending = other.asyncCall(
        QDBusMessage::createMethodCall(host.application(), call->path(), "zelkovar.Call.Call1", "Accept"));
    ASSERT_TRUE(waitFor([&] { return pending.isFinished(); }));
    EXPECT_EQ(pending.error().message(),
        QString("Only the host may command a call: whoever owns org.tarnwickle.voicecall; %1 does now")
            .arg(host.uniqueName()));
    QDBusConnection::disconnectFromBus("stranger");
}

TEST_F(Strangers, HaveTheirQuestionsAnswered)
{
    bringUp();
    EXPECT_THAT(stranger.call(host.application(), path, "org.freedesktop.DBus.ObjectManager", "GetManagedObjects")
                    .toStdString(),
        HasSubstr("{'/org/example/calls/call1': {"));
    EXPECT_EQ(stranger.call(host.application(), call->path(), "org.freedesktop.DBus.Properties", "Get",
                  "'zelkovar.Call.Call1', 'Status'"),
        "(<uint32 3>,)");
    EXPECT_THAT(stranger.call(host.application(), call->path(), "org.freedesktop.DBus.Introspectable", "Introspect")
                    .toStdString(),
        HasSubstr("zelkovar.Call.DTMF1"));
}

TEST_F(Strangers, CannotCommandWhileThereIsNoHost)
{
    bringUp();
    const QString application = host.application();
    host.dropName();
    ASSERT_TRUE(waitForState(CallManager::State::Waiting));
    EXPECT_EQ(stranger.call(application, call->path(), "zelkovar.Call.Call1", "Accept"), denied);
    EXPECT_EQ(ClientTest::command(call->path(), "Call1", "Accept", {}), denied) << "it is the host no more";
    EXPECT_THAT(received, IsEmpty());
}

// The name and the first command leave together; that the name has a new owner, the application has still to learn.
TEST_F(Strangers, AreNoHostsThatHaveJustCome)
{
    bringUp();
    for (int i = 0; i < 20; ++i) {
        received.clear();
        FakeHost next;
        host.dropName();
        const QDBusConnection connection = next.connection();
        QDBusMessage take = QDBusMessage::createMethodCall(
            "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName");
        connection.asyncCall(take << FakeHost::defaultName() << 0U);
        const QDBusPendingCall accept = connection.asyncCall(
            QDBusMessage::createMethodCall(host.application(), call->path(), "zelkovar.Call.Call1", "Accept"));
        ASSERT_TRUE(waitFor([&] { return accept.isFinished(); }));
        EXPECT_FALSE(accept.isError()) << accept.error().message().toStdString();
        EXPECT_THAT(received, ElementsAre("Accept"));
        ASSERT_TRUE(waitForState(CallManager::State::Registered));
        next.dropName();
        ASSERT_TRUE(host.takeName());
        ASSERT_TRUE(waitFor([&] { return calls->hostOwner() == host.uniqueName(); }));
    }
}

TEST_F(Strangers, MayCommandWhenTheApplicationSaysSo)
{
    EXPECT_EQ(calls->commanders(), Commanders::Host);
    bringUp();
    calls->setCommanders(Commanders::Anyone);
    EXPECT_EQ(calls->commanders(), Commanders::Anyone);
    EXPECT_EQ(command("Call1", "Accept"), "()");
    EXPECT_THAT(received, ElementsAre("Accept"));
    calls->setCommanders(Commanders::Host);
    EXPECT_EQ(command("Call1", "Accept"), denied);
}

TEST_F(Strangers, AreNotReportedAsLate)
{
    bringUp();
    const QString gone = call->path();
    QSignalSpy late(calls.get(), &CallManager::lateCommand);
    calls->endCalls();
    EXPECT_EQ(stranger.call(host.application(), gone, "zelkovar.Call.Call1", "Accept"),
        "org.freedesktop.DBus.Error.UnknownObject");
    EXPECT_EQ(late.size(), 0);
}
