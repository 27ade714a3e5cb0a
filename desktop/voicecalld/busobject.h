// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALLD_BUSOBJECT_H
#define VOICECALLD_BUSOBJECT_H

#include <QtCore/QString>
#include <QtCore/QVector>
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

    /** The interface that a call without an interface name means; null when none has the method. */
    BusInterface *interfaceWithMethod(const QString &method) const;

private:
    QString m_path;
    Interfaces m_interfaces;
};

#endif
