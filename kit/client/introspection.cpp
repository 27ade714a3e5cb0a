// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "introspection.h"

#include <QtCore/QFile>

namespace Ringlet {

static QString interfaceElement(const QString &interface)
{
    QFile file(QStringLiteral(":/ringletclient/%1.xml").arg(interface));
    file.open(QIODevice::ReadOnly);
    const QString text = QString::fromUtf8(file.readAll());
    const QString end = QStringLiteral("</interface>\n");
    const int from = text.indexOf(QLatin1String("<interface"));
    return text.mid(from, text.indexOf(end) + end.size() - from);
}

QString describeObject(const QStringList &interfaces, const QStringList &children)
{
    QString description;
    for (const QString &interface : interfaces)
        description += interfaceElement(interface);
    for (const QString &child : children)
        description += QStringLiteral("<node name=\"%1\"/>\n").arg(child);
    return description;
}

} // namespace Ringlet
