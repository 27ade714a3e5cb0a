// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "watchlines.h"

#include "json.h"

#include <QtCore/QRegularExpression>
#include <functional>

// A key and its value, in the form that is printed.
using Field = QPair<QString, QString>;
using Fields = QVector<Field>;

static QString word(const QString &text)
{
    static const QRegularExpression bare(QStringLiteral("\\A[A-Za-z0-9_./:@+-]+\\z"));
    return bare.match(text).hasMatch() ? text : Json::quoted(text);
}

static QString yesNo(bool value) { return value ? QStringLiteral("yes") : QStringLiteral("no"); }

static Fields fields(const CallInfo &call)
{
    return {
        {QStringLiteral("status"), word(call.status())},
        {QStringLiteral("direction"), word(call.direction())},
        {QStringLiteral("name"), Json::quoted(call.text("LineId"))},
        {QStringLiteral("address"), Json::quoted(call.text("Uri"))},
        {QStringLiteral("app"), Json::quoted(call.text("AppId"))},
        {QStringLiteral("duration"), QString::number(call.duration())},
        {QStringLiteral("provider"), word(call.text("ProviderId"))},
        {QStringLiteral("ongoing"), yesNo(call.flag("Ongoing"))},
        {QStringLiteral("remote-held"), yesNo(call.flag("RemoteHeld"))},
        {QStringLiteral("holdable"), yesNo(call.flag("Holdable"))},
        {QStringLiteral("dtmf"), yesNo(call.flag("SupportsDtmf"))},
        {QStringLiteral("supports-multiparty"), yesNo(call.flag("SupportsMultiparty"))},
        {QStringLiteral("multiparty"), yesNo(call.flag("Multiparty"))},
        {QStringLiteral("emergency"), yesNo(call.flag("Emergency"))},
        {QStringLiteral("forwarded"), yesNo(call.flag("Forwarded"))},
    };
}

static Fields fields(const Provider &provider) { return {{QStringLiteral("type"), word(provider.type)}}; }

static Fields fields(const AudioDevice &device)
{
    return {
        {QStringLiteral("type"), word(device.typeText())},
        {QStringLiteral("input"), yesNo(device.isInput)},
        {QStringLiteral("output"), yesNo(device.isOutput)},
        {QStringLiteral("name"), Json::quoted(device.name)},
    };
}

// Nothing of a host that is not there, so that all of one that comes is new.
static Fields audioFields(const HostState &state)
{
    if (!state.isPresent)
        return {};
    return {
        {QStringLiteral("input"), word(state.inputDevice)},
        {QStringLiteral("output"), word(state.outputDevice)},
        {QStringLiteral("muted"), yesNo(state.microphoneMuted)},
    };
}

static Fields changesBetween(const Fields &before, const Fields &after)
{
    Fields changes;
    for (int i = 0; i < after.size(); ++i) {
        if (before.value(i) != after.at(i))
            changes.append(after.at(i));
    }
    return changes;
}

static QString line(const QString &subject, const QString &event, const Fields &fields)
{
    QString text = subject + QLatin1Char(' ') + event;
    for (const Field &field : fields)
        text += QLatin1Char(' ') + field.first + QLatin1Char('=') + field.second;
    return text;
}

static QString idOf(const CallInfo &call) { return call.id(); }
static QString idOf(const Provider &provider) { return provider.id; }
static QString idOf(const AudioDevice &device) { return device.id; }

template <typename List>
static QMap<QString, Fields> fieldsById(const List &entries)
{
    QMap<QString, Fields> result;
    for (const auto &entry : entries)
        result.insert(idOf(entry), fields(entry));
    return result;
}

template <typename List>
static QStringList listChanges(const QString &kind, const List &before, const List &after)
{
    const QMap<QString, Fields> known = fieldsById(before);
    const QMap<QString, Fields> current = fieldsById(after);
    const auto subject = [&](const auto &entry) { return kind + QLatin1Char(' ') + word(idOf(entry)); };
    QStringList lines;
    for (const auto &entry : before) {
        if (!current.contains(idOf(entry)))
            lines.append(line(subject(entry), QStringLiteral("removed"), {}));
    }
    for (const auto &entry : after) {
        const auto old = known.constFind(idOf(entry));
        if (old == known.cend())
            lines.append(line(subject(entry), QStringLiteral("added"), fields(entry)));
        else if (*old != fields(entry))
            lines.append(line(subject(entry), QStringLiteral("changed"), changesBetween(*old, fields(entry))));
    }
    return lines;
}

QStringList WatchLines::between(const HostState &before, const HostState &after)
{
    QStringList lines = listChanges(QStringLiteral("provider"), before.providers, after.providers);
    lines += listChanges(QStringLiteral("device"), before.devices, after.devices);
    const Fields audio = changesBetween(audioFields(before), audioFields(after));
    if (!audio.isEmpty())
        lines.append(line(QStringLiteral("audio"), QStringLiteral("changed"), audio));
    return lines + listChanges(QStringLiteral("call"), before.calls, after.calls);
}
