// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "service/callservice.h"

#include "common/trace.h"

#include <QtCore/QDebug>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusConnectionInterface>
#include <algorithm>

CallService::CallService(QObject *parent)
    : QObject(parent),
      serviceAdaptor(this),
      managerAdaptor(this),
      busDaemon(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
          QStringLiteral("org.freedesktop.DBus"), QDBusConnection::sessionBus())
{
    // Without a filter on the name: one match rule serves however many applications register.
    connect(&busDaemon, SIGNAL(NameOwnerChanged(QString, QString, QString)), this,
        SLOT(onNameOwnerChanged(QString, QString, QString)));
}

CallService::~CallService() = default;

void CallService::RegisterCallManager(const QDBusObjectPath &objectPath)
{
    const QString service = message().service();
    const DBusCallManager callManager(service, objectPath);
    const pid_t pid = pid_t(connection().interface()->servicePid(service).value());
    if (callManagers.contains(callManager))
        return;

    if (defaultLog().isInfoEnabled())
        qInfo() << "RegisterCallManager " << callManager.toString() << "pid" << pid;
    callManagers.insert(callManager);
    emit callManagerAdded(callManager, pid);
}

DBusCallManagerList CallService::ListCallManagers() { return callManagers.values(); }

// Nearly every change is of a name that nobody registered under, and is compared with all of them. Unique names of
// one bus differ at their ends; from there, nearly all are told apart by one character.
static bool isName(const QString &service, const QString &name)
{
    return service.size() == name.size() && std::equal(service.crbegin(), service.crend(), name.crbegin());
}

void CallService::onNameOwnerChanged(const QString &name, const QString &oldOwner, const QString &newOwner)
{
    // Who owns the name now does not matter: a unique name changes hands only when its owner leaves.
    Q_UNUSED(oldOwner)
    Q_UNUSED(newOwner)

    for (auto callManager = callManagers.begin(); callManager != callManagers.end();) {
        if (isName(callManager->service, name)) {
            emit callManagerRemoved(*callManager);
            callManager = callManagers.erase(callManager);
        } else {
            ++callManager;
        }
    }
}
