// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// Applications of the simulator that do what they are told, right or wrong.

#include "kittest.h"
#include "scriptedapplication.h"
#include "waitfor.h"

#include <QtDBus/QDBusConnectionInterface>
#include <QtDBus/QDBusPendingCall>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

const QString objectManager = QStringLiteral("org.freedesktop.DBus.ObjectManager");
const QString callInterfaceName = QStringLiteral("zelkovar.Call.Call1");

class RawApplications : public KitTest
{
protected:
    void SetUp() override
    {
        startSimulator();
        expectDone("raw one");
        one = linesThatStart("application one connected ").value(0).section(' ', -1);
        observer.subscribe(QStringLiteral("type='signal',sender='%1'").arg(one));
    }

    // The application's answer as GVariant text.
    QString answerTo(
        const QString &path, const QString &interface, const QString &member, const QString &arguments = {})
    {
        return observer.call(one, path, interface, member, arguments);
    }

    QString snapshot() { return answerTo("/calls", objectManager, "GetManagedObjects"); }

    QDBusPendingCall ask(const QString &interface, const QString &member)
    {
        return QDBusConnection::sessionBus().asyncCall(
            QDBusMessage::createMethodCall(one, "/calls", interface, member), waitLimitMs * 2);
    }

    // The signals that a command sends.
    QStringList sentBy(const QString &command)
    {
        observer.forgetWhatArrived();
        expectDone(command);
        // Its answer comes behind the signals.
        snapshot();
        return observer.signalsHeard();
    }

    ScriptedApplication observer;
    QString one;
};

TEST_F(RawApplications, DoNothingByThemselves)
{
    host.settle(manager);
    EXPECT_EQ(host.wire().count("RegisterCallManager /ringlet/sim"), 1);
    EXPECT_THAT(host.wire().filter("RegisterCallManager"), testing::SizeIs(1));
    EXPECT_EQ(snapshot(), "({},)");
    EXPECT_TRUE(waitForLine("application one asked /calls"));
}

TEST_F(RawApplications, RegisterWhateverPathTheyAreTold)
{
    expectDone("raw one register /any/where");
    EXPECT_TRUE(waitForLine("application one registered /any/where"));
    EXPECT_TRUE(waitForLine("application one asked /any/where"));
    EXPECT_TRUE(host.waitForWire("RegisterCallManager /any/where"));
    EXPECT_EQ(host.application(), one);
    host.refuseWith("org.example.Error.NotToday");
    expectDone("raw one register /");
    EXPECT_TRUE(waitForLine("application one refused / org.example.Error.NotToday \"not \\\"today\\\"\""));
}

TEST_F(RawApplications, ShowTheObjectsThatAreSet)
{
    expectDone("raw one object /calls/one Call1 Status=u:3 Uri=s:sip:one@example.org DTMF1 org.example.X");
    EXPECT_EQ(snapshot(),
        "({'/calls/one': {'org.example.X': {}, 'zelkovar.Call.Call1': {'Status': <uint32 3>, "
        "'Uri': <'sip:one@example.org'>}, 'zelkovar.Call.DTMF1': {}}},)");
    expectDone("raw one object /calls/one");
    EXPECT_EQ(snapshot(), "({},)");
}

TEST_F(RawApplications, AnswerForTheirObjectsAsTheyAreTold)
{
    expectDone("raw one snapshot error org.example.Error.Broken");
    EXPECT_EQ(snapshot(), "org.example.Error.Broken");
    expectDone("raw one snapshot with s:one as:a,b");
    EXPECT_EQ(snapshot(), "('one', ['a', 'b'])");
    expectDone("raw one snapshot with");
    EXPECT_EQ(snapshot(), "()");
    expectDone("raw one snapshot now");
    EXPECT_EQ(snapshot(), "({},)");
}

TEST_F(RawApplications, AnswerLateOrNever)
{
    expectDone("raw one snapshot never");
    const QDBusPendingCall never = ask(objectManager, "GetManagedObjects");
    ASSERT_TRUE(waitForLine("application one asked /calls"));
    expectDone("raw one snapshot late 0.2");
    const QDBusPendingCall late = ask(objectManager, "GetManagedObjects");
    ASSERT_TRUE(waitForLine("application one asked /calls", 2));
    EXPECT_FALSE(late.isFinished());
    EXPECT_TRUE(waitFor([&] { return late.isFinished(); }));
    EXPECT_FALSE(late.isError());
    EXPECT_FALSE(never.isFinished());
    expectDone("leave one");
    EXPECT_TRUE(waitFor([&] { return never.isFinished(); }));
}

TEST_F(RawApplications, PrintTheHostsCommandsAndAnswerThemAsTheyAreTold)
{
    EXPECT_EQ(answerTo("/calls/one", callInterfaceName, "Reject", "uint32 1"), "()");
    EXPECT_TRUE(waitForLine("application one command /calls/one Reject u:1"));
    expectDone("raw one commands error org.example.Error.NotToday");
    EXPECT_EQ(answerTo("/calls/one", callInterfaceName, "SetHold", "true"), "org.example.Error.NotToday");
    EXPECT_TRUE(waitForLine("application one command /calls/one SetHold b:true"));
    expectDone("raw one commands with u:5");
    EXPECT_EQ(answerTo("/a", "zelkovar.Call.DTMF1", "SendDTMF", "'1 \"2'"), "(5,)");
    EXPECT_TRUE(waitForLine("application one command /a SendDTMF s:\"1 \\\"2\""));
    expectDone("raw one commands never");
    const QDBusPendingCall pending = ask(callInterfaceName, "Accept");
    ASSERT_TRUE(waitForLine("application one command /calls Accept"));
    EXPECT_EQ(snapshot(), "({},)");
    EXPECT_FALSE(pending.isFinished());
}

TEST_F(RawApplications, AnnounceAndRemove)
{
    EXPECT_THAT(sentBy("raw one added /calls /calls/one Call1 Status=u:8 AudioControl1"),
        ElementsAre("/calls org.freedesktop.DBus.ObjectManager.InterfacesAdded(objectpath '/calls/one', "
                    "{'zelkovar.Call.AudioControl1': @a{sv} {}, 'zelkovar.Call.Call1': {'Status': <uint32 8>}})"));
    EXPECT_THAT(sentBy("raw one removed /elsewhere /calls/one Call1 org.example.X"),
        ElementsAre("/elsewhere org.freedesktop.DBus.ObjectManager.InterfacesRemoved(objectpath '/calls/one', "
                    "['org.example.X', 'zelkovar.Call.Call1'])"));
}

TEST_F(RawApplications, SendAnySignal)
{
    EXPECT_THAT(sentBy("raw one signal /calls/one Call1 StatusChanged u:4294967295"),
        ElementsAre("/calls/one zelkovar.Call.Call1.StatusChanged(uint32 4294967295)"));
    EXPECT_THAT(sentBy("raw one signal / org.example.X Y"), ElementsAre("/ org.example.X.Y()"));
}

TEST_F(RawApplications, SendValuesOfEveryType)
{
    const struct
    {
        const char *word;
        const char *text;
    } values[] = {
        {"y:255", "byte 0xff"},
        {"b:true", "true"},
        {"b:false", "false"},
        {"n:-32768", "int16 -32768"},
        {"q:65535", "uint16 65535"},
        {"i:-1", "-1"},
        {"u:7", "uint32 7"},
        {"x:-9223372036854775808", "int64 -9223372036854775808"},
        {"t:18446744073709551615", "uint64 18446744073709551615"},
        {"d:1.5", "1.5"},
        {"\"s:a b\"", "'a b'"},
        {"s:", "''"},
        {"long:3", "'xxx'"},
        {"o:/a/b", "objectpath '/a/b'"},
        {"h:/dev/null", "handle 0"},
        {"v:u:3", "<uint32 3>"},
        {"as:a,b", "['a', 'b']"},
        {"as:", "@as []"},
        {"ao:/a,/b", "[objectpath '/a', '/b']"},
        {"ay:A", "[byte 0x41]"},
        {"a{sv}:a=u:1,b=s:x", "{'a': <uint32 1>, 'b': <'x'>}"},
        {"a{sv}:", "@a{sv} {}"},
    };
    for (const auto &value : values)
        EXPECT_THAT(sentBy(QString("raw one signal /a org.example.X Y ") + value.word),
            ElementsAre(QString("/a org.example.X.Y(%1)").arg(value.text)));
}

TEST_F(RawApplications, PrintWhatTheHostShowsOfThem)
{
    host.broadcast("/calls/one", {{callInterfaceName, {{"Status", "active"}}}}, one);
    EXPECT_TRUE(waitForLine("application one shown /calls/one"));
    host.broadcast("/calls/two", {}, ":1.9999");
    host.broadcast("/calls/three", {}, one);
    EXPECT_TRUE(waitForLine("application one shown /calls/three"));
    EXPECT_THAT(linesThatStart("application one shown /calls/two"), IsEmpty());
}

TEST_F(RawApplications, LeaveWithoutAWord)
{
    expectDone("raw one register /calls");
    expectDone("leave one");
    EXPECT_TRUE(waitForLine("application one left"));
    EXPECT_TRUE(waitFor([&] { return !QDBusConnection::sessionBus().interface()->isServiceRegistered(one).value(); }));
    expectDone("raw one");
    expectDone("check host registered");
    EXPECT_EQ(linesThatStart("application one connected ").size(), 2);
    EXPECT_THAT(linesThatStart("application one refused"), IsEmpty());
}

TEST_F(RawApplications, SayWhatIsWrong)
{
    const struct
    {
        const char *command;
        const char *complaint;
    } faults[] = {
        {"raw", "usage: raw NAME"},
        {"raw one", "there is an application \"one\" already"},
        {"raw two register /calls", "there is no raw application \"two\"; \"raw two\" makes one"},
        {"raw t-wo", "an application cannot be named \"t-wo\": letters, digits and _ only"},
        {"raw one dance",
            "a raw application cannot \"dance\"; there are register, snapshot, commands, object, added, removed, "
            "signal"},
        {"raw one register", "usage: raw NAME register PATH"},
        {"raw one register calls", "\"calls\" is no object path; one is like /my/calls"},
        {"raw one register /calls/", "\"/calls/\" is no object path"},
        {"raw one snapshot", "usage: raw NAME snapshot HOW"},
        {"raw one snapshot sometimes",
            "\"sometimes\" is no way to answer; there are now, never, late SECONDS, error NAME and with VALUE..."},
        {"raw one snapshot late", "\"late\" is no way to answer"},
        {"raw one snapshot never again", "\"never again\" is no way to answer"},
        {"raw one snapshot late soon", "\"soon\" is no number of seconds from 0 to 86400"},
        {"raw one commands error Broken", "\"Broken\" is no name with dots; one is like org.example.Name"},
        {"raw one commands with 5", "\"5\" is no value; one is written TYPE:TEXT, with a type of y b n q i u x t d s"},
        {"raw one commands with z:5", "\"z:5\" is no value"},
        {"raw one commands with u:-5", "\"u:-5\": behind u: stands a number of 32 bits"},
        {"raw one commands with y:256", "\"y:256\": behind y: stands a number from 0 to 255"},
        {"raw one commands with b:yes", "\"b:yes\": behind b: stands true or false"},
        {"raw one commands with o:calls", "\"o:calls\": behind o: stands an object path, like /my/calls"},
        {"raw one commands with h:/nonexistent", "\"h:/nonexistent\": behind h: stands a file that can be opened"},
        {"raw one commands with v:5", "\"v:5\": behind v: stands another value, like u:3"},
        {"raw one commands with a{sv}:a", "\"a{sv}:a\": behind a{sv}: stands KEY=TYPE:TEXT with commas between them"},
        {"raw one object", "usage: raw NAME object PATH [INTERFACE [PROPERTY=VALUE...]]..."},
        {"raw one object /a Status=u:3", "\"Status=u:3\" belongs to no interface; name one before it"},
        {"raw one object /a Call2",
            "\"Call2\" is no interface; there are Call1, DTMF1, AudioControl1, and full names with dots"},
        {"raw one object /a Call1 Status=3", "\"3\" is no value"},
        {"raw one added /a", "usage: raw NAME added MANAGER PATH INTERFACE [PROPERTY=VALUE...]..."},
        {"raw one added a /a/b", "\"a\" is no object path"},
        {"raw one removed /a b", "\"b\" is no object path"},
        {"raw one signal /a Call1", "usage: raw NAME signal PATH INTERFACE MEMBER [VALUE...]"},
        {"raw one signal /a Nothing Y", "\"Nothing\" is no interface"},
        {"raw one signal /a Call1 Y-Z", "\"Y-Z\" is no name of a member; letters, digits and _ only"},
        {"incoming one/ann sip:x", "\"one\" is a raw application; it has no calls but what raw one sends"},
    };
    for (const auto &fault : faults)
        EXPECT_THAT(complaintAbout(fault.command), HasSubstr(fault.complaint)) << fault.command;
}

} // namespace
