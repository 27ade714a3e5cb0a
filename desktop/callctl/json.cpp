// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "json.h"

#include "programs/printabletext.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

template <typename Value>
static QString text(const Value &value)
{
    return PrintableText::escaped(QString::fromUtf8(QJsonDocument(value).toJson())).trimmed();
}

static QJsonObject object(const CallInfo &call)
{
    return {
        {QStringLiteral("id"), call.id()},
        {QStringLiteral("status"), call.status()},
        {QStringLiteral("direction"), call.direction()},
        {QStringLiteral("name"), call.text("LineId")},
        {QStringLiteral("address"), call.text("Uri")},
        {QStringLiteral("application"), call.text("AppId")},
        {QStringLiteral("provider"), call.text("ProviderId")},
        {QStringLiteral("duration"), call.duration()},
        {QStringLiteral("ongoing"), call.flag("Ongoing")},
        {QStringLiteral("remoteHeld"), call.flag("RemoteHeld")},
        {QStringLiteral("holdable"), call.flag("Holdable")},
        {QStringLiteral("supportsDtmf"), call.flag("SupportsDtmf")},
        {QStringLiteral("supportsMultiparty"), call.flag("SupportsMultiparty")},
        {QStringLiteral("multiparty"), call.flag("Multiparty")},
        {QStringLiteral("emergency"), call.flag("Emergency")},
        {QStringLiteral("forwarded"), call.flag("Forwarded")},
    };
}

static QJsonObject object(const Provider &provider)
{
    return {{QStringLiteral("id"), provider.id}, {QStringLiteral("type"), provider.type}};
}

static QJsonObject object(const AudioDevice &device)
{
    return {
        {QStringLiteral("id"), device.id},
        {QStringLiteral("type"), device.typeText()},
        {QStringLiteral("input"), device.isInput},
        {QStringLiteral("output"), device.isOutput},
        {QStringLiteral("name"), device.name},
    };
}

template <typename List>
static QJsonArray array(const List &list)
{
    QJsonArray result;
    for (const auto &entry : list)
        result.append(object(entry));
    return result;
}

QString Json::calls(const QList<CallInfo> &calls) { return text(array(calls)); }

QString Json::providers(const ProviderList &providers) { return text(array(providers)); }

QString Json::devices(const HostState &state)
{
    return text(QJsonObject{
        {QStringLiteral("devices"), array(state.devices)},
        {QStringLiteral("input"), state.inputDevice},
        {QStringLiteral("output"), state.outputDevice},
        {QStringLiteral("muted"), state.microphoneMuted},
    });
}

QString Json::quoted(const QString &text)
{
    const QString array = QString::fromUtf8(QJsonDocument(QJsonArray{text}).toJson(QJsonDocument::Compact));
    return PrintableText::escaped(array.mid(1, array.size() - 2));
}
