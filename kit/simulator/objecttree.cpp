// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "objecttree.h"

#include "callstatus.h"
#include "introspection.h"
#include "propertiesinterface.h"

#include <QtDBus/QDBusError>

static const QString objectManagerInterface = QStringLiteral("org.freedesktop.DBus.ObjectManager");

ObjectTree::ObjectTree(CallManager &manager, const QDBusConnection &connection, EventLog &events, QObject *parent)
    : QDBusVirtualObject(parent),
      m_manager(manager),
      m_connection(connection),
      m_events(events)
{
    connect(&manager, &CallManager::published, this, &ObjectTree::onPublished);
    connect(&manager, &CallManager::withdrawn, this, &ObjectTree::onWithdrawn);
}

ObjectTree::~ObjectTree() { m_connection.unregisterObject(m_manager.path(), QDBusConnection::UnregisterTree); }

void ObjectTree::putOnBus()
{
    m_connection.registerVirtualObject(m_manager.path(), this, QDBusConnection::SubPath);
    m_onBus = true;
}

void ObjectTree::onPublished(Call *call)
{
    const QString path = m_manager.pathOf(*call);
    auto *object = new CallObject(*call, path, m_connection, m_events, this);
    m_objects.insert(path, object);
    m_events.add(QStringLiteral("%1 announced %2").arg(call->name(), CallStatus::text(call->status())));
    sendSignal(QStringLiteral("InterfacesAdded"),
        {QVariant::fromValue(QDBusObjectPath(path)), QVariant::fromValue(object->interfaces())});
}

// Deleted later, for the object may be in the middle of handling what ended the call.
void ObjectTree::onWithdrawn(Call *call)
{
    const QString path = m_manager.pathOf(*call);
    CallObject *object = m_objects.take(path);
    m_events.add(call->name() + QStringLiteral(" removed"));
    sendSignal(QStringLiteral("InterfacesRemoved"),
        {QVariant::fromValue(QDBusObjectPath(path)), QStringList(object->interfaces().keys())});
    object->deleteLater();
}

void ObjectTree::sendSignal(const QString &member, const QVariantList &arguments)
{
    if (!m_onBus)
        return;
    QDBusMessage signal = QDBusMessage::createSignal(m_manager.path(), objectManagerInterface, member);
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
    if (message.path() == m_manager.path())
        return answerAsManager(message);
    if (CallObject *object = find(message.path()))
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
    return message.createReply(QVariant::fromValue(managedObjects()));
}

// A host may still send commands to a call that has just gone; they are worth seeing.
QDBusMessage ObjectTree::answerForMissing(const QDBusMessage &message)
{
    if (message.interface().startsWith(QLatin1String("zelkovar.Call.")))
        m_events.add(QStringLiteral("late %1 %2").arg(message.path(), message.member()));
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
    if (const CallObject *object = find(path))
        return describeObject(object->interfaces().keys(), {});
    if (path != m_manager.path())
        return {};
    QStringList children;
    for (const CallObject *object : m_objects)
        children.append(object->path().mid(path.size() + 1));
    return describeObject({objectManagerInterface}, children);
}
