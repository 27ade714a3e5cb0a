// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "common/propertyvalues.h"

#include <QtDBus/QDBusUnixFileDescriptor>
#include <QtDBus/QDBusVariant>
#include <algorithm>

static bool isSelfContained(const QVariant &value)
{
    const int type = value.userType();
    if (type == qMetaTypeId<QDBusVariant>())
        return isSelfContained(value.value<QDBusVariant>().variant());
    return type != qMetaTypeId<QDBusArgument>() && type != qMetaTypeId<QDBusUnixFileDescriptor>();
}

static bool holdsDescriptor(const QVariant &value);

static void enter(const QDBusArgument &argument, QDBusArgument::ElementType type)
{
    if (type == QDBusArgument::StructureType)
        argument.beginStructure();
    else if (type == QDBusArgument::MapType)
        argument.beginMap();
    else
        argument.beginArray();
}

static void leave(const QDBusArgument &argument, QDBusArgument::ElementType type)
{
    if (type == QDBusArgument::StructureType)
        argument.endStructure();
    else if (type == QDBusArgument::MapType)
        argument.endMap();
    else
        argument.endArray();
}

// Takes a copy, for reading moves its position. Reads to the end whatever it finds: an argument that is
// left half read never lets go of its message.
static bool containerHoldsDescriptor(const QDBusArgument argument) // NOLINT(performance-unnecessary-value-param)
{
    const QString signature = argument.currentSignature();
    if (!signature.contains(QLatin1Char('h')) && !signature.contains(QLatin1Char('v')))
        return false;

    bool found = false;
    const QDBusArgument::ElementType type = argument.currentType();
    enter(argument, type);
    while (!argument.atEnd()) {
        const bool isEntry = type == QDBusArgument::MapType;
        if (isEntry) {
            argument.beginMapEntry();
            found |= holdsDescriptor(argument.asVariant());
        }
        found |= holdsDescriptor(argument.asVariant());
        if (isEntry)
            argument.endMapEntry();
    }
    leave(argument, type);
    return found;
}

static bool holdsDescriptor(const QVariant &value)
{
    const int type = value.userType();
    if (type == qMetaTypeId<QDBusVariant>())
        return holdsDescriptor(value.value<QDBusVariant>().variant());
    if (type == qMetaTypeId<QDBusArgument>())
        return containerHoldsDescriptor(value.value<QDBusArgument>());
    return type == qMetaTypeId<QDBusUnixFileDescriptor>();
}

// A descriptor by itself is copied well; only one inside a container is lost. An empty signature is copied well
// inside a container; by itself it is none to the bus layer, which refuses the message.
static bool isRelayable(const QVariant &value)
{
    const int type = value.userType();
    if (type == qMetaTypeId<QDBusVariant>())
        return isRelayable(value.value<QDBusVariant>().variant());
    if (type == qMetaTypeId<QDBusSignature>())
        return !value.value<QDBusSignature>().signature().isEmpty();
    return type != qMetaTypeId<QDBusArgument>() || !containerHoldsDescriptor(value.value<QDBusArgument>());
}

static bool areRelayable(const QVariantMap &properties)
{
    return std::all_of(properties.cbegin(), properties.cend(), isRelayable);
}

QVariantMap PropertyValues::selfContained(const QVariantMap &properties)
{
    QVariantMap kept = properties;
    for (QVariant &value : kept) {
        if (!isSelfContained(value))
            value = QVariant();
    }
    return kept;
}

QVariantMapMap PropertyValues::relayable(const QVariantMapMap &interfaces)
{
    if (std::all_of(interfaces.cbegin(), interfaces.cend(), areRelayable))
        return interfaces;

    QVariantMapMap kept = interfaces;
    for (QVariantMap &properties : kept) {
        for (auto property = properties.begin(); property != properties.end();)
            property = isRelayable(*property) ? property + 1 : properties.erase(property);
    }
    return kept;
}
