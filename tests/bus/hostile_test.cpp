// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// Whatever an application sends, the host lives on, and the next honest call is taken.

#include "plugin/callproviderfactory.h"

#include "printers.h"
#include "recordinghost.h"
#include "scriptedapplication.h"
#include "waitfor.h"

#include <QtCore/QDir>
#include <QtDBus/QDBusConnection>
#include <algorithm>
#include <gmock/gmock.h>
#include <unistd.h>

using testing::StartsWith;

namespace {

const QString servicePath = QStringLiteral("/zelkovar/call/service");
const QString serviceInterface = QStringLiteral("zelkovar.Call.Service1");
const QString managerInterface = QStringLiteral("zelkovar.Call.ServiceManager1");
const QString objectManagerInterface = QStringLiteral("org.freedesktop.DBus.ObjectManager");
const QString callInterface = QStringLiteral("zelkovar.Call.Call1");
const QString audioInterface = QStringLiteral("zelkovar.Call.AudioControl1");
const QString busName = QStringLiteral("org.freedesktop.DBus");
const QString busPath = QStringLiteral("/org/freedesktop/DBus");

// One of each kind of argument list that nobody asked for; handle 0 is a file.
const QStringList oddArguments{"", "'text'", "''", "uint32 5", "-1", "true", "byte 0xff", "int64 -1", "1e300",
    "objectpath '/m'", "objectpath '/'", "signature ''", "<uint32 5>", "<<<'x'>>>", "@as []", "@ao []", "@a{sv} {}",
    "@a{sa{sv}} {}", "@a{oa{sa{sv}}} {}", "@a(so) []", "(1, 'x')", "[[[[1]]]]", "{uint32 1: <handle 0>}", "handle 0",
    "[handle 0]", "(handle 0, <handle 0>)", "objectpath '/m/c1', 'test.A'", "objectpath '/m/c1', @as [], handle 0",
    "objectpath '/m/c1', <@a{sa{sv}} {}>", "objectpath '/m/c1', {'zelkovar.Call.Call1': 1}",
    "'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', 'i', 'j', 'k', 'l', 'm'"};

QString repeated(const char *text, int times) { return QString::fromLatin1(text).repeated(times); }

int openDescriptors() { return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::System | QDir::Files).size(); }

class Hostile : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(factory.initialize());
        ASSERT_TRUE(factory.configure(&host));
        ASSERT_TRUE(factory.start());
        ASSERT_TRUE(hostile.registerCallManager("/m"));
        ASSERT_TRUE(honest.registerCallManager("/honest"));
        ASSERT_TRUE(settle());
        descriptors = openDescriptors();
    }

    /** The next honest call is taken up and its commands arrive, and nothing of the hostile one is held. */
    void TearDown() override
    {
        honest.announce("/honest", "/honest/call", "{'zelkovar.Call.Call1': {'Status': <uint32 3>}}");
        ASSERT_TRUE(waitFor([&] { return honestCall() != nullptr; })) << "the honest call is not taken";
        honestCall()->answer();
        EXPECT_TRUE(waitFor([&] { return !honest.commands().filter("Accept()").isEmpty(); }));
        EXPECT_TRUE(waitFor([&] { return openDescriptors() <= descriptors; }))
            << openDescriptors() << " descriptors are open, " << descriptors << " were";
    }

    /** The honest application's incoming call. */
    AbstractVoiceCallHandler *honestCall() const
    {
        for (AbstractVoiceCallHandler *call : host.calls) {
            if (call->status() == AbstractVoiceCallHandler::StatusIncoming
                && call->provider()->providerId().contains(honest.name()))
                return call;
        }
        return nullptr;
    }

    /** What the host was told, but for the passing of time. */
    QStringList events() const
    {
        QStringList told = host.events;
        told.erase(std::remove_if(told.begin(), told.end(),
                       [](const QString &event) { return event.contains(QLatin1String(" duration ")); }),
            told.end());
        return told;
    }

    bool settle() { return hostile.settle() && hostile.settle() && honest.settle() && honest.settle(); }

    /** Announces a further call with one more property; false when the bus has thrown its sender out. */
    bool announceProperty(ScriptedApplication &application, const QString &value, const QString &name = "Odd")
    {
        application.announce("/m", QStringLiteral("/m/c%1").arg(++announced),
            QStringLiteral("{'zelkovar.Call.Call1': {'%1': <%2>}, 'test.Other': {'%1': <%2>}}").arg(name, value), {0});
        return application.settle();
    }

    /** Values of ever deeper nesting, until the buses take no more; how deep they were taken. */
    int nestToTheLimit(const char *open, const char *middle, const char *close, int limit = 64)
    {
        for (int depth = 1; depth <= limit; ++depth) {
            const QString value = repeated(open, depth) + middle + repeated(close, depth);
            if (!announceProperty(hostile, value) || host.calls.size() != depth)
                return depth - 1;
        }
        return limit;
    }

    QString callService(const QString &interface, const QString &member, const QString &arguments)
    {
        return hostile.call(
            ScriptedApplication::thisProcess(), servicePath, interface, member, arguments, {STDIN_FILENO});
    }

    RecordingHost host;
    CallProviderFactory factory{nullptr};
    ScriptedApplication hostile;
    ScriptedApplication honest;
    int announced = 0;
    int descriptors = 0;
};

} // namespace

// --- Values

TEST_F(Hostile, ArraysNestedToTheLimit) { EXPECT_GE(nestToTheLimit("[", "1", "]"), 25); }

TEST_F(Hostile, StructuresNestedToTheLimit) { EXPECT_GE(nestToTheLimit("(1, ", "1", ")"), 25); }

TEST_F(Hostile, DictionariesNestedToTheLimit) { EXPECT_GE(nestToTheLimit("{'k': ", "1", "}", 40), 25); }

TEST_F(Hostile, VariantsNestedToTheLimit) { EXPECT_GE(nestToTheLimit("<", "1", ">"), 40); }

TEST_F(Hostile, VariantsInArraysNestedToTheLimit) { EXPECT_GE(nestToTheLimit("[<", "1", ">]", 40), 20); }

TEST_F(Hostile, VariantsInStructuresInDictionariesNestedToTheLimit)
{
    EXPECT_GE(nestToTheLimit("{uint32 7: ('x', <", "handle 0", ">)}", 20), 10);
}

TEST_F(Hostile, ContainersOfManyShapes)
{
    for (const char *value : {"@ai []", "@aai [[], [1], []]", "@a(sa{sv}) []", "[('a', {'b': <[<1>]>})]", "@a{oav} {}",
             "{objectpath '/a': [<1>, <'x'>, <@a(ss) []>]}", "{byte 0x01: @aay []}", "{true: (1, 2)}", "{0.5: [1]}",
             "{signature 'a{sv}': <@av []>}", "@av []", "[<@a{sv} {}>, <@ao []>, <@ag []>, <@ab []>]",
             "(byte 0x01, int16 2, uint16 3, 4, uint32 5, int64 6, uint64 7, 8.5, true, 'x', objectpath '/', "
             "signature '', <1>, @as [], @a{sv} {})",
             "b'bytes'", "@ay []", "@as ['', 'x']", "<<(1, <<[<2>]>>)>>"})
        EXPECT_TRUE(announceProperty(hostile, value)) << value;
    EXPECT_EQ(host.calls.size(), announced);
}

TEST_F(Hostile, FileDescriptorsAloneAndInContainersLeaveNothingOpen)
{
    for (int round = 0; round < 5; ++round) {
        for (const char *value : {"handle 0", "<handle 0>", "<<<handle 0>>>", "[handle 0]", "(handle 0, handle 0)",
                 "{handle 0: 'x'}", "{'x': handle 0}", "{handle 0: <handle 0>}", "[<handle 0>]",
                 "<[(<{'x': <[handle 0, handle 0]>}>, handle 0)]>", "@ah []"})
            ASSERT_TRUE(announceProperty(hostile, value)) << value;
    }
    EXPECT_EQ(host.calls.size(), announced);
}

TEST_F(Hostile, FileDescriptorsInEveryPropertyThatIsReadLeaveNothingOpen)
{
    for (const char *name : {"Incoming", "Status", "Holdable", "RemoteName", "Uri"}) {
        for (const char *value : {"handle 0", "<handle 0>", "[handle 0]"})
            ASSERT_TRUE(announceProperty(hostile, value, name));
    }
    for (AbstractVoiceCallHandler *call : host.calls) {
        EXPECT_FALSE(call->isIncoming());
        EXPECT_EQ(call->lineId() + call->uri(), QString());
    }
}

TEST_F(Hostile, EmptySignaturesAreLeftOutWhereTheyWouldKeepAReportFromBeingBroadcast)
{
    honest.subscribe("type='signal',interface='zelkovar.Call.ServiceManager1',member='InterfacesAdded'");
    ASSERT_TRUE(announceProperty(hostile, "signature ''", "Alone"));
    ASSERT_TRUE(announceProperty(hostile, "<<signature ''>>", "Wrapped"));
    ASSERT_TRUE(announceProperty(hostile, "{'k': <(1, signature '')>}", "Inside"));
    ASSERT_TRUE(settle());
    const QStringList broadcast = honest.signalsHeard().filter("ServiceManager1.InterfacesAdded");
    EXPECT_EQ(broadcast.size(), 3);
    EXPECT_TRUE(broadcast.filter("Alone").isEmpty());
    EXPECT_TRUE(broadcast.filter("Wrapped").isEmpty());
    EXPECT_EQ(broadcast.filter("Inside").size(), 1);
}

TEST_F(Hostile, FileDescriptorsInASnapshotLeaveNothingOpen)
{
    hostile.setSnapshotBody(
        "@a{oa{sa{sv}}} {'/n/c1': {'zelkovar.Call.Call1': {'A': <handle 0>, 'B': <[handle 0]>, "
        "'C': <{handle 0: <(1, <handle 0>)>}>}, 'test.Other': {'A': <handle 0>, 'B': <[handle 0]>}}}",
        {STDIN_FILENO});
    for (int i = 0; i < 50; ++i)
        ASSERT_TRUE(hostile.registerCallManager(QStringLiteral("/n%1").arg(i)));
    ASSERT_TRUE(settle());
    EXPECT_EQ(host.calls.size(), 50);
}

TEST_F(Hostile, ComplexValuesOfMoreThanTheBusLayerWouldHoldAreNotHeld)
{
    const QString value = "[('" + repeated("x", 1 << 20) + "', 1)]";
    for (int i = 0; i < 70; ++i)
        ASSERT_TRUE(announceProperty(hostile, value, i % 2 ? "RemoteName" : "Odd"));
    EXPECT_EQ(host.calls.size(), announced);
}

TEST_F(Hostile, ComplexValuesOfObjectsThatAreNoCallsAreNotHeldEither)
{
    const QString interfaces = "{'test.Other': {'Odd': <[('" + repeated("x", 1 << 20) + "', 1)]>}}";
    for (int i = 0; i < 70; ++i) {
        hostile.announce("/m", QStringLiteral("/m/c%1").arg(i), interfaces);
        ASSERT_TRUE(hostile.settle());
    }
    EXPECT_EQ(host.calls.size(), 0);
}

TEST_F(Hostile, LargeSnapshotsOfComplexValuesAreNotHeld)
{
    hostile.setObjects("{objectpath '/n/c1': {'zelkovar.Call.Call1': {'Odd': <[('" + repeated("x", 8 << 20)
        + "', 1)]>}, 'test.Other': {'Odd': <[1]>}}}");
    for (int i = 0; i < 9; ++i) {
        ASSERT_TRUE(hostile.registerCallManager(QStringLiteral("/n%1").arg(i)));
        ASSERT_TRUE(waitFor([&] { return host.calls.size() == i + 1; }));
    }
}

TEST_F(Hostile, LongStringsEverywhere)
{
    const QString text = repeated("x", 50000);
    hostile.announce("/m", "/m/" + text,
        QStringLiteral("{'zelkovar.Call.Call1': {'RemoteName': <'%1'>, 'Uri': <'%1'>, 'Status': <'%1'>, '%1': <'%1'>, "
                       "'Odd': <['%1', '%1']>}, '%1': {'%1': <1>}}")
            .arg(text));
    ASSERT_TRUE(hostile.settle());
    ASSERT_NE(host.call(), nullptr);
    EXPECT_EQ(host.call()->lineId(), text);
    EXPECT_EQ(host.call()->uri(), text);
    hostile.withdraw("/m", "/m/" + text, {text, text});
    ASSERT_TRUE(hostile.settle());
    EXPECT_EQ(host.calls.size(), 1);
}

TEST_F(Hostile, NamesThatAreNoNames)
{
    hostile.announce("/m", "/m/c1",
        "{'': {'': <1>}, ' ': {}, 'zelkovar.Call.Call1': {'': <1>, 'Status ': <uint32 5>, 'Stat\\\\us': <'\\u0001'>, "
        "'\\U0001F4DE': <'\\U0001F4DE'>}, '%1%2%n%s': {'%1': <'%s%n'>}, 'zelkovar.call.call1': {}}");
    hostile.withdraw("/m", "/m/c1", {"", "%s%n", " "});
    ASSERT_TRUE(hostile.settle());
    EXPECT_EQ(host.calls.size(), 1);
}

TEST_F(Hostile, PropertiesAndInterfacesThatAreThereTwice)
{
    hostile.announce("/m", "/m/c1",
        "{'zelkovar.Call.Call1': {'Status': <uint32 3>, 'Status': <[1]>, 'Status': <handle 0>}, "
        "'zelkovar.Call.Call1': {'Status': <uint32 5>}, 'zelkovar.Call.DTMF1': {}, 'zelkovar.Call.DTMF1': {}}",
        {STDIN_FILENO});
    ASSERT_TRUE(hostile.settle());
    EXPECT_EQ(host.calls.size(), 1);
}

TEST_F(Hostile, StatusOfEveryType)
{
    for (const char *value :
        {"byte 0xff", "true", "int16 -1", "uint16 65535", "-2147483648", "uint32 4294967295", "int64 -1",
            "uint64 18446744073709551615", "1e300", "-1e300", "'5'", "'yes'", "''", "objectpath '/'", "signature 'u'",
            "handle 0", "<uint32 5>", "<<'5'>>", "[uint32 5]", "{'u': uint32 5}", "(uint32 5,)", "b'5'", "['5']"})
        ASSERT_TRUE(announceProperty(hostile, value, "Status")) << value;
    EXPECT_EQ(host.calls.size(), announced);
    for (AbstractVoiceCallHandler *call : host.calls)
        EXPECT_LE(call->status(), AbstractVoiceCallHandler::StatusDisconnected);
}

TEST_F(Hostile, StatusNumbersBeyondTheRangeAreNoStatus)
{
    for (const uint number : {8U, 9U, 255U, 0x7fffffffU, 0x80000000U, 0xffffffffU}) {
        hostile.announce("/m", QStringLiteral("/m/c%1").arg(number),
            QStringLiteral("{'zelkovar.Call.Call1': {'Status': <uint32 %1>}}").arg(number));
        ASSERT_TRUE(hostile.settle());
        ASSERT_NE(host.call(), nullptr);
        EXPECT_EQ(int(host.call()->status()), 0) << number;
        hostile.changeStatus(QStringLiteral("/m/c%1").arg(number), 5);
        hostile.changeStatus(QStringLiteral("/m/c%1").arg(number), number);
        ASSERT_TRUE(hostile.settle());
        EXPECT_EQ(int(host.call()->status()), 0) << number;
        hostile.withdraw("/m", QStringLiteral("/m/c%1").arg(number), {callInterface});
        ASSERT_TRUE(hostile.settle());
    }
}

// --- Signatures

TEST_F(Hostile, EverySignalThatIsListenedToWithArgumentsOfOtherTypes)
{
    hostile.announce("/m", "/m/c1",
        "{'zelkovar.Call.Call1': {'Status': <uint32 5>}, 'zelkovar.Call.DTMF1': {}, 'zelkovar.Call.AudioControl1': "
        "{}}");
    ASSERT_TRUE(hostile.settle());
    ASSERT_EQ(host.calls.size(), 1);
    const QStringList before = events();
    for (const QString &arguments : oddArguments) {
        SCOPED_TRACE(arguments.toStdString());
        for (const char *member : {"InterfacesAdded", "InterfacesRemoved"})
            hostile.signal("/m", objectManagerInterface, member, arguments, {}, {STDIN_FILENO});
        if (arguments != "uint32 5")
            hostile.signal("/m/c1", callInterface, "StatusChanged", arguments, {}, {STDIN_FILENO});
        if (arguments != "true")
            hostile.signal("/m/c1", audioInterface, "RequestMute", arguments, {}, {STDIN_FILENO});
        hostile.signal("/m/c1", audioInterface, "RequestAudioRoute", arguments, {}, {STDIN_FILENO});
        hostile.signal(busPath, busName, "NameOwnerChanged", arguments, {}, {STDIN_FILENO});
        ASSERT_TRUE(hostile.settle());
        EXPECT_EQ(events(), before);
    }
}

TEST_F(Hostile, EveryExportedMethodWithArgumentsOfOtherTypes)
{
    const std::vector<std::pair<QString, QString>> methods{{serviceInterface, "RegisterCallManager"},
        {managerInterface, "ListCallManagers"}, {"org.freedesktop.DBus.Properties", "Get"},
        {"org.freedesktop.DBus.Properties", "Set"}, {"org.freedesktop.DBus.Properties", "GetAll"},
        {"org.freedesktop.DBus.Introspectable", "Introspect"}, {"org.freedesktop.DBus.Peer", "Ping"},
        {"org.freedesktop.DBus.Peer", "GetMachineId"}};
    for (const auto &method : methods) {
        for (const QString &arguments : oddArguments) {
            const QString reply = callService(method.first, method.second, arguments);
            EXPECT_TRUE(reply.startsWith("(") || reply.startsWith("org.freedesktop.DBus.Error."))
                << method.second.toStdString() << '(' << arguments.toStdString() << "): " << reply.toStdString();
            EXPECT_NE(reply, QLatin1String("(no reply)"))
                << method.second.toStdString() << '(' << arguments.toStdString() << ')';
        }
    }
}

TEST_F(Hostile, PropertiesThatAreNotThere)
{
    for (const char *arguments : {"'zelkovar.Call.Service1', 'x'", "'', 'x'", "'local.CallService', 'objectName'",
             "'zelkovar.Call.ServiceManager1', ''", "'no.such', 'x'"})
        EXPECT_THAT(callService("org.freedesktop.DBus.Properties", "Get", arguments).toStdString(),
            StartsWith("org.freedesktop.DBus.Error."))
            << arguments;
}

// The bus layer itself gives every adaptor one property, which anybody may write.
TEST_F(Hostile, ThePropertyOfTheBusLayersOwnWithValuesOfOtherTypes)
{
    for (const char *value : {"'x'", "uint32 5", "handle 0", "[handle 0]", "<<[(1, <handle 0>)]>>", "@a(sv) []",
             "[('x', 1)]", "{'x': 1}", "(1, 2)"}) {
        EXPECT_NE(callService("org.freedesktop.DBus.Properties", "Set",
                      QStringLiteral("'zelkovar.Call.Service1', 'objectName', <%1>").arg(value)),
            QLatin1String("(no reply)"))
            << value;
        EXPECT_NE(callService("org.freedesktop.DBus.Properties", "Get", "'zelkovar.Call.Service1', 'objectName'"),
            QLatin1String("(no reply)"))
            << value;
    }
}

TEST_F(Hostile, SnapshotsOfOtherTypes)
{
    int registered = 0;
    for (const QString &arguments : oddArguments) {
        hostile.setSnapshotBody(arguments, {STDIN_FILENO});
        ASSERT_TRUE(hostile.registerCallManager(QStringLiteral("/n%1").arg(++registered)));
        ASSERT_TRUE(settle());
    }
    EXPECT_EQ(host.calls.size(), 0);
}

TEST_F(Hostile, MethodsInterfacesAndObjectsThatAreNotThere)
{
    for (int i = 0; i < 100; ++i)
        ASSERT_EQ(callService(serviceInterface, QStringLiteral("NoSuchMethod%1").arg(i), "'x'"),
            QLatin1String("org.freedesktop.DBus.Error.UnknownMethod"));
    EXPECT_EQ(callService("no.such.Interface", "RegisterCallManager", "objectpath '/x'"),
        QLatin1String("org.freedesktop.DBus.Error.UnknownInterface"));
    for (const QString &path : {QStringLiteral("/no/such/object"), '/' + repeated("x", 50000), servicePath + "/x"})
        EXPECT_EQ(hostile.call(ScriptedApplication::thisProcess(), path, serviceInterface, "RegisterCallManager",
                      "objectpath '/x'"),
            QLatin1String("org.freedesktop.DBus.Error.UnknownObject"));
    EXPECT_EQ(host.providers.size(), 2);
}

// --- Names and paths

TEST_F(Hostile, PathsOfEveryLengthAndPlaceAreTakenAsTheyAre)
{
    const QString deep = repeated("/x", 20000);
    for (const QString &path :
        {QStringLiteral("/"), QStringLiteral("/_"), '/' + repeated("x", 50000), deep, servicePath, busPath}) {
        ASSERT_TRUE(hostile.registerCallManager(path));
        for (const QString &object : {QStringLiteral("/"), path, deep + path.mid(path == "/" ? 1 : 0)})
            hostile.announce(path, object, "{'zelkovar.Call.Call1': {}}");
        ASSERT_TRUE(hostile.settle());
    }
    EXPECT_EQ(host.providers.size(), 8);
    EXPECT_EQ(host.calls.size(), 11) << "the bus takes no subscription to a path of more than a kilobyte";
}

TEST_F(Hostile, TheBusDaemonsAndTheHostsOwnObjectsAreTakenAsTheRegistrantsOwn)
{
    for (const QString &path : {busPath, servicePath}) {
        ASSERT_TRUE(hostile.registerCallManager(path));
        hostile.announce(path, path,
            "{'zelkovar.Call.Call1': {'Status': <uint32 5>}, 'zelkovar.Call.Service1': {}, "
            "'org.freedesktop.DBus': {}, 'zelkovar.Call.AudioControl1': {}}");
        ASSERT_TRUE(hostile.settle());
        hostile.changeStatus(path, 7);
        ASSERT_TRUE(hostile.settle());
    }
    EXPECT_EQ(host.providers.size(), 4);
    ASSERT_EQ(host.calls.size(), 2);
    for (AbstractVoiceCallHandler *call : host.calls) {
        EXPECT_EQ(call->status(), AbstractVoiceCallHandler::StatusHeld);
        call->hangup();
    }
    ASSERT_TRUE(hostile.settle());
    EXPECT_EQ(hostile.commands().filter("Reject").size(), 2) << "commands go to the registrant";
}

// The bus ends the connection of whoever sends a message to this path.
TEST_F(Hostile, ACallManagerAtTheReservedPathIsSentNothing)
{
    EXPECT_TRUE(hostile.registerCallManager("/org/freedesktop/DBus/Local"));
    EXPECT_TRUE(settle()) << "the host is off the bus";
}

TEST_F(Hostile, ACallAtTheReservedPathIsSentNothing)
{
    hostile.announce("/m", "/org/freedesktop/DBus/Local",
        "{'zelkovar.Call.Call1': {'Status': <uint32 3>, 'Holdable': <true>}, 'zelkovar.Call.DTMF1': {}, "
        "'zelkovar.Call.AudioControl1': {}}");
    ASSERT_TRUE(settle()) << "the host is off the bus";
    for (AbstractVoiceCallHandler *call : host.calls) {
        call->answer();
        call->hold(true);
        call->sendDtmf("1");
        call->hangup();
    }
    EXPECT_TRUE(settle()) << "the host is off the bus";
}

TEST_F(Hostile, ForgedDeparturesOfOthersAreIgnored)
{
    const QString name = honest.name();
    const QStringList before = events();
    for (const QString &destination : {QString(), ScriptedApplication::thisProcess()}) {
        for (const QString &arguments : {QStringLiteral("'%1', '%1', ''"), QStringLiteral("'%1', '', '%1'"),
                 QStringLiteral("'%1'"), QStringLiteral("<'%1'>, '%1', ''"), QStringLiteral("'%1', '%1', '', 'more'"),
                 QStringLiteral("['%1']")}) {
            hostile.signal(busPath, busName, "NameOwnerChanged", arguments.arg(name), destination);
            hostile.signal("/", busName, "NameOwnerChanged", arguments.arg(name), destination);
        }
    }
    ASSERT_TRUE(hostile.settle());
    EXPECT_EQ(events(), before);
    EXPECT_EQ(host.providers.size(), 2);
}

TEST_F(Hostile, SignalsInTheNameOfAnotherApplicationsCallsAreIgnored)
{
    honest.announce("/honest", "/honest/first", "{'zelkovar.Call.Call1': {'Status': <uint32 5>}}");
    ASSERT_TRUE(settle());
    const QStringList before = events();
    for (const QString &destination : {QString(), ScriptedApplication::thisProcess()}) {
        hostile.signal("/honest/first", callInterface, "StatusChanged", "uint32 1", destination);
        hostile.signal("/honest", objectManagerInterface, "InterfacesRemoved",
            "objectpath '/honest/first', ['zelkovar.Call.Call1']", destination);
    }
    hostile.withdraw("/m", "/honest/first", {callInterface});
    ASSERT_TRUE(settle());
    EXPECT_EQ(events(), before);
}

// --- Numbers

TEST_F(Hostile, ThousandsOfObjectsInOneSnapshot)
{
    QStringList objects;
    for (int i = 0; i < 2000; ++i) {
        objects.append(QStringLiteral("objectpath '/n/c%1': {'zelkovar.Call.Call1': {'Status': <uint32 3>}}").arg(i));
        objects.append(QStringLiteral("objectpath '/n/o%1': {'test.Other': {}}").arg(i));
    }
    hostile.setObjects('{' + objects.join(", ") + '}');
    ASSERT_TRUE(hostile.registerCallManager("/n"));
    ASSERT_TRUE(waitFor([&] { return host.calls.size() == 2000; }));
    hostile.leave();
    EXPECT_TRUE(waitFor([&] { return host.calls.isEmpty() && host.providers.size() == 1; }));
}

TEST_F(Hostile, ThousandsOfRegistrations)
{
    for (int i = 0; i < 2000; ++i)
        hostile.send(ScriptedApplication::thisProcess(), servicePath, serviceInterface, "RegisterCallManager",
            QStringLiteral("objectpath '/n%1'").arg(i));
    ASSERT_TRUE(waitFor([&] { return host.providers.size() == 2002; }));
    ASSERT_TRUE(hostile.settle());
    hostile.leave();
    EXPECT_TRUE(waitFor([&] { return host.providers.size() == 1; }));
}

TEST_F(Hostile, ThousandsOfAnnouncementsOfOneCall)
{
    for (int i = 0; i < 3000; ++i)
        hostile.announce("/m", "/m/c1", "{'zelkovar.Call.Call1': {'Status': <uint32 3>}, 'zelkovar.Call.DTMF1': {}}");
    ASSERT_TRUE(hostile.settle());
    EXPECT_EQ(host.calls.size(), 1);
    hostile.leave();
    EXPECT_TRUE(waitFor([&] { return host.calls.isEmpty() && host.providers.size() == 1; }));
}

// --- Departures

TEST_F(Hostile, ApplicationsThatLeaveRightAfterRegistering)
{
    for (int i = 0; i < 50; ++i) {
        ScriptedApplication application;
        application.send(ScriptedApplication::thisProcess(), servicePath, serviceInterface, "RegisterCallManager",
            "objectpath '/m'");
        application.leave();
    }
    ASSERT_TRUE(settle());
    EXPECT_TRUE(waitFor([&] { return host.providers.size() == 2; }));
    EXPECT_EQ(host.events.filter("provider added").size(), host.events.filter("provider removed").size() + 2);
}

TEST_F(Hostile, ApplicationsThatLeaveInTheMiddleOfThings)
{
    for (int i = 0; i < 30; ++i) {
        ScriptedApplication application;
        if (i % 2)
            application.holdSnapshot();
        ASSERT_TRUE(application.registerCallManager("/m"));
        application.announce("/m", "/m/c1", "{'zelkovar.Call.Call1': {'Status': <uint32 5>}, 'test.Other': {}}");
        if (i % 3)
            application.changeStatus("/m/c1", 7);
        if (i % 5 == 0)
            application.withdraw("/m", "/m/c1", {callInterface});
        application.leave();
    }
    EXPECT_TRUE(waitFor([&] { return host.providers.size() == 2 && host.calls.isEmpty(); }));
}

TEST_F(Hostile, CommandsToACallWhoseApplicationIsGoneAreLost)
{
    hostile.announce("/m", "/m/c1", "{'zelkovar.Call.Call1': {'Holdable': <true>, 'Status': <uint32 5>}}");
    ASSERT_TRUE(hostile.settle());
    ASSERT_NE(host.call(), nullptr);
    hostile.leave();
    // Not known here before the event loop has run.
    host.call()->answer();
    host.call()->hold(true);
    host.call()->hangup();
    EXPECT_TRUE(waitFor([&] { return host.calls.isEmpty(); }));
}
