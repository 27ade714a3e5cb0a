// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "common/propertyvalues.h"

#include "printers.h"
#include "scriptedapplication.h"
#include "waitfor.h"

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusPendingCall>
#include <QtDBus/QDBusUnixFileDescriptor>
#include <QtDBus/QDBusVariant>
#include <gmock/gmock.h>

namespace {

/** Properties as the bus layer hands them over; `text` is that of an a{sv}, handle 0 an open file. */
QVariantMap received(const QString &text)
{
    ScriptedApplication application;
    application.setSnapshotBody(QStringLiteral("@a{sv} ") + text, {0});
    const QDBusPendingCall call = QDBusConnection::sessionBus().asyncCall(QDBusMessage::createMethodCall(
        application.name(), "/x", "org.freedesktop.DBus.ObjectManager", "GetManagedObjects"));
    waitFor([&] { return call.isFinished(); });
    return qdbus_cast<QVariantMap>(call.reply().arguments().value(0));
}

QStringList validIn(const QVariantMap &properties)
{
    QStringList names;
    for (auto property = properties.cbegin(); property != properties.cend(); ++property) {
        if (property->isValid())
            names.append(property.key());
    }
    return names;
}

QStringList relayed(const QString &text)
{
    return PropertyValues::relayable({{"test.A", received(text)}}).value("test.A").keys();
}

} // namespace

TEST(SelfContained, KeepsEverySimpleValue)
{
    const QVariantMap properties
        = received("{'y': <byte 1>, 'b': <true>, 'n': <int16 1>, 'q': <uint16 1>, 'i': <1>, 'u': <uint32 1>, "
                   "'x': <int64 1>, 't': <uint64 1>, 'd': <0.5>, 's': <'x'>, 'o': <objectpath '/a'>, "
                   "'g': <signature 'as'>, 'v': <<'x'>>, 'vv': <<<5>>>, 'ay': <b'abc'>, 'as': <['a', 'b']>}");
    ASSERT_EQ(properties.size(), 16);
    const QVariantMap kept = PropertyValues::selfContained(properties);
    EXPECT_EQ(validIn(kept), properties.keys());
    EXPECT_EQ(kept.value("s"), QVariant("x"));
    EXPECT_EQ(kept.value("u"), QVariant(1U));
    EXPECT_EQ(kept.value("as"), QVariant(QStringList({"a", "b"})));
}

TEST(SelfContained, MakesContainersInvalidAndKeepsTheirNames)
{
    const QVariantMap properties = received("{'aav': <@aav []>, 'ai': <[1]>, 'asv': <{'a': <1>}>, 'struct': <(1, 2)>, "
                                            "'u': <uint32 1>, 'vai': <<[1]>>, 'vvstruct': <<<(1, 2)>>>}");
    const QVariantMap kept = PropertyValues::selfContained(properties);
    EXPECT_EQ(kept.keys(), properties.keys());
    EXPECT_EQ(validIn(kept), QStringList("u"));
}

TEST(SelfContained, MakesFileDescriptorsInvalid)
{
    const QVariantMap properties = received("{'h': <handle 0>, 'vh': <<handle 0>>, 'vvh': <<<handle 0>>>, 's': <'x'>}");
    ASSERT_TRUE(properties.value("h").value<QDBusUnixFileDescriptor>().isValid());
    EXPECT_EQ(validIn(PropertyValues::selfContained(properties)), QStringList("s"));
}

TEST(SelfContained, KeepsTheValuesOfANameThatIsThereTwice)
{
    QVariantMap properties = received("{'a': <[1]>, 'b': <'x'>}");
    properties = static_cast<QMultiMap<QString, QVariant> &>(properties).unite(received("{'b': <'y'>}"));
    EXPECT_EQ(PropertyValues::selfContained(properties).keys(), QStringList({"a", "b", "b"}));
}

TEST(Relayable, KeepsSimpleValuesAndContainers)
{
    EXPECT_EQ(relayed("{'a': <[1]>, 'b': <@a(sv) []>, 'c': <{'x': <(1, <[<2>]>)>}>, 'd': <<<[<'x'>]>>>, 'e': <'x'>, "
                      "'f': <@ah []>, 'g': <@a{hv} {}>}"),
        QStringList({"a", "b", "c", "d", "e", "f", "g"}));
}

TEST(Relayable, KeepsFileDescriptorsByThemselves)
{
    EXPECT_EQ(relayed("{'a': <handle 0>, 'b': <<<handle 0>>>, 'c': <'x'>}"), QStringList({"a", "b", "c"}));
}

TEST(Relayable, LeavesOutAFileDescriptorInAnyContainer)
{
    for (const char *value : {"[handle 0]", "(1, handle 0)", "{'x': handle 0}", "{handle 0: 'x'}", "[<handle 0>]",
             "{'x': <handle 0>}", "{'x': <[<(1, <handle 0>)>]>}", "<[handle 0]>", "<<[(<handle 0>,)]>>",
             "[@av [], [<1>, <handle 0>]]", "({uint32 1: [(handle 0, 'x')]}, 1)", "(<'x'>, handle 0, <'y'>)"})
        EXPECT_EQ(relayed(QStringLiteral("{'a': <'x'>, 'b': <%1>, 'c': <[<1>]>}").arg(value)), QStringList({"a", "c"}))
            << value;
}

TEST(Relayable, LeavesOutAFileDescriptorInAnyEntryOfADictionary)
{
    for (const char *value : {"{'x': <handle 0>, 'y': <'z'>}", "{'x': <'z'>, 'y': <handle 0>}",
             "{handle 0: <'x'>, handle 0: <'y'>}", "{'x': <'y'>, 'z': <[<handle 0>]>, 'u': <1>}"})
        EXPECT_EQ(relayed(QStringLiteral("{'a': <'x'>, 'b': <%1>}").arg(value)), QStringList("a")) << value;
}

TEST(Relayable, LeavesOutAnEmptySignatureByItself)
{
    EXPECT_EQ(relayed("{'g': <signature ''>, 'vg': <<signature ''>>, 'vvg': <<<signature ''>>>, "
                      "'ag': <[signature '', 'u']>, 'struct': <(1, <signature ''>)>, 'other': <signature 'as'>}"),
        QStringList({"ag", "other", "struct"}));
}

TEST(Relayable, LeavesOutThePropertyAndNotItsInterfaceOrOthers)
{
    const QVariantMapMap interfaces{
        {"test.A", received("{'a': <[handle 0]>}")}, {"test.B", {}}, {"test.C", received("{'b': <[1]>}")}};
    const QVariantMapMap kept = PropertyValues::relayable(interfaces);
    EXPECT_EQ(kept.keys(), QStringList({"test.A", "test.B", "test.C"}));
    EXPECT_TRUE(kept.value("test.A").isEmpty());
    EXPECT_EQ(kept.value("test.C").keys(), QStringList("b"));
}
