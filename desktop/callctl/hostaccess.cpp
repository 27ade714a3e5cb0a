// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "hostaccess.h"

#include "failure.h"
#include "hostmonitor.h"

#include <QtCore/QEventLoop>
#include <QtCore/QHash>
#include <QtDBus/QDBusError>

static QString adviceWithoutBus()
{
    const QString address = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
    if (address.isEmpty()) {
        return QStringLiteral("DBUS_SESSION_BUS_ADDRESS is not set: run callctl inside the desktop session, or set it"
                              " to that session's address");
    }
    return QStringLiteral("DBUS_SESSION_BUS_ADDRESS is '%1', where no bus answers").arg(address);
}

QDBusConnection HostAccess::bus()
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        throw Failure(ExitCode::NoHost,
            QStringLiteral("no session bus: %1; %2").arg(bus.lastError().message(), adviceWithoutBus()));
    }
    return bus;
}

HostState HostAccess::state(std::chrono::milliseconds patience)
{
    HostMonitor monitor(bus(), patience);
    QEventLoop loop;
    QString failure;
    const auto fail = [&](const QString &reason) {
        failure = reason;
        loop.quit();
    };
    QObject::connect(&monitor, &HostMonitor::ready, &loop, &QEventLoop::quit);
    QObject::connect(&monitor, &HostMonitor::failed, &loop, fail);
    monitor.start();
    loop.exec();
    if (!failure.isEmpty())
        throw Failure(ExitCode::NoHost, failure);
    return monitor.state();
}

// The bus library's thread wakes the caller before it is done with an answer that is an error, and loses memory
// when the process ends just then. An answer after that one shows that it is done.
static void waitForTheBusLibrary()
{
    const QDBusMessage ping = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
        QStringLiteral("/"), QStringLiteral("org.freedesktop.DBus.Peer"), QStringLiteral("Ping"));
    QDBusConnection::sessionBus().call(ping, QDBus::Block, 1000);
}

static QString reasonOf(const QDBusError &error, const QString &refusal)
{
    // Other errors name what they are about themselves.
    if (refusal.isEmpty() || !error.name().endsWith(QLatin1String(".DialRefused")))
        return error.message();
    return QStringLiteral("%1: %2").arg(
        refusal, error.message().isEmpty() ? QStringLiteral("it gives no reason") : error.message());
}

void HostAccess::waitFor(QDBusPendingReply<> reply, const QString &refusal)
{
    static const QHash<QDBusError::ErrorType, ExitCode> codes = {
        {QDBusError::UnknownObject, ExitCode::NoSuchCall},
        {QDBusError::NoReply, ExitCode::NoHost},
        {QDBusError::TimedOut, ExitCode::NoHost},
        {QDBusError::Disconnected, ExitCode::NoHost},
    };
    reply.waitForFinished();
    if (!reply.isError())
        return;
    waitForTheBusLibrary();
    const QDBusError error = reply.error();
    if (error.type() == QDBusError::ServiceUnknown)
        throw Failure(ExitCode::NoHost, HostMonitor::notRunning());
    throw Failure(codes.value(error.type(), ExitCode::NotDone), reasonOf(error, refusal));
}
