// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "call.h"

#include <array>

using Handler = AbstractVoiceCallHandler;

static QString statusText(Handler::VoiceCallStatus status)
{
    static const std::array<const char *, 8> texts
        = {"null", "active", "held", "dialing", "alerting", "incoming", "waiting", "disconnected"};
    const auto number = std::size_t(status);
    return QLatin1String(number < texts.size() ? texts[number] : texts[Handler::StatusNull]);
}

struct HandlerProperty
{
    const char *name;
    QVariant (*read)(const Handler &handler);
};

static const HandlerProperty handlerProperties[] = {
    {"AppId", [](const Handler &handler) -> QVariant { return handler.appId(); }},
    {"LineId", [](const Handler &handler) -> QVariant { return handler.lineId(); }},
    {"Uri", [](const Handler &handler) -> QVariant { return handler.uri(); }},
    {"Incoming", [](const Handler &handler) -> QVariant { return handler.isIncoming(); }},
    {"Status", [](const Handler &handler) -> QVariant { return int(handler.status()); }},
    {"StatusText", [](const Handler &handler) -> QVariant { return statusText(handler.status()); }},
    {"Duration", [](const Handler &handler) -> QVariant { return handler.duration(); }},
    {"Ongoing", [](const Handler &handler) -> QVariant { return handler.isOngoing(); }},
    {"RemoteHeld", [](const Handler &handler) -> QVariant { return handler.isRemoteHeld(); }},
    {"Holdable", [](const Handler &handler) -> QVariant { return handler.holdable(); }},
    {"SupportsDtmf", [](const Handler &handler) -> QVariant { return handler.supportsDtmf(); }},
    {"SupportsMultiparty", [](const Handler &handler) -> QVariant { return handler.supportsMultiparty(); }},
    {"Multiparty", [](const Handler &handler) -> QVariant { return handler.isMultiparty(); }},
    {"Emergency", [](const Handler &handler) -> QVariant { return handler.isEmergency(); }},
    {"Forwarded", [](const Handler &handler) -> QVariant { return handler.isForwarded(); }},
};

Call::Call(Handler *handler, const ProviderInfo &provider, const Bounds &bounds, QObject *parent)
    : QObject(parent),
      m_handler(handler),
      m_provider(provider),
      m_bounds(bounds),
      m_id(handler->handlerId()),
      m_properties(read())
{
    // What a signal carries is not looked at: any of them may mean that anything has changed.
    connect(handler, &Handler::statusChanged, this, &Call::refresh);
    connect(handler, &Handler::lineIdChanged, this, &Call::refresh);
    connect(handler, &Handler::durationChanged, this, &Call::refresh);
    connect(handler, &Handler::startedAtChanged, this, &Call::refresh);
    connect(handler, &Handler::emergencyChanged, this, &Call::refresh);
    connect(handler, &Handler::multipartyChanged, this, &Call::refresh);
    connect(handler, &Handler::forwardedChanged, this, &Call::refresh);
    connect(handler, &Handler::remoteHeldChanged, this, &Call::refresh);
    connect(handler, &Handler::supportsDtmfChanged, this, &Call::refresh);
    connect(handler, &Handler::parentHandlerIdChanged, this, &Call::refresh);
    connect(handler, &Handler::childCallsChanged, this, &Call::refresh);
    connect(handler, &QObject::destroyed, this, &Call::handlerDestroyed);
}

void Call::release()
{
    if (m_handler)
        m_handler->disconnect(this);
    m_handler.clear();
}

QVariantMap Call::read() const
{
    QVariantMap properties = {
        {QStringLiteral("HandlerId"), m_id},
        {QStringLiteral("ProviderId"), m_provider.id},
        {QStringLiteral("ProviderType"), m_provider.type},
    };
    for (const HandlerProperty &property : handlerProperties) {
        const QVariant value = property.read(*m_handler);
        properties.insert(QLatin1String(property.name),
            value.userType() == QMetaType::QString ? m_bounds.cut(value.toString()) : value);
    }
    return properties;
}

void Call::refresh()
{
    const QVariantMap before = m_properties;
    m_properties = read();
    QVariantMap differing;
    for (auto property = m_properties.cbegin(); property != m_properties.cend(); ++property) {
        if (before.value(property.key()) != property.value())
            differing.insert(property.key(), property.value());
    }
    if (!differing.isEmpty())
        emit changed(differing);
}
