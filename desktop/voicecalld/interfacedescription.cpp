// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "interfacedescription.h"

#include <QtCore/QFile>
#include <QtCore/QXmlStreamReader>
#include <map>

static QString interfaceElement(const QString &interface)
{
    QFile file(QStringLiteral(":/dbus/%1.xml").arg(interface));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("The description of the interface %s is not compiled in", qUtf8Printable(interface));
    const QString text = QString::fromUtf8(file.readAll());
    const QString end = QStringLiteral("</interface>\n");
    const int from = text.indexOf(QLatin1String("  <interface "));
    return text.mid(from, text.indexOf(end, from) + end.size() - from);
}

static InterfaceDescription read(const QString &interface)
{
    InterfaceDescription description;
    description.xml = interfaceElement(interface);
    QXmlStreamReader reader(description.xml);
    QString method;
    while (!reader.atEnd()) {
        if (reader.readNext() != QXmlStreamReader::StartElement)
            continue;
        const QXmlStreamAttributes attributes = reader.attributes();
        const QString name = attributes.value(QLatin1String("name")).toString();
        if (reader.name() == QLatin1String("method"))
            description.methods.insert(method = name, QString());
        else if (reader.name() == QLatin1String("property"))
            description.properties.append(name);
        else if (attributes.value(QLatin1String("direction")) == QLatin1String("in"))
            description.methods[method] += attributes.value(QLatin1String("type"));
    }
    return description;
}

const InterfaceDescription &InterfaceDescription::of(const QString &interface)
{
    // Its entries stay where they are when others come.
    static std::map<QString, InterfaceDescription> known;
    const auto found = known.find(interface);
    return found != known.end() ? found->second : known.emplace(interface, read(interface)).first->second;
}
