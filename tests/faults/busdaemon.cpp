// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "busdaemon.h"

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusConnectionInterface>
#include <QtDBus/QDBusReply>

qint64 BusDaemon::processId()
{
    return QDBusConnection::sessionBus().interface()->servicePid(QStringLiteral("org.freedesktop.DBus")).value();
}
