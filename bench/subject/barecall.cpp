// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "barecall.h"

#include "control.h"

#include <QtDBus/QDBusConnection>

BareCall::BareCall(const QString &service, const QString &path, const QVariantMapMap &interfaces)
    : m_interfaces(interfaces)
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    callProxy.reset(new CallProxy(service, path, bus));
    connect(callProxy.data(), &CallProxy::StatusChanged, this, &BareCall::statusChanged);
    if (interfaces.contains(dtmfInterfaceName))
        dtmfProxy.reset(new DTMFProxy(service, path, bus));
    if (interfaces.contains(audioControlInterfaceName)) {
        audioControlProxy.reset(new AudioControlProxy(service, path, bus));
        connect(audioControlProxy.data(), &AudioControlProxy::RequestMute, this, &BareCall::ignoreMute);
        connect(audioControlProxy.data(), &AudioControlProxy::RequestAudioRoute, this, &BareCall::ignoreRoute);
    }
}

bool BareCall::isFlood() const
{
    return m_interfaces.value(callInterfaceName)
        .value(QStringLiteral("Uri"))
        .toString()
        .startsWith(QLatin1String(floodUri));
}
