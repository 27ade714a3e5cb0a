// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BUSSERVER_BUSOBJECT_H
#define BUSSERVER_BUSOBJECT_H

#include "bustypes.h"

#include <QtDBus/QDBusMessage>
#include <memory>
#include <vector>

class BusInterface;

/** One object on the bus: a path, and the interfaces there. Every object has the standard ones. */
class BusObject
{
public:
    using Interfaces = std::vector<std::unique_ptr<BusInterface>>;

    explicit BusObject(const QString &path);
    ~BusObject();

    const QString &path() const { return m_path; }

    void add(std::unique_ptr<BusInterface> interface);

    const Interfaces &interfaces() const { return m_interfaces; }

    /** Null when there is none of this name. */
    BusInterface *interface(const QString &name) const;

    QStringList interfaceNames() const;

    /** What an object manager tells of it: the interfaces that are not the standard ones, with their properties. */
    BusInterfaceMap ownInterfaces() const;
    QStringList ownInterfaceNames() const;

    /** Passes the call to the interface that it is for, or says what there is instead. */
    QDBusMessage answer(const QDBusMessage &call) const;

private:
    BusInterface *interfaceWithMethod(const QString &method) const;

    QString m_path;
    Interfaces m_interfaces;
};

#endif
