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

const CallInfo *HostState::call(const QString &id) const
{
    const auto found
        = std::find_if(calls.cbegin(), calls.cend(), [&](const CallInfo &call) { return call.id() == id; });
    return found == calls.cend() ? nullptr : &*found;
}

// c2 comes before c10.
static bool cameBefore(const CallInfo &left, const CallInfo &right)
{
    const QString a = left.id();
    const QString b = right.id();
    return std::make_tuple(a.size(), a) < std::make_tuple(b.size(), b);
}

void HostState::setCall(const CallInfo &call)
{
    removeCall(call.path);
    calls.insert(std::upper_bound(calls.begin(), calls.end(), call, cameBefore), call);
}

void HostState::removeCall(const QString &path)
{
    calls.erase(std::remove_if(calls.begin(), calls.end(), [&](const CallInfo &call) { return call.path == path; }),
        calls.end());
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
