// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// What the applications of the kit put on the bus, and that the table in docs/examples.md says so.

#include "desktophost.h"
#include "examples.h"
#include "fakehost.h"
#include "printers.h"
#include "scriptedapplication.h"
#include "waitfor.h"

#include <QtCore/QFile>
#include <QtCore/QRegularExpression>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <gmock/gmock.h>

using testing::Contains;
using testing::IsEmpty;
using testing::IsSupersetOf;

namespace {

const QString objectManager = QStringLiteral("org.freedesktop.DBus.ObjectManager");
const QString callInterface = QStringLiteral("zelkovar.Call.Call1");

QStringList documentedRows()
{
    QFile file(QStringLiteral(DOCS "/examples.md"));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return QString::fromUtf8(file.readAll()).split('\n').filter(QRegularExpression("^\\|"));
}

QStringList matches(const QString &text, const char *expression)
{
    QStringList found;
    auto all = QRegularExpression(expression).globalMatch(text);
    while (all.hasNext())
        found.append(all.next().captured(1));
    return found;
}

// Names of the dictionary of interfaces, or of the list of names, in a message, in their order. GVariant's
// text tells the type of an empty dictionary.
QStringList interfaces(const QString &message)
{
    return matches(message, "'((?:zelkovar|org\\.freedesktop)\\.[\\w.]+)'(?:: (?:@a\\{sv\\} )?\\{|[,\\]])");
}

// Names and values of the properties in a message.
QStringList properties(const QString &message) { return matches(message, "'(\\w+': <[^>]*)>"); }

QString shortNames(const QStringList &interfaces, const QString &prefix)
{
    QStringList names;
    for (const QString &interface : interfaces.filter(QRegularExpression('^' + QRegularExpression::escape(prefix))))
        names.append(interface.section('.', -1));
    return names.isEmpty() ? QStringLiteral("none") : names.join(", ");
}

// Sorted, for in some libraries their order is by chance.
QString standardNames(QStringList interfaces)
{
    interfaces.sort();
    return shortNames(interfaces, "org.freedesktop.DBus.");
}

class Wire : public testing::TestWithParam<Example>
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(host.start());
        monitor.becomeMonitor();
        const Example &example = GetParam();
        ASSERT_TRUE(application.start(example.program(), example.options("sip:ada@example.org", "Ada")));
        ASSERT_TRUE(host.waitForTable({"sip:ada@example.org=incoming"}));
        owner = registeredApplication(DesktopHost::name());
    }

    void TearDown() override
    {
        if (host.program().isRunning()) {
            EXPECT_EQ(host.stop(), 0);
        }
    }

    // Messages of the application in which something of this form is found.
    QStringList sent(const QString &form) const
    {
        return monitor.traffic()
            .filter(QRegularExpression('^' + QRegularExpression::escape(owner) + " > "))
            .filter(QRegularExpression(form));
    }

    // The first of them.
    QString waitForSent(const QString &form) const
    {
        EXPECT_TRUE(waitFor([&] { return !sent(form).isEmpty(); })) << form.toStdString() << '\n'
                                                                    << monitor.traffic().join('\n').toStdString();
        return sent(form).value(0);
    }

    // What the application sends when the user answers: kinds of messages, in order, up to the given one.
    QString sentOnAccept(const QString &end) const
    {
        static const QRegularExpression kind("(reply|StatusChanged|PropertiesChanged)");
        const QStringList all = monitor.traffic();
        const int accept = all.indexOf(all.filter("Call1.Accept()").value(0));
        QStringList kinds;
        for (const QString &message : all.mid(accept, all.indexOf(end) - accept)) {
            if (message.startsWith(owner + " > "))
                kinds.append(kind.match(message).captured(1));
        }
        return kinds.join(", ");
    }

    DesktopHost host;
    Program application;
    ScriptedApplication monitor;
    // Unique name of the application.
    QString owner;
};

} // namespace

TEST_P(Wire, IsWhatTheDocumentationSays)
{
    const QString first = waitForSent(QStringLiteral("objectpath '%1'").arg(GetParam().callPath()));

    // Behind each of these answers nothing more comes of what the host sent before.
    ASSERT_TRUE(waitFor([&] { return !monitor.traffic().filter("UpdateAudioRouteState").isEmpty(); }));
    ScriptedApplication().call(owner, GetParam().manager(), objectManager, "GetManagedObjects");
    ASSERT_EQ(host.command("Answer"), QString());
    ASSERT_TRUE(host.waitForStatus("active"));
    ScriptedApplication().call(owner, GetParam().manager(), objectManager, "GetManagedObjects");
    const QString managed = waitForSent(": reply \\(\\{objectpath.*'Status': <uint32 5");
    const QString onAccept = sentOnAccept(managed);

    // What the plug-in never does, another host can.
    ASSERT_EQ(host.stop(), 0);
    FakeHost other;
    ASSERT_TRUE(other.takeName());
    ASSERT_TRUE(other.waitForWire("GetManagedObjects " + GetParam().manager()));
    const auto errorOf = [&](const char *method, const QVariantList &arguments) {
        return other.call(GetParam().callPath(), callInterface, method, arguments).errorName().section('.', -1);
    };
    const QString wrongType = errorOf("SetHold", {1});
    EXPECT_EQ(errorOf("Reject", {1u}), QString());
    const QString removed = waitForSent("ObjectManager\\.InterfacesRemoved\\(");
    const QString gone = errorOf("Accept", {});

    const QStringList row = {GetParam().name, first.contains(": reply ") ? "snapshot" : "signal",
        QString::number(sent("ObjectManager\\.InterfacesAdded\\(").size()),
        GetParam().ordersByChance() ? "by chance" : shortNames(interfaces(first), "zelkovar.Call."),
        standardNames(interfaces(first)), standardNames(interfaces(managed)), standardNames(interfaces(removed)),
        QString::number(properties(first).size()), onAccept, wrongType, gone};
    EXPECT_THAT(documentedRows(), Contains("| " + row.join(" | ") + " |"));
}

TEST_P(Wire, TellsThePropertiesWithTheirTypesAndIsNotAskedAgain)
{
    const QString first = waitForSent(QStringLiteral("objectpath '%1'").arg(GetParam().callPath()));
    EXPECT_THAT(properties(first),
        IsSupersetOf({"Holdable': <true", "Incoming': <true", "RemoteName': <'Ada'", "Status': <uint32 3",
            "Uri': <'sip:ada@example.org'"}));
    // The host reads what it was told, and asks for nothing more.
    EXPECT_THAT(monitor.traffic().filter("org.freedesktop.DBus.Properties.Get").filter(" > " + owner), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    OfTheKit, Wire, testing::ValuesIn(simulatorAndExamples()), [](const auto &info) { return info.param.testName(); });
