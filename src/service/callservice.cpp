// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "service/callservice.h"

#include "common/trace.h"

#include <QtCore/QDebug>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusConnectionInterface>

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
// one bus differ at their ends, which tells most of them apart without a call into the library.
static bool isName(const QString &service, const QString &name)
{
    const int size = name.size();
    return service.size() == size && (size == 0 || service.at(size - 1) == name.at(size - 1)) && service == name;
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
