// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALLD_INTERFACEDESCRIPTION_H
#define VOICECALLD_INTERFACEDESCRIPTION_H

#include <QtCore/QHash>
#include <QtCore/QStringList>

/** What the XML file of a bus interface says of it. The files are compiled in. */
struct InterfaceDescription
{
    /** The element as introspection shows it. */
    QString xml;
    /** Signature of the arguments that each method takes. */
    QHash<QString, QString> methods;
    QStringList properties;

    /** Read once; ends the program when there is no such file. */
    static const InterfaceDescription &of(const QString &interface);
};

#endif
