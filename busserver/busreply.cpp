// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "busreply.h"

#include <QtDBus/QDBusError>

void BusReply::send(const QDBusConnection &connection, const QDBusMessage &call, const QDBusMessage &answer)
{
    if (!call.isReplyRequired() || connection.send(answer))
        return;
    connection.send(call.createErrorReply(
        QDBusError::Failed, QStringLiteral("The answer to %1 holds a value that cannot be sent").arg(call.member())));
}

QString BusReply::thereIs(const QStringList &names)
{
    return names.isEmpty() ? QStringLiteral("there is none")
                           : QStringLiteral("there are: ") + names.join(QLatin1String(", "));
}
