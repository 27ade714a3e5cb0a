// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "busobject.h"

#include "businterface.h"
#include "propertiesinterface.h"

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

BusInterface *BusObject::interfaceWithMethod(const QString &method) const
{
    return firstOf(m_interfaces, [&](const auto &interface) { return interface->hasMethod(method); });
}
