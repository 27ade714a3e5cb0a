// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "propertiesinterface.h"

#include <QtDBus/QDBusError>
#include <QtDBus/QDBusVariant>

namespace Ringlet {

using Answer = QDBusMessage (*)(const QDBusMessage &call, const QVariantMap &properties);

static QString propertyName(const QDBusMessage &call) { return call.arguments().at(1).toString(); }

static QDBusMessage unknownProperty(const QDBusMessage &call)
{
    return call.createErrorReply(
        QDBusError::UnknownProperty, QStringLiteral("there is no property \"%1\"").arg(propertyName(call)));
}

static QDBusMessage get(const QDBusMessage &call, const QVariantMap &properties)
{
    if (!properties.contains(propertyName(call)))
        return unknownProperty(call);
    return call.createReply(QVariant::fromValue(QDBusVariant(properties.value(propertyName(call)))));
}

static QDBusMessage set(const QDBusMessage &call, const QVariantMap &properties)
{
    if (!properties.contains(propertyName(call)))
        return unknownProperty(call);
    return call.createErrorReply(
        QDBusError::PropertyReadOnly, QStringLiteral("\"%1\" can only be read").arg(propertyName(call)));
}

static QDBusMessage getAll(const QDBusMessage &call, const QVariantMap &properties)
{
    return call.createReply(properties);
}

static const struct
{
    const char *member;
    const char *signature;
    Answer answer;
} methods[] = {{"Get", "ss", get}, {"Set", "ssv", set}, {"GetAll", "s", getAll}};

static QDBusMessage answerFor(
    const QDBusMessage &call, const QString &signature, Answer answer, const InterfaceMap &interfaces)
{
    if (call.signature() != signature)
        return call.createErrorReply(QDBusError::InvalidArgs,
            QStringLiteral("%1 takes \"%2\", not \"%3\"").arg(call.member(), signature, call.signature()));
    const QString interface = call.arguments().constFirst().toString();
    if (!interfaces.contains(interface))
        return call.createErrorReply(
            QDBusError::UnknownInterface, QStringLiteral("there is no interface \"%1\"").arg(interface));
    return answer(call, interfaces.value(interface));
}

QDBusMessage answerPropertiesCall(const QDBusMessage &call, const InterfaceMap &interfaces)
{
    for (const auto &method : methods) {
        if (call.member() == QLatin1String(method.member))
            return answerFor(call, QString::fromLatin1(method.signature), method.answer, interfaces);
    }
    return call.createErrorReply(
        QDBusError::UnknownMethod, QStringLiteral("there is no method \"%1\"").arg(call.member()));
}

} // namespace Ringlet
