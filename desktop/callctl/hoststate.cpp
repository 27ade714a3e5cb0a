// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "hoststate.h"

#include <algorithm>
#include <tuple>

QString AudioDevice::typeText() const
{
    static const QStringList texts = {QStringLiteral("unknown"), QStringLiteral("earpiece"), QStringLiteral("speaker"),
        QStringLiteral("headset"), QStringLiteral("microphone")};
    return texts.value(type, texts.constFirst());
}

QString CallInfo::direction() const
{
    return flag("Incoming") ? QStringLiteral("incoming") : QStringLiteral("outgoing");
}

bool operator<(const CallPath &left, const CallPath &right)
{
    return std::make_tuple(left.path.size(), left.path) < std::make_tuple(right.path.size(), right.path);
}

const Provider *HostState::provider(const QString &id) const
{
    const auto found = std::find_if(
        providers.cbegin(), providers.cend(), [&](const Provider &provider) { return provider.id == id; });
    return found == providers.cend() ? nullptr : &*found;
}

bool operator==(const Provider &left, const Provider &right) { return left.id == right.id && left.type == right.type; }

bool operator==(const AudioDevice &left, const AudioDevice &right)
{
    const auto shown = [](const AudioDevice &device) {
        return std::make_tuple(device.id, device.type, device.isInput, device.isOutput, device.name);
    };
    return shown(left) == shown(right);
}

QDBusArgument &operator<<(QDBusArgument &argument, const Provider &provider)
{
    argument.beginStructure();
    argument << provider.id << provider.type;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, Provider &provider)
{
    argument.beginStructure();
    argument >> provider.id >> provider.type;
    argument.endStructure();
    return argument;
}

QDBusArgument &operator<<(QDBusArgument &argument, const AudioDevice &device)
{
    argument.beginStructure();
    argument << device.id << device.type << device.isInput << device.isOutput << device.name << device.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, AudioDevice &device)
{
    argument.beginStructure();
    argument >> device.id >> device.type >> device.isInput >> device.isOutput >> device.name >> device.properties;
    argument.endStructure();
    return argument;
}
