// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "interfacedescription.h"

#include "interfacetexts.h"

#include <QtCore/QXmlStreamReader>
#include <QtCore/QXmlStreamWriter>
#include <map>

using Change = InterfaceDescription::Change;

namespace {

/** Reads one file, element by element, in the order in which they stand. */
class DescriptionReader
{
public:
    explicit DescriptionReader(const QByteArray &text) : m_reader(text), m_writer(&m_description.xml) { }

    InterfaceDescription read();

private:
    void takeMethod();
    void takeArgument();
    void takeProperty();
    void takeAnnotation();
    void take();
    QString attribute(const char *name) const { return m_reader.attributes().value(QLatin1String(name)).toString(); }

    QXmlStreamReader m_reader;
    InterfaceDescription m_description;
    QXmlStreamWriter m_writer;
    QString m_method;
    /** Empty while the annotations are those of the whole interface. */
    QString m_property;
    Change m_change = Change::Value;
};

void DescriptionReader::takeMethod() { m_description.methods.insert(m_method = attribute("name"), {}); }

void DescriptionReader::takeArgument()
{
    if (attribute("direction") == QLatin1String("in"))
        m_description.methods[m_method].append(attribute("type"));
}

void DescriptionReader::takeProperty() { m_description.properties.insert(m_property = attribute("name"), m_change); }

void DescriptionReader::takeAnnotation()
{
    static const QMap<QString, Change> changes
        = {{QStringLiteral("true"), Change::Value}, {QStringLiteral("invalidates"), Change::Name},
            {QStringLiteral("const"), Change::Nothing}, {QStringLiteral("false"), Change::Nothing}};
    if (attribute("name") != QLatin1String("org.freedesktop.DBus.Property.EmitsChangedSignal"))
        return;
    Change &change = m_property.isEmpty() ? m_change : m_description.properties[m_property];
    change = changes.value(attribute("value"), change);
}

void DescriptionReader::take()
{
    static const QMap<QString, void (DescriptionReader::*)()> elements
        = {{QStringLiteral("method"), &DescriptionReader::takeMethod},
            {QStringLiteral("arg"), &DescriptionReader::takeArgument},
            {QStringLiteral("property"), &DescriptionReader::takeProperty},
            {QStringLiteral("annotation"), &DescriptionReader::takeAnnotation}};
    if (const auto takeElement = elements.value(m_reader.name().toString()))
        (this->*takeElement)();
}

// The interface stands in the node, and alone there. Comments and blanks are not copied.
InterfaceDescription DescriptionReader::read()
{
    m_writer.setAutoFormatting(true);
    m_writer.setAutoFormattingIndent(2);
    m_reader.readNextStartElement();
    while (!m_reader.atEnd()) {
        m_reader.readNext();
        if (m_reader.isStartElement())
            take();
        if (m_reader.isStartElement() || (m_reader.isEndElement() && m_reader.name() != QLatin1String("node")))
            m_writer.writeCurrentToken(m_reader);
    }
    return m_description;
}

} // namespace

static InterfaceDescription read(const QString &interface)
{
    const QByteArray text = InterfaceTexts::of(interface);
    if (text.isEmpty())
        qFatal("There is no description of the interface %s", qUtf8Printable(interface));
    return DescriptionReader(text).read();
}

const InterfaceDescription &InterfaceDescription::of(const QString &interface)
{
    // Its entries stay where they are when others come.
    static std::map<QString, InterfaceDescription> known;
    const auto found = known.find(interface);
    return found != known.end() ? found->second : known.emplace(interface, read(interface)).first->second;
}
