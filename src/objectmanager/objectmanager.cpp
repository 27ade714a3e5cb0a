// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "objectmanager/objectmanager.h"

#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusPendingCallWatcher>
#include <QtDBus/QDBusPendingReply>

// The bus layer knows an answer by its serial alone, and an ordinary bus delivers one from anybody. A unique name
// answers under that name; the owner of another name answers under its unique one, which is not known here.
static bool isFrom(const QString &service, const QDBusMessage &reply)
{
    return !service.startsWith(QLatin1Char(':')) || reply.service() == service;
}

ObjectManager::ObjectManager(
    const QString &service, const QDBusObjectPath &path, const QDBusConnection &connection, QObject *parent)
    : QObject(parent),
      proxy(service, DBusObject(service, path).proxyPath(), connection, nullptr),
      path(path)
{
    // Before the request goes out, so that no change falls between it and the subscription.
    connect(&proxy, &DBusObjectManagerProxy::InterfacesAdded, this, &ObjectManager::onInterfacesAdded);
    connect(&proxy, &DBusObjectManagerProxy::InterfacesRemoved, this, &ObjectManager::onInterfacesRemoved);

    auto *watcher = new QDBusPendingCallWatcher(proxy.GetManagedObjects(), this);
    connect(
        watcher, &QDBusPendingCallWatcher::finished, watcher,
        [this](QDBusPendingCallWatcher *finished) {
            const QDBusPendingReply<DBusObjectList> reply = *finished;
            if (!reply.isError() && isFrom(proxy.service(), reply.reply())) {
                const DBusObjectList snapshot = reply.value();
                const QList<QDBusObjectPath> paths = snapshot.keys();
                for (const QDBusObjectPath &object : paths)
                    onInterfacesAdded(object, snapshot.value(object));
            }
            finished->deleteLater();
        },
        Qt::DirectConnection);
}

ObjectManager::~ObjectManager() = default;

void ObjectManager::removeAll()
{
    const DBusObjectList mirrored = objects;
    for (auto object = mirrored.cbegin(); object != mirrored.cend(); ++object)
        emit interfacesRemoved(proxy.service(), object.key(), object->keys());
    objects.clear();
}

void ObjectManager::onInterfacesAdded(const QDBusObjectPath &object, const QVariantMapMap &interfaces)
{
    QVariantMapMap &known = objects[object];
    QMultiMap<QString, QVariantMap> merged;
    known.swap(merged);
    for (auto interface = interfaces.cbegin(); interface != interfaces.cend(); ++interface)
        merged.insert(interface.key(), QVariantMap());
    known.swap(merged);

    emit interfacesAdded(proxy.service(), object, interfaces);
}

void ObjectManager::onInterfacesRemoved(const QDBusObjectPath &object, const QStringList &interfaces)
{
    if (objects.contains(object)) {
        for (const QString &interface : interfaces) {
            // Anew for every name: the object may have left with the one before.
            QVariantMapMap &known = objects[object];
            known.remove(interface);
            if (known.isEmpty())
                objects.remove(object);
        }
    }

    emit interfacesRemoved(proxy.service(), object, interfaces);
}
