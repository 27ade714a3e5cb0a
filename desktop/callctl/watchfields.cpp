// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "watchfields.h"

#include "json.h"

#include <algorithm>

static bool isBare(QChar unit)
{
    const ushort code = unit.unicode();
    return (code >= 'a' && code <= 'z') || (code >= 'A' && code <= 'Z') || (code >= '0' && code <= '9')
        || QStringLiteral("_./:@+-").contains(unit);
}

QString WatchFields::word(const QString &text)
{
    const bool bare = !text.isEmpty() && std::all_of(text.cbegin(), text.cend(), isBare);
    return bare ? text : Json::quoted(text);
}

static QString yesNo(bool value) { return value ? QStringLiteral("yes") : QStringLiteral("no"); }

// A property of a call, and how it is told.
struct CallField
{
    QString key;
    QString property;
    QString (*form)(const QVariant &value);
};

static QString wordForm(const QVariant &value) { return WatchFields::word(value.toString()); }
static QString quotedForm(const QVariant &value) { return Json::quoted(value.toString()); }
static QString numberForm(const QVariant &value) { return QString::number(value.toInt()); }
static QString yesNoForm(const QVariant &value) { return yesNo(value.toBool()); }
static QString directionForm(const QVariant &value)
{
    return value.toBool() ? QStringLiteral("incoming") : QStringLiteral("outgoing");
}

static const QVector<CallField> callFields = {
    {QStringLiteral("status"), QStringLiteral("StatusText"), wordForm},
    {QStringLiteral("direction"), QStringLiteral("Incoming"), directionForm},
    {QStringLiteral("name"), QStringLiteral("LineId"), quotedForm},
    {QStringLiteral("address"), QStringLiteral("Uri"), quotedForm},
    {QStringLiteral("app"), QStringLiteral("AppId"), quotedForm},
    {QStringLiteral("duration"), QStringLiteral("Duration"), numberForm},
    {QStringLiteral("provider"), QStringLiteral("ProviderId"), wordForm},
    {QStringLiteral("ongoing"), QStringLiteral("Ongoing"), yesNoForm},
    {QStringLiteral("remote-held"), QStringLiteral("RemoteHeld"), yesNoForm},
    {QStringLiteral("holdable"), QStringLiteral("Holdable"), yesNoForm},
    {QStringLiteral("dtmf"), QStringLiteral("SupportsDtmf"), yesNoForm},
    {QStringLiteral("supports-multiparty"), QStringLiteral("SupportsMultiparty"), yesNoForm},
    {QStringLiteral("multiparty"), QStringLiteral("Multiparty"), yesNoForm},
    {QStringLiteral("emergency"), QStringLiteral("Emergency"), yesNoForm},
    {QStringLiteral("forwarded"), QStringLiteral("Forwarded"), yesNoForm},
};

Fields WatchFields::all(const CallInfo &call)
{
    Fields fields;
    for (const CallField &field : callFields)
        fields.append({field.key, field.form(call.properties.value(field.property))});
    return fields;
}

Fields WatchFields::changed(const CallInfo &before, const CallInfo &after)
{
    Fields fields;
    for (const CallField &field : callFields) {
        const QVariant value = after.properties.value(field.property);
        if (before.properties.value(field.property) != value)
            fields.append({field.key, field.form(value)});
    }
    return fields;
}

Fields WatchFields::all(const AudioDevice &device)
{
    return {
        {QStringLiteral("type"), word(device.typeText())},
        {QStringLiteral("input"), yesNo(device.isInput)},
        {QStringLiteral("output"), yesNo(device.isOutput)},
        {QStringLiteral("name"), Json::quoted(device.name)},
    };
}

Fields WatchFields::changed(const AudioDevice &before, const AudioDevice &after)
{
    const Fields old = all(before);
    Fields fields = all(after);
    fields.erase(std::remove_if(fields.begin(), fields.end(), [&](const Field &field) { return old.contains(field); }),
        fields.end());
    return fields;
}

// All of a host that was not there is new.
Fields WatchFields::changed(const HostState &before, const HostState &after)
{
    const bool isNew = before.isPresent != after.isPresent;
    Fields fields;
    if (isNew || before.inputDevice != after.inputDevice)
        fields.append({QStringLiteral("input"), word(after.inputDevice)});
    if (isNew || before.outputDevice != after.outputDevice)
        fields.append({QStringLiteral("output"), word(after.outputDevice)});
    if (isNew || before.microphoneMuted != after.microphoneMuted)
        fields.append({QStringLiteral("muted"), yesNo(after.microphoneMuted)});
    return fields;
}
