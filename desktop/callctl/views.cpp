// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "views.h"

#include "programs/printabletext.h"
#include "table.h"

static QString clockText(int seconds)
{
    const QString minutesAndSeconds
        = QStringLiteral("%1:%2").arg(seconds / 60 % 60).arg(seconds % 60, 2, 10, QLatin1Char('0'));
    if (seconds < 3600)
        return minutesAndSeconds;
    return QStringLiteral("%1:%2").arg(seconds / 3600).arg(minutesAndSeconds.rightJustified(5, QLatin1Char('0')));
}

QStringList Views::calls(const QList<CallInfo> &calls, int columns, int chosen)
{
    if (calls.isEmpty())
        return {QStringLiteral("No calls.")};
    const QString mark = chosen >= 0 ? QStringLiteral("  ") : QString();
    Table table(
        {mark + QStringLiteral("ID"), QStringLiteral("STATUS"), QStringLiteral("DIRECTION"), QStringLiteral("NAME"),
            QStringLiteral("ADDRESS"), QStringLiteral("APPLICATION"), QStringLiteral("DURATION")},
        {3, 4, 5});
    for (int i = 0; i < calls.size(); ++i) {
        const CallInfo &call = calls.at(i);
        table.add({(i == chosen ? QStringLiteral("> ") : mark) + call.id(), call.status(), call.direction(),
            call.text("LineId"), call.text("Uri"), call.text("AppId"), clockText(call.duration())});
    }
    return table.lines(columns);
}

QStringList Views::providers(const ProviderList &providers)
{
    if (providers.isEmpty())
        return {QStringLiteral("No providers.")};
    Table table({QStringLiteral("ID"), QStringLiteral("TYPE")});
    for (const Provider &provider : providers)
        table.add({provider.id, provider.type});
    return table.lines();
}

static QString joined(bool first, const char *firstText, bool second, const char *secondText)
{
    QStringList texts;
    if (first)
        texts.append(QLatin1String(firstText));
    if (second)
        texts.append(QLatin1String(secondText));
    return texts.join(QLatin1Char('+'));
}

QStringList Views::devices(const HostState &state)
{
    QStringList lines = {QStringLiteral("No devices.")};
    if (!state.devices.isEmpty()) {
        Table table({QStringLiteral("ID"), QStringLiteral("TYPE"), QStringLiteral("DIRECTION"), QStringLiteral("NAME"),
            QStringLiteral("SELECTED")});
        for (const AudioDevice &device : state.devices) {
            table.add(
                {device.id, device.typeText(), joined(device.isInput, "input", device.isOutput, "output"), device.name,
                    joined(device.id == state.inputDevice, "input", device.id == state.outputDevice, "output")});
        }
        lines = table.lines();
    }
    return lines << audioLine(state);
}

static QString idOrNone(const QString &id)
{
    return id.isEmpty() ? QStringLiteral("none") : PrintableText::printable(id);
}

QString Views::audioLine(const HostState &state, int columns)
{
    const QString line = QStringLiteral("Audio: input %1, output %2, microphone %3")
                             .arg(idOrNone(state.inputDevice), idOrNone(state.outputDevice),
                                 state.microphoneMuted ? QStringLiteral("muted") : QStringLiteral("open"));
    return columns > 0 ? PrintableText::elided(line, columns) : line;
}

QString Views::brief(const CallInfo &call)
{
    const QString name = call.text("LineId");
    return name.isEmpty() ? QStringLiteral("%1 (%2)").arg(call.id(), call.status())
                          : QStringLiteral("%1 (%2, %3)").arg(call.id(), call.status(), name);
}
