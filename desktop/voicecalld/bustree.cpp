// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "bustree.h"

#include "businterface.h"
#include "introspectableinterface.h"
#include "objectmanagerinterface.h"

#include <QtCore/QSet>
#include <QtDBus/QDBusError>
#include <QtDBus/QDBusMetaType>

static const QString propertiesName = QStringLiteral("org.freedesktop.DBus.Properties");
static const QString objectManagerName = QStringLiteral("org.freedesktop.DBus.ObjectManager");

BusTree::BusTree(const QDBusConnection &connection, const QString &rootPath)
    : m_connection(connection),
      m_root(makeObject(rootPath))
{
    qDBusRegisterMetaType<HostInterfaceMap>();
    qDBusRegisterMetaType<HostObjectMap>();
    m_root->add(std::make_unique<ObjectManagerInterface>(this));
    m_published = m_connection.registerVirtualObject(rootPath, this, QDBusConnection::SubPath);
}

BusTree::~BusTree() { m_connection.unregisterObject(m_root->path(), QDBusConnection::UnregisterTree); }

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
    const QString name = interface->name();
    connect(interface.get(), &BusInterface::propertiesChanged, this, [=](const QVariantMap &changed) {
        QDBusMessage signal = QDBusMessage::createSignal(path, propertiesName, QStringLiteral("PropertiesChanged"));
        signal << name << changed << QStringList();
        m_connection.send(signal);
    });
    object->add(std::move(interface));
}

// What an object manager tells of an object: the interfaces that are its own.
static HostInterfaceMap ownInterfaces(const BusObject &object)
{
    HostInterfaceMap own;
    for (const auto &interface : object.interfaces()) {
        if (!interface->name().startsWith(QLatin1String("org.freedesktop.")))
            own.insert(interface->name(), interface->properties());
    }
    return own;
}

void BusTree::addObject(const QString &path, std::unique_ptr<BusInterface> interface)
{
    const std::shared_ptr<BusObject> object = makeObject(path);
    addInterface(object.get(), std::move(interface));
    m_objects.insert(path, object);
    sendFromRoot(QStringLiteral("InterfacesAdded"),
        {QVariant::fromValue(QDBusObjectPath(path)), QVariant::fromValue(ownInterfaces(*object))});
}

void BusTree::removeObject(const QString &path)
{
    const std::shared_ptr<BusObject> object = m_objects.take(path);
    if (!object)
        return;
    sendFromRoot(QStringLiteral("InterfacesRemoved"),
        {QVariant::fromValue(QDBusObjectPath(path)), QStringList(ownInterfaces(*object).keys())});
}

void BusTree::sendFromRoot(const QString &member, const QVariantList &arguments)
{
    QDBusMessage signal = QDBusMessage::createSignal(m_root->path(), objectManagerName, member);
    signal.setArguments(arguments);
    m_connection.send(signal);
}

HostObjectMap BusTree::managedObjects() const
{
    HostObjectMap objects;
    for (const auto &object : m_objects)
        objects.insert(QDBusObjectPath(object->path()), ownInterfaces(*object));
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
    const QString prefix = path + QLatin1Char('/');
    QSet<QString> children;
    for (const auto &object : m_objects) {
        if (object->path().startsWith(prefix))
            children.insert(object->path().mid(prefix.size()).section(QLatin1Char('/'), 0, 0));
    }
    return children.values();
}

QString BusTree::introspect(const QString &path) const
{
    QString xml;
    if (const std::shared_ptr<BusObject> object = find(path)) {
        for (const auto &interface : object->interfaces())
            xml += interface->xml();
    }
    QStringList children = childrenOf(path);
    children.sort();
    for (const QString &child : qAsConst(children))
        xml += QStringLiteral("  <node name=\"%1\"/>\n").arg(child);
    return xml;
}

bool BusTree::handleMessage(const QDBusMessage &message, const QDBusConnection &connection)
{
    const QDBusMessage reply = answer(message);
    if (message.isReplyRequired())
        connection.send(reply);
    return true;
}

QDBusMessage BusTree::answer(const QDBusMessage &message) const
{
    // Held here, for the call may end the object.
    const std::shared_ptr<BusObject> object = find(message.path());
    if (!object) {
        return message.createErrorReply(
            QDBusError::UnknownObject, QStringLiteral("There is no object %1").arg(message.path()));
    }
    const QString name = message.interface();
    const QString method = message.member();
    BusInterface *interface = name.isEmpty() ? object->interfaceWithMethod(method) : object->interface(name);
    if (!interface && !name.isEmpty()) {
        return message.createErrorReply(
            QDBusError::UnknownInterface, QStringLiteral("%1 has no interface '%2'").arg(message.path(), name));
    }
    if (!interface || !interface->hasMethod(method)) {
        return message.createErrorReply(
            QDBusError::UnknownMethod, QStringLiteral("%1 has no method '%2'").arg(message.path(), method));
    }
    if (interface->signature(method) != message.signature()) {
        return message.createErrorReply(QDBusError::InvalidArgs,
            QStringLiteral("%1 takes '%2', not '%3'").arg(method, interface->signature(method), message.signature()));
    }
    return interface->call(message);
}
