// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "objecttree.h"

#include "introspection.h"
#include "logging.h"
#include "propertiesinterface.h"

#include <QtDBus/QDBusError>

namespace Ringlet {

static const QString objectManagerInterface = QStringLiteral("org.freedesktop.DBus.ObjectManager");

ObjectTree::ObjectTree(const QString &path, const QDBusConnection &connection, QObject *parent)
    : QDBusVirtualObject(parent),
      m_path(path),
      m_connection(connection)
{
}

ObjectTree::~ObjectTree() { m_connection.unregisterObject(m_path, QDBusConnection::UnregisterTree); }

bool ObjectTree::putOnBus() { return m_connection.registerVirtualObject(m_path, this, QDBusConnection::SubPath); }

void ObjectTree::announce(CallObject *object)
{
    m_objects.insert(object->path(), object);
    sendSignal(QStringLiteral("InterfacesAdded"),
        {QVariant::fromValue(QDBusObjectPath(object->path())), QVariant::fromValue(object->interfaces())});
}

void ObjectTree::withdraw(CallObject *object)
{
    m_objects.remove(object->path());
    sendSignal(QStringLiteral("InterfacesRemoved"),
        {QVariant::fromValue(QDBusObjectPath(object->path())), QStringList(object->interfaces().keys())});
}

void ObjectTree::sendSignal(const QString &member, const QVariantList &arguments)
{
    qCDebug(client).noquote() << m_path << "sends" << member
                              << qvariant_cast<QDBusObjectPath>(arguments.constFirst()).path();
    QDBusMessage signal = QDBusMessage::createSignal(m_path, objectManagerInterface, member);
    signal.setArguments(arguments);
    m_connection.send(signal);
}

bool ObjectTree::handleMessage(const QDBusMessage &message, const QDBusConnection &)
{
    // Left to the bus library, which answers it with introspect().
    if (message.interface() == QLatin1String("org.freedesktop.DBus.Introspectable"))
        return false;
    const QDBusMessage reply = answer(message);
    if (message.isReplyRequired())
        m_connection.send(reply);
    return true;
}

QDBusMessage ObjectTree::answer(const QDBusMessage &message)
{
    if (message.path() == m_path)
        return answerAsManager(message);
    if (CallObject *object = m_objects.value(message.path()))
        return object->handle(message);
    return answerForMissing(message);
}

QDBusMessage ObjectTree::answerAsManager(const QDBusMessage &message) const
{
    if (message.interface() == QLatin1String("org.freedesktop.DBus.Properties"))
        return answerPropertiesCall(message, {{objectManagerInterface, {}}});
    const bool forUs = message.interface().isEmpty() || message.interface() == objectManagerInterface;
    if (!forUs || message.member() != QLatin1String("GetManagedObjects"))
        return message.createErrorReply(QDBusError::UnknownMethod,
            QStringLiteral("%1 has no method %2.%3").arg(message.path(), message.interface(), message.member()));
    if (!message.signature().isEmpty())
        return message.createErrorReply(
            QDBusError::InvalidArgs, QStringLiteral("GetManagedObjects takes no arguments"));
    qCDebug(client).noquote() << m_path << "received GetManagedObjects, answers" << m_objects.keys();
    return message.createReply(QVariant::fromValue(managedObjects()));
}

// A host may still send commands to a call that has just gone.
QDBusMessage ObjectTree::answerForMissing(const QDBusMessage &message)
{
    if (message.interface().startsWith(QLatin1String("zelkovar.Call.")))
        emit lateCommand(message.path(), message.member());
    return message.createErrorReply(
        QDBusError::UnknownObject, QStringLiteral("there is no call at %1").arg(message.path()));
}

ObjectMap ObjectTree::managedObjects() const
{
    ObjectMap objects;
    for (const CallObject *object : m_objects)
        objects.insert(QDBusObjectPath(object->path()), object->interfaces());
    return objects;
}

QString ObjectTree::introspect(const QString &path) const
{
    if (const CallObject *object = m_objects.value(path))
        return describeObject(object->interfaces().keys(), {});
    if (path != m_path)
        return {};
    QStringList children;
    for (const CallObject *object : m_objects)
        children.append(object->path().mid(object->path().lastIndexOf(QLatin1Char('/')) + 1));
    return describeObject({objectManagerInterface}, children);
}

} // namespace Ringlet
