// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BUSSERVER_PROPERTIESINTERFACE_H
#define BUSSERVER_PROPERTIESINTERFACE_H

#include "businterface.h"

class BusObject;

/** org.freedesktop.DBus.Properties: the properties of all interfaces of an object. */
class PropertiesInterface : public BusInterface
{
    Q_OBJECT

public:
    explicit PropertiesInterface(const BusObject *object);

private:
    using Answer = QDBusMessage (PropertiesInterface::*)(const QDBusMessage &call) const;

    QDBusMessage answerIfKnown(const QDBusMessage &call, Answer answer) const;
    QDBusMessage get(const QDBusMessage &call) const;
    QDBusMessage set(const QDBusMessage &call) const;
    QDBusMessage getAll(const QDBusMessage &call) const;

    /** Of the interface, or of all when the name is empty. */
    QVariantMap propertiesOf(const QString &interface) const;
    QDBusMessage unknownProperty(const QDBusMessage &call) const;

    const BusObject *m_object;
};

#endif
