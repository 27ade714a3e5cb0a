// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "busserver/bustree.h"

#include "busserver/businterface.h"
#include "busserver/busreply.h"
#include "printers.h"
#include "scriptedapplication.h"
#include "waitfor.h"

#include <QtDBus/QDBusPendingCallWatcher>
#include <QtDBus/QDBusSignature>
#include <gmock/gmock.h>
#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

const QString rootPath = QStringLiteral("/org/example/tree");
const QString childPath = QStringLiteral("/org/example/tree/calls/one");
const QString managerName = QStringLiteral("org.tarnwickle.voicecall.Manager1");
const QString audioName = QStringLiteral("org.tarnwickle.voicecall.Audio1");
const QString callName = QStringLiteral("org.tarnwickle.voicecall.Call1");
const QString errors = QStringLiteral("org.freedesktop.DBus.Error.");

/** Any interface of dbus/: answers with the arguments, and notes the calls. */
class EchoInterface : public BusInterface
{
public:
    EchoInterface(const QString &name, QStringList &calls) : BusInterface(name, methodsOf(name, calls)) { }

    QVariantMap properties() const override { return values; }

    QVariantMap values;
    QString reason;

protected:
    QString refusal(const QDBusMessage &) const override { return reason; }

private:
    static Methods methodsOf(const QString &name, QStringList &calls)
    {
        Methods methods;
        const QStringList names = InterfaceDescription::of(name).methods.keys();
        for (const QString &method : names) {
            methods.insert(method, [&calls](const QDBusMessage &call) {
                calls.append(call.member());
                return call.createReply(call.arguments());
            });
        }
        return methods;
    }
};

class ServedTree : public testing::Test
{
protected:
    ServedTree()
    {
        EXPECT_TRUE(tree.publish());
        manager = addToRoot(managerName);
        audio = addToRoot(audioName);
        manager->values = {{"Providers", 7}};
        audio->values = {{"InputDevice", "mic"}, {"MicrophoneMuted", false}};
    }

    EchoInterface *addToRoot(const QString &name)
    {
        auto interface = std::make_unique<EchoInterface>(name, calls);
        EchoInterface *added = interface.get();
        tree.addToRoot(std::move(interface));
        return added;
    }

    EchoInterface *addChild(const QString &path = childPath)
    {
        auto interface = std::make_unique<EchoInterface>(callName, calls);
        EchoInterface *added = interface.get();
        added->values = {{"Uri", "sip:a"}};
        tree.addObject(path, std::move(interface));
        return added;
    }

    /** The answer as GVariant text, or the name of the error. */
    QString ask(const QString &path, const QString &interface, const QString &member, const QString &arguments = {})
    {
        return client.call(served.baseService(), path, interface, member, arguments);
    }

    QString property(const QString &member, const QString &arguments)
    {
        return ask(rootPath, "org.freedesktop.DBus.Properties", member, arguments);
    }

    /** The answer with its text, to a call that Qt can make. */
    QDBusMessage call(
        const QString &path, const QString &interface, const QString &member, const QVariantList &arguments = {})
    {
        const QDBusConnection other = QDBusConnection::connectToBus(QDBusConnection::SessionBus, "other");
        QDBusMessage message = QDBusMessage::createMethodCall(served.baseService(), path, interface, member);
        message.setArguments(arguments);
        QDBusPendingCallWatcher watcher(other.asyncCall(message, waitLimitMs));
        bool isFinished = false;
        QObject::connect(&watcher, &QDBusPendingCallWatcher::finished, [&] { isFinished = true; });
        waitFor([&] { return isFinished; });
        return watcher.reply();
    }

    std::string textOf(
        const QString &path, const QString &interface, const QString &member, const QVariantList &arguments = {})
    {
        return call(path, interface, member, arguments).errorMessage().toStdString();
    }

    std::string introspect(const QString &path)
    {
        return ask(path, "org.freedesktop.DBus.Introspectable", "Introspect").toStdString();
    }

    void listen() { client.subscribe(QStringLiteral("type='signal',sender='%1'").arg(served.baseService())); }

    /** The tree's signals so far: an answer comes behind them. */
    QStringList heard()
    {
        property("GetAll", "''");
        const QStringList all = client.signalsHeard().filter("/org/example");
        client.forgetWhatArrived();
        return all;
    }

    QDBusConnection served = QDBusConnection::sessionBus();
    QStringList calls;
    BusTree tree{served, rootPath};
    EchoInterface *manager = nullptr;
    EchoInterface *audio = nullptr;
    ScriptedApplication client;
};

} // namespace

// --- Calls

TEST_F(ServedTree, ACallOfADescribedMethodReachesItsFunction)
{
    EXPECT_EQ(ask(rootPath, managerName, "Dial", "'a', 'b'"), "('a', 'b')");
    EXPECT_THAT(calls, ElementsAre("Dial"));
}

TEST_F(ServedTree, AnUnknownObjectIsNamed)
{
    for (const char *path : {"/org/example/tree/x", "/org/example/tree/calls", "/org/example/tree/calls/one/x"})
        EXPECT_EQ(ask(path, managerName, "Dial", "'a', 'b'"), errors + "UnknownObject") << path;
    EXPECT_EQ(textOf(childPath, callName, "Answer"),
        "There is no object /org/example/tree/calls/one; GetManagedObjects at /org/example/tree tells what there is");
}

TEST_F(ServedTree, AnUnknownInterfaceIsAnsweredWithThoseThereAre)
{
    addChild();
    EXPECT_EQ(ask(childPath, managerName, "Dial", "'a', 'b'"), errors + "UnknownInterface");
    EXPECT_EQ(textOf(childPath, managerName, "Dial"),
        "/org/example/tree/calls/one has no interface 'org.tarnwickle.voicecall.Manager1'; there are: "
        "org.freedesktop.DBus.Properties, org.freedesktop.DBus.Introspectable, org.tarnwickle.voicecall.Call1");
}

TEST_F(ServedTree, AnUnknownMethodIsAnsweredWithThoseThereAre)
{
    EXPECT_EQ(ask(rootPath, managerName, "Answer"), errors + "UnknownMethod");
    EXPECT_EQ(property("Take", "''"), errors + "UnknownMethod");
    EXPECT_EQ(textOf(rootPath, audioName, "Answer"),
        "org.tarnwickle.voicecall.Audio1 has no method 'Answer'; there are: SelectInputDevice, SelectOutputDevice, "
        "SetMicrophoneMuted");
}

TEST_F(ServedTree, ArgumentsAreComparedOneByOne)
{
    const QString invalid = errors + "InvalidArgs";
    for (const char *arguments : {"'a'", "'a', 'b', 'c'", "('a', 'b')", "'a', objectpath '/b'", "['a', 'b']", ""})
        EXPECT_EQ(ask(rootPath, managerName, "Dial", arguments), invalid) << arguments;
    EXPECT_EQ(ask(rootPath, audioName, "SetMicrophoneMuted", "'true'"), invalid);
    EXPECT_EQ(property("Get", "[1]"), invalid);
    EXPECT_EQ(ask(rootPath, "org.freedesktop.DBus.ObjectManager", "GetManagedObjects", "1"), invalid);
    EXPECT_THAT(calls, IsEmpty());
    EXPECT_EQ(textOf(rootPath, managerName, "Dial", {"a", 1}), "Dial takes 'ss', not 'si'");
}

TEST_F(ServedTree, NoInterfaceNameMeansTheFirstThatHasTheMethod)
{
    EXPECT_EQ(call(rootPath, "", "Dial", {"a", "b"}).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(call(rootPath, "", "GetManagedObjects").signature(), "a{oa{sa{sv}}}");
    EXPECT_EQ(call(rootPath, "", "Nothing").errorName(), errors + "UnknownMethod");
}

TEST_F(ServedTree, ACallerThatMayNotIsToldWhyAndStillHasItsQuestionsAnswered)
{
    manager->reason = "only on Sundays";
    EXPECT_EQ(call(rootPath, managerName, "Dial", {"a", "b"}).errorName(), errors + "AccessDenied");
    EXPECT_EQ(textOf(rootPath, managerName, "Dial", {"a", "b"}), "only on Sundays");
    EXPECT_EQ(call(rootPath, managerName, "Sing").errorName(), errors + "UnknownMethod");
    EXPECT_EQ(call(rootPath, managerName, "Dial", {"a"}).errorName(), errors + "InvalidArgs");
    EXPECT_THAT(calls, IsEmpty());
    EXPECT_EQ(property("Get", "'org.tarnwickle.voicecall.Manager1', 'Providers'"), "(<7>,)");
}

TEST_F(ServedTree, AnAnswerCanComeLater)
{
    QDBusMessage waiting;
    tree.addObject(childPath,
        std::make_unique<BusInterface>(
            "zelkovar.Call.DTMF1", BusInterface::Methods{{"SendDTMF", [&](const QDBusMessage &call) {
                                                              waiting = call;
                                                              return QDBusMessage();
                                                          }}}));
    QDBusMessage message
        = QDBusMessage::createMethodCall(served.baseService(), childPath, "zelkovar.Call.DTMF1", "SendDTMF");
    const QDBusConnection other = QDBusConnection::connectToBus(QDBusConnection::SessionBus, "other");
    const QDBusPendingCall pending = other.asyncCall(message << "1");
    ASSERT_TRUE(waitFor([&] { return waiting.type() == QDBusMessage::MethodCallMessage; }));
    EXPECT_EQ(property("Get", "'', 'Providers'"), "(<7>,)");
    EXPECT_FALSE(pending.isFinished());
    BusReply::send(served, waiting, waiting.createReply());
    EXPECT_TRUE(waitFor([&] { return pending.isFinished(); }));
    EXPECT_FALSE(pending.isError());
}

TEST_F(ServedTree, ACallThatWantsNoReplyGetsNone)
{
    ScriptedApplication monitor;
    monitor.becomeMonitor();
    ScriptedApplication caller;
    caller.send(served.baseService(), rootPath, managerName, "Dial", "'a', 'b'");
    caller.send(served.baseService(), rootPath, managerName, "Sing");
    ASSERT_TRUE(waitFor([&] { return calls.size() == 1; }));
    EXPECT_EQ(caller.call(served.baseService(), rootPath, audioName, "SetMicrophoneMuted", "true"), "(true,)");
    const QString answer = QStringLiteral("%1 > %2: ").arg(served.baseService(), caller.name());
    ASSERT_TRUE(waitFor([&] { return !monitor.traffic().filter("reply (true").isEmpty(); }));
    EXPECT_THAT(monitor.traffic().filter(answer), ElementsAre(answer + "reply (true)"));
}

// --- Values that the bus library cannot send

// What the bus library has begun to write of a container when it comes to such a value, it loses, each time.
// That is no leak of ours, and not to be reported while this lives.
struct LeaksOfTheLibrary
{
#ifdef __SANITIZE_ADDRESS__
    LeaksOfTheLibrary() { __lsan_disable(); }
    ~LeaksOfTheLibrary() { __lsan_enable(); }
#endif
};

TEST_F(ServedTree, AnAnswerThatCannotBeSentIsAnError)
{
    [[maybe_unused]] const LeaksOfTheLibrary expected;
    audio->values.insert("InputDevice", QVariant::fromValue(QDBusSignature("")));
    EXPECT_EQ(property("GetAll", "'org.tarnwickle.voicecall.Audio1'"), errors + "Failed");
    EXPECT_EQ(property("Get", "'org.tarnwickle.voicecall.Audio1', 'InputDevice'"), errors + "Failed");
    EXPECT_EQ(textOf(rootPath, "org.freedesktop.DBus.Properties", "GetAll", {audioName}),
        "The answer to GetAll holds a value that cannot be sent");
    EXPECT_EQ(property("Get", "'org.tarnwickle.voicecall.Audio1', 'MicrophoneMuted'"), "(<false>,)");
}

TEST_F(ServedTree, AChangeThatCannotBeSentIsToldByName)
{
    [[maybe_unused]] const LeaksOfTheLibrary expected;
    listen();
    emit audio->propertiesChanged({{"InputDevice", QVariant::fromValue(QDBusSignature(""))}});
    EXPECT_THAT(heard(),
        ElementsAre(rootPath
            + " org.freedesktop.DBus.Properties.PropertiesChanged('org.tarnwickle.voicecall.Audio1', "
              "@a{sv} {}, ['InputDevice'])"));
}

// --- Properties

TEST_F(ServedTree, PropertiesAreReadOneByOneAndAllAtOnce)
{
    EXPECT_EQ(property("Get", "'org.tarnwickle.voicecall.Audio1', 'InputDevice'"), "(<'mic'>,)");
    EXPECT_EQ(property("Get", "'', 'InputDevice'"), "(<'mic'>,)");
    EXPECT_EQ(property("GetAll", "'org.tarnwickle.voicecall.Manager1'"), "({'Providers': <7>},)");
    EXPECT_EQ(property("GetAll", "'org.freedesktop.DBus.Properties'"), "({},)");
    EXPECT_EQ(property("GetAll", "''"), "({'InputDevice': <'mic'>, 'MicrophoneMuted': <false>, 'Providers': <7>},)");
}

TEST_F(ServedTree, NoPropertyCanBeWritten)
{
    EXPECT_EQ(property("Set", "'org.tarnwickle.voicecall.Audio1', 'InputDevice', <'x'>"), errors + "PropertyReadOnly");
}

TEST_F(ServedTree, AnUnknownPropertyIsAnsweredWithThoseThereAre)
{
    EXPECT_EQ(property("Get", "'org.tarnwickle.voicecall.Audio1', 'Volume'"), errors + "UnknownProperty");
    EXPECT_EQ(property("Set", "'org.tarnwickle.voicecall.Audio1', 'Volume', <1>"), errors + "UnknownProperty");
    EXPECT_EQ(property("Get", "'', 'Volume'"), errors + "UnknownProperty");
    EXPECT_EQ(textOf(rootPath, "org.freedesktop.DBus.Properties", "Get", {audioName, "Volume"}),
        "/org/example/tree has no property 'Volume' in 'org.tarnwickle.voicecall.Audio1'; there are: InputDevice, "
        "MicrophoneMuted");
}

TEST_F(ServedTree, PropertiesOfAnUnknownInterfaceAreAnError)
{
    for (const auto &[member, arguments] : {std::pair("Get", "'org.example.X', 'Volume'"),
             std::pair("Set", "'org.example.X', 'Volume', <1>"), std::pair("GetAll", "'org.example.X'")})
        EXPECT_EQ(property(member, arguments), errors + "UnknownInterface") << member;
}

TEST_F(ServedTree, ChangesAreToldInTheirOrderAndAsTheyAreDescribed)
{
    EchoInterface *child = addChild();
    listen();
    emit audio->propertiesChanged({{"InputDevice", "a"}});
    emit manager->propertiesChanged({{"Providers", 8}});
    emit child->propertiesChanged({{"HandlerId", "never told"}});
    emit child->propertiesChanged({{"Uri", "b"}, {"HandlerId", "never told"}});
    const QString changed = " org.freedesktop.DBus.Properties.PropertiesChanged(";
    EXPECT_THAT(heard(),
        ElementsAre(rootPath + changed + "'org.tarnwickle.voicecall.Audio1', {'InputDevice': <'a'>}, @as [])",
            rootPath + changed + "'org.tarnwickle.voicecall.Manager1', @a{sv} {}, ['Providers'])",
            childPath + changed + "'org.tarnwickle.voicecall.Call1', {'Uri': <'b'>}, @as [])"));
}

// --- Objects

TEST_F(ServedTree, SignalsComeFromTheObjectAndTheInterface)
{
    listen();
    emit manager->raised("ProviderRemoved", {"x"});
    EXPECT_THAT(heard(), ElementsAre(rootPath + " org.tarnwickle.voicecall.Manager1.ProviderRemoved('x')"));
}

TEST_F(ServedTree, ObjectsThatComeAndGoAreToldAndListed)
{
    const QString get = "GetManagedObjects";
    const QString objectManager = "org.freedesktop.DBus.ObjectManager";
    listen();
    addChild();
    EXPECT_EQ(ask(rootPath, objectManager, get),
        "({'/org/example/tree/calls/one': {'org.tarnwickle.voicecall.Call1': {'Uri': <'sip:a'>}}},)");
    EXPECT_EQ(ask(childPath, callName, "Hold", "true"), "(true,)");
    tree.removeObject(childPath);
    tree.removeObject(childPath);
    EXPECT_EQ(ask(rootPath, objectManager, get), "({},)");
    EXPECT_THAT(heard(),
        ElementsAre(rootPath + " org.freedesktop.DBus.ObjectManager.InterfacesAdded(objectpath '" + childPath
                + "', {'org.tarnwickle.voicecall.Call1': {'Uri': <'sip:a'>}})",
            rootPath + " org.freedesktop.DBus.ObjectManager.InterfacesRemoved(objectpath '" + childPath
                + "', ['org.tarnwickle.voicecall.Call1'])"));
}

TEST_F(ServedTree, AnObjectMayGoByItsOwnMethodAndStillAnswers)
{
    tree.addObject(childPath,
        std::make_unique<BusInterface>(
            "zelkovar.Call.DTMF1", BusInterface::Methods{{"SendDTMF", [&](const QDBusMessage &call) {
                                                              tree.removeObject(childPath);
                                                              return call.createReply();
                                                          }}}));
    EXPECT_EQ(ask(childPath, "zelkovar.Call.DTMF1", "SendDTMF", "'1'"), "()");
    EXPECT_EQ(ask(childPath, "zelkovar.Call.DTMF1", "SendDTMF", "'1'"), errors + "UnknownObject");
}

TEST_F(ServedTree, CallsAndMissedCallsAreTold)
{
    QStringList told;
    QObject::connect(&tree, &BusTree::called, [&](const QDBusMessage &call) { told.append("called " + call.path()); });
    QObject::connect(&tree, &BusTree::missed, [&](const QDBusMessage &call) { told.append("missed " + call.path()); });
    ask(rootPath, managerName, "Sing");
    ask(childPath, callName, "Answer");
    EXPECT_THAT(told, ElementsAre("called " + rootPath, "called " + childPath, "missed " + childPath));
}

TEST_F(ServedTree, EveryNodeDescribesItselfAndItsChildren)
{
    addChild();
    addChild("/org/example/tree/calls/another");
    for (const char *interface : {"org.freedesktop.DBus.Peer", "org.freedesktop.DBus.Introspectable",
             "org.freedesktop.DBus.Properties", "org.freedesktop.DBus.ObjectManager",
             "org.tarnwickle.voicecall.Manager1", "org.tarnwickle.voicecall.Audio1"})
        EXPECT_THAT(introspect(rootPath), HasSubstr("<interface name=\"" + std::string(interface) + "\">"));
    EXPECT_THAT(introspect("/"), HasSubstr("<node name=\"org\"/>"));
    EXPECT_THAT(introspect("/org/example"), HasSubstr("<node name=\"tree\"/>"));
    EXPECT_THAT(introspect(rootPath), HasSubstr("<node name=\"calls\"/>"));
    EXPECT_THAT(introspect(rootPath + "/calls"),
        AllOf(HasSubstr("<node name=\"another\"/>\\n<node name=\"one\"/>"), Not(HasSubstr("Manager1"))));
    EXPECT_THAT(introspect(childPath), AllOf(HasSubstr("<method name=\"SendDtmf\">"), Not(HasSubstr("ObjectManager"))));
}

TEST_F(ServedTree, EveryObjectAnswersPings)
{
    addChild();
    for (const QString &path : {rootPath, childPath}) {
        EXPECT_EQ(ask(path, "org.freedesktop.DBus.Peer", "Ping"), "()");
        EXPECT_EQ(call(path, "org.freedesktop.DBus.Peer", "GetMachineId").signature(), "s");
    }
}

TEST_F(ServedTree, APathThatIsTakenStaysWithWhoHasIt)
{
    listen();
    {
        BusTree second(served, rootPath);
        EXPECT_FALSE(second.publish());
        second.addObject(childPath, std::make_unique<EchoInterface>(callName, calls));
    }
    EXPECT_EQ(ask(rootPath, managerName, "Dial", "'a', 'b'"), "('a', 'b')");
    EXPECT_THAT(heard(), IsEmpty());
}

TEST(TreeAtTheTop, HasItsChildrenThere)
{
    const QDBusConnection served = QDBusConnection::connectToBus(QDBusConnection::SessionBus, "top");
    BusTree tree(served, "/");
    ASSERT_TRUE(tree.publish());
    QStringList calls;
    tree.addObject("/one", std::make_unique<EchoInterface>(callName, calls));
    ScriptedApplication client;
    EXPECT_THAT(
        client.call(served.baseService(), "/", "org.freedesktop.DBus.Introspectable", "Introspect").toStdString(),
        HasSubstr("<node name=\"one\"/>"));
    EXPECT_EQ(client.call(served.baseService(), "/one", callName, "Answer"), "()");
    QDBusConnection::disconnectFromBus("top");
}
