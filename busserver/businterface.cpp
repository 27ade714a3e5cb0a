// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "businterface.h"

#include "busreply.h"
#include "signature.h"

#include <QtDBus/QDBusError>

BusInterface::BusInterface(const QString &name, const Methods &methods)
    : m_name(name),
      m_description(InterfaceDescription::of(name)),
      m_methods(methods)
{
    const QStringList described = m_description.methods.keys();
    for (const QString &method : described) {
        if (!methods.contains(method))
            qFatal("Nothing answers the method %s of %s", qUtf8Printable(method), qUtf8Printable(name));
    }
}

QString BusInterface::refusal(const QDBusMessage &) const { return {}; }

bool BusInterface::takes(const QString &method, const QStringList &types) const
{
    return types == m_description.methods.value(method);
}

QDBusMessage BusInterface::answer(const QDBusMessage &call) const
{
    const QString method = call.member();
    if (!m_description.methods.contains(method)) {
        return call.createErrorReply(QDBusError::UnknownMethod,
            QStringLiteral("%1 has no method '%2'; %3")
                .arg(m_name, method, BusReply::thereIs(m_description.methods.keys())));
    }
    if (!takes(method, Signature::types(call.signature()))) {
        return call.createErrorReply(QDBusError::InvalidArgs,
            QStringLiteral("%1 takes '%2', not '%3'")
                .arg(method, m_description.methods.value(method).join(QString()), call.signature()));
    }
    const QString reason = refusal(call);
    return reason.isEmpty() ? m_methods.value(method)(call) : call.createErrorReply(QDBusError::AccessDenied, reason);
}
