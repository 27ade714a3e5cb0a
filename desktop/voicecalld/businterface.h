// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALLD_BUSINTERFACE_H
#define VOICECALLD_BUSINTERFACE_H

#include "interfacedescription.h"

#include <QtCore/QObject>
#include <QtCore/QVariantMap>
#include <QtDBus/QDBusMessage>

/**
 * One interface on one bus object. What its members are is read from the interface's description, the
 * XML file of its name; a subclass gives them their meaning.
 */
class BusInterface : public QObject
{
    Q_OBJECT

public:
    const QString &name() const { return m_name; }

    /** The description, an XML element, as introspection shows it. */
    const QString &xml() const { return m_description.xml; }

    bool hasMethod(const QString &method) const { return m_description.methods.contains(method); }
    bool hasProperty(const QString &property) const { return m_description.properties.contains(property); }

    /** What arguments `method` takes. */
    QString signature(const QString &method) const { return m_description.methods.value(method); }

    /**
     * Answers a call of one of the methods; its arguments have been compared with the signature. The call
     * may be what ends this object's stay on the bus; it lives until the answer is given.
     */
    virtual QDBusMessage call(const QDBusMessage &message) = 0;

    /** The values of all properties, of the described types. None can be written. */
    virtual QVariantMap properties() const { return {}; }

Q_SIGNALS:
    void propertiesChanged(const QVariantMap &changed);

protected:
    explicit BusInterface(const QString &name);

private:
    QString m_name;
    const InterfaceDescription &m_description;
};

#endif
