// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BUSSERVER_INTERFACEDESCRIPTION_H
#define BUSSERVER_INTERFACEDESCRIPTION_H

#include <QtCore/QMap>
#include <QtCore/QStringList>

/** What the file of a bus interface in dbus/ says of it. */
struct InterfaceDescription
{
    /** How a change of a property is told: with the new value, by its name alone, or not at all. */
    enum class Change { Value, Name, Nothing };

    /** The element as introspection shows it. */
    QString xml;
    /** The types of the arguments that each method takes. */
    QMap<QString, QStringList> methods;
    QMap<QString, Change> properties;

    /** Read once; ends the program when there is no such file. */
    static const InterfaceDescription &of(const QString &interface);
};

#endif
