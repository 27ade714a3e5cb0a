// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "busobject.h"

#include "businterface.h"
#include "busreply.h"
#include "propertiesinterface.h"

#include <QtDBus/QDBusError>
#include <algorithm>

template <typename Predicate>
static BusInterface *firstOf(const BusObject::Interfaces &interfaces, Predicate predicate)
{
    const auto found = std::find_if(interfaces.begin(), interfaces.end(), predicate);
    return found == interfaces.end() ? nullptr : found->get();
}

BusObject::BusObject(const QString &path) : m_path(path) { add(std::make_unique<PropertiesInterface>(this)); }

BusObject::~BusObject() = default;

void BusObject::add(std::unique_ptr<BusInterface> interface) { m_interfaces.push_back(std::move(interface)); }

BusInterface *BusObject::interface(const QString &name) const
{
    return firstOf(m_interfaces, [&](const auto &interface) { return interface->name() == name; });
}

// A call without an interface name is legal, and means the first method of that name.
BusInterface *BusObject::interfaceWithMethod(const QString &method) const
{
    return firstOf(
        m_interfaces, [&](const auto &interface) { return interface->description().methods.contains(method); });
}

QStringList BusObject::interfaceNames() const
{
    QStringList names;
    for (const auto &interface : m_interfaces)
        names.append(interface->name());
    return names;
}

BusInterfaceMap BusObject::ownInterfaces() const
{
    BusInterfaceMap own;
    const QStringList names = ownInterfaceNames();
    for (const QString &name : names)
        own.insert(name, interface(name)->properties());
    return own;
}

QStringList BusObject::ownInterfaceNames() const
{
    QStringList names = interfaceNames();
    const auto isStandard = [](const QString &name) { return name.startsWith(QLatin1String("org.freedesktop.")); };
    names.erase(std::remove_if(names.begin(), names.end(), isStandard), names.end());
    return names;
}

QDBusMessage BusObject::answer(const QDBusMessage &call) const
{
    const bool isNamed = !call.interface().isEmpty();
    const BusInterface *meant = isNamed ? interface(call.interface()) : interfaceWithMethod(call.member());
    if (meant)
        return meant->answer(call);
    const QString what = isNamed
        ? QStringLiteral("%1 has no interface '%2'; %3").arg(m_path, call.interface())
        : QStringLiteral("%1 has no method '%2' in any interface; %3").arg(m_path, call.member());
    return call.createErrorReply(isNamed ? QDBusError::UnknownInterface : QDBusError::UnknownMethod,
        what.arg(BusReply::thereIs(interfaceNames())));
}
