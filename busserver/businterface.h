// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BUSSERVER_BUSINTERFACE_H
#define BUSSERVER_BUSINTERFACE_H

#include "interfacedescription.h"

#include <QtCore/QHash>
#include <QtCore/QObject>
#include <QtCore/QVariantMap>
#include <QtDBus/QDBusMessage>
#include <functional>

/**
 * One interface on one bus object. What its members are is read from the interface's file in dbus/; their meaning
 * comes with the functions, and properties from a subclass.
 */
class BusInterface : public QObject
{
    Q_OBJECT

public:
    /**
     * Answers a call whose arguments are of the described types. The call may be what ends this object's stay on
     * the bus; it lives until the answer is given. An invalid message means that BusReply::send() is called later.
     */
    using Method = std::function<QDBusMessage(const QDBusMessage &call)>;
    using Methods = QHash<QString, Method>;

    /** `methods` has a function for each described method; otherwise the program ends here. */
    explicit BusInterface(const QString &name, const Methods &methods = {});

    const QString &name() const { return m_name; }
    const InterfaceDescription &description() const { return m_description; }

    /** Calls one of the described methods, or says what is wrong with the call. */
    QDBusMessage answer(const QDBusMessage &call) const;

    /** The values of all properties, of the described types. None can be written. */
    virtual QVariantMap properties() const { return {}; }

Q_SIGNALS:
    /** To be told as the description says: with the value, by name, or not at all. */
    void propertiesChanged(const QVariantMap &changed);

    /** The signal `member` is to be sent. */
    void raised(const QString &member, const QVariantList &arguments);

protected:
    /** Why this caller may not call the method; empty if it may, as all may here. */
    virtual QString refusal(const QDBusMessage &call) const;

    /** Whether the method takes arguments of these types: the described ones, and no others, here. */
    virtual bool takes(const QString &method, const QStringList &types) const;

private:
    QString m_name;
    const InterfaceDescription &m_description;
    Methods m_methods;
};

#endif
