// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "kittest.h"

#include "waitfor.h"

void KitTest::startSimulator(const QStringList &arguments)
{
    ASSERT_TRUE(host.takeName());
    ASSERT_TRUE(program.start(QStringLiteral(RINGLET_SIM), arguments));
    ASSERT_TRUE(waitForLine("registered " + manager)) << qPrintable(program.errorOutput());
    // Once for the host to have seen the calls, and once for the program to have heard that.
    ASSERT_TRUE(host.settle(manager));
    ASSERT_TRUE(host.settle(manager));
}

// A command that is unknown on purpose comes behind it: its complaint tells that the first one is done.
bool KitTest::type(const QString &command)
{
    const QString mark = QStringLiteral("mark%1").arg(++m_typed);
    program.type(command + QLatin1Char('\n') + mark);
    return program.waitForError(QStringLiteral("\"%1\"").arg(mark));
}

std::string KitTest::complaintAbout(const QString &command)
{
    const int before = program.errorOutput().size();
    EXPECT_TRUE(type(command));
    const QString complaint = program.errorOutput().mid(before);
    // The last line is about the mark behind the command.
    return complaint.left(complaint.indexOf("unknown command \"mark")).toStdString();
}

void KitTest::expectDone(const QString &command)
{
    EXPECT_EQ(complaintAbout(command), "ringlet-sim: ") << qPrintable(command);
}

QStringList KitTest::linesThatStart(const QString &start)
{
    QStringList lines;
    for (const QString &line : program.lines()) {
        if (line.startsWith(start))
            lines.append(line);
    }
    return lines;
}

bool KitTest::waitForLine(const QString &line, int count)
{
    return waitFor([&] { return program.lines().count(line) >= count; });
}

QDBusMessage KitTest::callInterface(const QString &call, const QString &member, const QVariantList &arguments)
{
    return host.call(manager + QLatin1Char('/') + call, "zelkovar.Call.Call1", member, arguments);
}

static FakeDeviceList devices()
{
    FakeDevice microphone;
    microphone.id = "mic";
    microphone.isInput = true;
    microphone.name = "Microphone";
    microphone.properties = {{"icons", QStringList{"a", "b"}}};
    FakeDevice earpiece;
    earpiece.id = "ear";
    earpiece.isOutput = true;
    earpiece.name = "Earpiece";
    return {microphone, earpiece};
}

QDBusMessage KitTest::updateAudioState(const QString &call, bool muted, const QString &input, const QString &output)
{
    return host.call(manager + QLatin1Char('/') + call, "zelkovar.Call.AudioControl1", "UpdateAudioRouteState",
        {QVariant::fromValue(devices()), muted, input, output});
}

QDBusMessage KitTest::updateAudioRoute(const QString &call, bool muted, const QString &input, const QString &output)
{
    return host.call(
        manager + QLatin1Char('/') + call, "zelkovar.Call.AudioControl1", "UpdateAudioRoute", {muted, input, output});
}
