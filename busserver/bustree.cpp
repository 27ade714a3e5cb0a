// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "bustree.h"

#include "businterface.h"
#include "busreply.h"
#include "introspectableinterface.h"
#include "objectmanagerinterface.h"

#include <QtCore/QSet>
#include <QtDBus/QDBusError>

static const QString propertiesName = QStringLiteral("org.freedesktop.DBus.Properties");
static const QString objectManagerName = QStringLiteral("org.freedesktop.DBus.ObjectManager");

BusTree::BusTree(const QDBusConnection &connection, const QString &rootPath)
    : m_connection(connection),
      m_root(makeObject(rootPath))
{
    registerBusTypes();
    m_root->add(std::make_unique<ObjectManagerInterface>(this));
}

BusTree::~BusTree()
{
    if (m_isPublished)
        m_connection.unregisterObject(m_root->path(), QDBusConnection::UnregisterTree);
}

bool BusTree::publish()
{
    m_isPublished = m_connection.registerVirtualObject(m_root->path(), this, QDBusConnection::SubPath);
    return m_isPublished;
}

std::shared_ptr<BusObject> BusTree::makeObject(const QString &path) const
{
    auto object = std::make_shared<BusObject>(path);
    object->add(std::make_unique<IntrospectableInterface>(this));
    return object;
}

void BusTree::addToRoot(std::unique_ptr<BusInterface> interface) { addInterface(m_root.get(), std::move(interface)); }

void BusTree::addInterface(BusObject *object, std::unique_ptr<BusInterface> interface)
{
    const QString path = object->path();
    BusInterface *added = interface.get();
    connect(added, &BusInterface::propertiesChanged, this,
        [this, path, added](const QVariantMap &changed) { tellChange(path, *added, changed); });
    connect(
        added, &BusInterface::raised, this, [this, path, added](const QString &member, const QVariantList &arguments) {
            send(path, added->name(), member, arguments);
        });
    object->add(std::move(interface));
}

// Values that cannot be sent are told by name, lest the change be missed.
void BusTree::tellChange(const QString &path, const BusInterface &interface, const QVariantMap &changed)
{
    using Change = InterfaceDescription::Change;
    QVariantMap values;
    QStringList names;
    for (auto property = changed.cbegin(); property != changed.cend(); ++property) {
        const Change change = interface.description().properties.value(property.key(), Change::Nothing);
        if (change == Change::Value)
            values.insert(property.key(), property.value());
        if (change == Change::Name)
            names.append(property.key());
    }
    if (values.isEmpty() && names.isEmpty())
        return;
    const QString member = QStringLiteral("PropertiesChanged");
    if (!send(path, propertiesName, member, {interface.name(), values, names}))
        send(path, propertiesName, member, {interface.name(), QVariantMap(), names + values.keys()});
}

void BusTree::addObject(const QString &path, BusObject::Interfaces interfaces)
{
    const std::shared_ptr<BusObject> object = makeObject(path);
    for (auto &interface : interfaces)
        addInterface(object.get(), std::move(interface));
    m_objects.insert(path, object);
    sendFromRoot(QStringLiteral("InterfacesAdded"),
        {QVariant::fromValue(QDBusObjectPath(path)), QVariant::fromValue(object->ownInterfaces())});
}

void BusTree::addObject(const QString &path, std::unique_ptr<BusInterface> interface)
{
    BusObject::Interfaces interfaces;
    interfaces.push_back(std::move(interface));
    addObject(path, std::move(interfaces));
}

void BusTree::removeObject(const QString &path)
{
    const std::shared_ptr<BusObject> object = m_objects.take(path);
    if (!object)
        return;
    sendFromRoot(
        QStringLiteral("InterfacesRemoved"), {QVariant::fromValue(QDBusObjectPath(path)), object->ownInterfaceNames()});
}

bool BusTree::send(const QString &path, const QString &interface, const QString &member, const QVariantList &arguments)
{
    QDBusMessage signal = QDBusMessage::createSignal(path, interface, member);
    signal.setArguments(arguments);
    return m_isPublished && m_connection.send(signal);
}

void BusTree::sendFromRoot(const QString &member, const QVariantList &arguments)
{
    send(m_root->path(), objectManagerName, member, arguments);
}

BusObjectMap BusTree::managedObjects() const
{
    BusObjectMap objects;
    for (const auto &object : m_objects)
        objects.insert(QDBusObjectPath(object->path()), object->ownInterfaces());
    return objects;
}

std::shared_ptr<BusObject> BusTree::find(const QString &path) const
{
    if (path == m_root->path())
        return m_root;
    const auto known = m_objects.constFind(path);
    if (known != m_objects.cend())
        return *known;
    // A node on the way to an object has the standard interfaces, like every other.
    return childrenOf(path).isEmpty() ? nullptr : makeObject(path);
}

QStringList BusTree::childrenOf(const QString &path) const
{
    const QString prefix = path.endsWith(QLatin1Char('/')) ? path : path + QLatin1Char('/');
    QSet<QString> children;
    for (const auto &object : m_objects) {
        if (object->path().startsWith(prefix))
            children.insert(object->path().mid(prefix.size()).section(QLatin1Char('/'), 0, 0));
    }
    QStringList sorted = children.values();
    sorted.sort();
    return sorted;
}

QString BusTree::introspect(const QString &path) const
{
    QString xml = InterfaceDescription::of(QStringLiteral("org.freedesktop.DBus.Peer")).xml;
    if (const std::shared_ptr<BusObject> object = find(path)) {
        for (const auto &interface : object->interfaces())
            xml += interface->description().xml;
    }
    const QStringList children = childrenOf(path);
    for (const QString &child : children)
        xml += QStringLiteral("\n<node name=\"%1\"/>").arg(child);
    return xml;
}

bool BusTree::handleMessage(const QDBusMessage &message, const QDBusConnection &)
{
    emit called(message);
    const QDBusMessage reply = answer(message);
    if (reply.type() != QDBusMessage::InvalidMessage)
        BusReply::send(m_connection, message, reply);
    return true;
}

QDBusMessage BusTree::answer(const QDBusMessage &call)
{
    // Held here, for the call may end the object.
    if (const std::shared_ptr<BusObject> object = find(call.path()))
        return object->answer(call);
    emit missed(call);
    return call.createErrorReply(QDBusError::UnknownObject,
        QStringLiteral("There is no object %1; GetManagedObjects at %2 tells what there is")
            .arg(call.path(), m_root->path()));
}
