// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALLD_PROPERTIESINTERFACE_H
#define VOICECALLD_PROPERTIESINTERFACE_H

#include "businterface.h"

class BusObject;

/** org.freedesktop.DBus.Properties: the properties of all interfaces of an object. */
class PropertiesInterface : public BusInterface
{
    Q_OBJECT

public:
    explicit PropertiesInterface(const BusObject *object);

    QDBusMessage call(const QDBusMessage &message) override;

private:
    QDBusMessage getAll(const QDBusMessage &message, const QString &interface) const;
    QDBusMessage get(const QDBusMessage &message, const QString &interface, const QString &property) const;
    QDBusMessage set(const QDBusMessage &message, const QString &property) const;

    const BusObject *m_object;
};

#endif
