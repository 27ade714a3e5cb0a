// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "propertiesinterface.h"

#include "busobject.h"

#include <QtDBus/QDBusError>
#include <QtDBus/QDBusVariant>

PropertiesInterface::PropertiesInterface(const BusObject *object)
    : BusInterface(QStringLiteral("org.freedesktop.DBus.Properties")),
      m_object(object)
{
}

// An empty name means any interface of the object.
static bool isMeant(const BusInterface &interface, const QString &name)
{
    return name.isEmpty() || interface.name() == name;
}

QDBusMessage PropertiesInterface::call(const QDBusMessage &message)
{
    const QString interface = message.arguments().value(0).toString();
    if (!interface.isEmpty() && !m_object->interface(interface)) {
        return message.createErrorReply(
            QDBusError::UnknownInterface, QStringLiteral("%1 has no interface '%2'").arg(m_object->path(), interface));
    }
    if (message.member() == QLatin1String("GetAll"))
        return getAll(message, interface);

    const QString property = message.arguments().value(1).toString();
    for (const auto &candidate : m_object->interfaces()) {
        if (isMeant(*candidate, interface) && candidate->hasProperty(property))
            return message.member() == QLatin1String("Get") ? get(message, candidate->name(), property)
                                                            : set(message, property);
    }
    return message.createErrorReply(QDBusError::UnknownProperty,
        QStringLiteral("%1 has no property '%2' in '%3'").arg(m_object->path(), property, interface));
}

QDBusMessage PropertiesInterface::getAll(const QDBusMessage &message, const QString &interface) const
{
    QVariantMap all;
    for (const auto &candidate : m_object->interfaces()) {
        if (!isMeant(*candidate, interface))
            continue;
        const QVariantMap some = candidate->properties();
        for (auto property = some.cbegin(); property != some.cend(); ++property)
            all.insert(property.key(), property.value());
    }
    return message.createReply(all);
}

QDBusMessage PropertiesInterface::get(
    const QDBusMessage &message, const QString &interface, const QString &property) const
{
    const QVariant value = m_object->interface(interface)->properties().value(property);
    return message.createReply(QVariant::fromValue(QDBusVariant(value)));
}

QDBusMessage PropertiesInterface::set(const QDBusMessage &message, const QString &property) const
{
    return message.createErrorReply(
        QDBusError::PropertyReadOnly, QStringLiteral("The property '%1' cannot be written").arg(property));
}
