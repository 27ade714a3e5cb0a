// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "propertiesinterface.h"

#include "busobject.h"
#include "busreply.h"

#include <QtDBus/QDBusError>
#include <QtDBus/QDBusVariant>

PropertiesInterface::PropertiesInterface(const BusObject *object)
    : BusInterface(QStringLiteral("org.freedesktop.DBus.Properties"),
        {
            {QStringLiteral("Get"),
                [this](const QDBusMessage &call) { return answerIfKnown(call, &PropertiesInterface::get); }},
            {QStringLiteral("Set"),
                [this](const QDBusMessage &call) { return answerIfKnown(call, &PropertiesInterface::set); }},
            {QStringLiteral("GetAll"),
                [this](const QDBusMessage &call) { return answerIfKnown(call, &PropertiesInterface::getAll); }},
        }),
      m_object(object)
{
}

static QString interfaceName(const QDBusMessage &call) { return call.arguments().at(0).toString(); }
static QString propertyName(const QDBusMessage &call) { return call.arguments().at(1).toString(); }

// An empty name means any interface of the object.
QDBusMessage PropertiesInterface::answerIfKnown(const QDBusMessage &call, Answer answer) const
{
    const QString interface = interfaceName(call);
    if (interface.isEmpty() || m_object->interface(interface))
        return (this->*answer)(call);
    return call.createErrorReply(QDBusError::UnknownInterface,
        QStringLiteral("%1 has no interface '%2'; %3")
            .arg(m_object->path(), interface, BusReply::thereIs(m_object->interfaceNames())));
}

QVariantMap PropertiesInterface::propertiesOf(const QString &interface) const
{
    QVariantMap all;
    for (const auto &candidate : m_object->interfaces()) {
        if (!interface.isEmpty() && candidate->name() != interface)
            continue;
        const QVariantMap some = candidate->properties();
        for (auto property = some.cbegin(); property != some.cend(); ++property)
            all.insert(property.key(), property.value());
    }
    return all;
}

QDBusMessage PropertiesInterface::unknownProperty(const QDBusMessage &call) const
{
    return call.createErrorReply(QDBusError::UnknownProperty,
        QStringLiteral("%1 has no property '%2' in '%3'; %4")
            .arg(m_object->path(), propertyName(call), interfaceName(call),
                BusReply::thereIs(propertiesOf(interfaceName(call)).keys())));
}

QDBusMessage PropertiesInterface::get(const QDBusMessage &call) const
{
    const QVariant value = propertiesOf(interfaceName(call)).value(propertyName(call));
    return value.isValid() ? call.createReply(QVariant::fromValue(QDBusVariant(value))) : unknownProperty(call);
}

QDBusMessage PropertiesInterface::set(const QDBusMessage &call) const
{
    if (!propertiesOf(interfaceName(call)).contains(propertyName(call)))
        return unknownProperty(call);
    return call.createErrorReply(
        QDBusError::PropertyReadOnly, QStringLiteral("The property '%1' cannot be written").arg(propertyName(call)));
}

QDBusMessage PropertiesInterface::getAll(const QDBusMessage &call) const
{
    return call.createReply(propertiesOf(interfaceName(call)));
}
