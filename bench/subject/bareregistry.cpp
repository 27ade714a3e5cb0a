// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "bareregistry.h"

#include "callserviceadaptor.h"
#include "callservicemanageradaptor.h"

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusConnectionInterface>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusPendingCallWatcher>
#include <algorithm>

BareManager::BareManager(const QString &service, const QString &path)
    : m_proxy(service, path, QDBusConnection::sessionBus(), nullptr)
{
    connect(&m_proxy, &DBusObjectManagerProxy::InterfacesAdded, this, &BareManager::addCall);
    connect(&m_proxy, &DBusObjectManagerProxy::InterfacesRemoved, this, &BareManager::removeCall);
    auto *watcher = new QDBusPendingCallWatcher(m_proxy.GetManagedObjects(), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher *finished) {
        const QDBusPendingReply<DBusObjectList> reply = *finished;
        const DBusObjectList snapshot = reply.value();
        for (auto object = snapshot.cbegin(); object != snapshot.cend(); ++object)
            addCall(object.key(), *object);
        finished->deleteLater();
    });
}

BareManager::~BareManager()
{
    for (BareCall *call : qAsConst(m_calls)) {
        emit callRemoved(call);
        delete call;
    }
}

void BareManager::addCall(const QDBusObjectPath &object, const QVariantMapMap &interfaces)
{
    auto *call = new BareCall(m_proxy.service(), object.path(), interfaces);
    m_calls.insert(object, call);
    emit callAdded(call);
}

void BareManager::removeCall(const QDBusObjectPath &object)
{
    BareCall *call = m_calls.take(object);
    emit callRemoved(call);
    delete call;
}

BareRegistry::BareRegistry(bool hasAdaptors) : m_hasAdaptors(hasAdaptors)
{
    if (hasAdaptors) {
        new CallServiceAdaptor(this);
        new CallServiceManagerAdaptor(this);
    }
}

bool BareRegistry::exportObject()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    return bus.registerObject(QStringLiteral("/zelkovar/call/service"), this,
               m_hasAdaptors ? QDBusConnection::ExportAdaptors : QDBusConnection::ExportAllSlots)
        && bus.connect(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("NameOwnerChanged"), this,
            SLOT(onNameOwnerChanged(QString, QString, QString)));
}

void BareRegistry::RegisterCallManager(const QDBusObjectPath &path)
{
    const QString service = message().service();
    connection().interface()->servicePid(service);
    auto *manager = new BareManager(service, path.path());
    m_managers.append(manager);
    emit managerAdded(manager);
}

void BareRegistry::onNameOwnerChanged(const QString &name, const QString &, const QString &)
{
    const auto kept = std::stable_partition(
        m_managers.begin(), m_managers.end(), [&](const BareManager *manager) { return manager->service() != name; });
    std::for_each(kept, m_managers.end(), [](BareManager *manager) { delete manager; });
    m_managers.erase(kept, m_managers.end());
}
