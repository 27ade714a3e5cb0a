// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "endpoint.h"

#include <QtCore/QLibrary>
#include <QtDBus/QDBusMessage>
#include <sys/socket.h>

// The bus library knows a connection by a name, and gives the same one for the same name.
static QString newConnectionName()
{
    static int count = 0;
    return QStringLiteral("application %1").arg(++count);
}

Endpoint::Endpoint(const QString &name, EventLog &events)
    : m_name(name),
      m_events(events),
      m_connection(QDBusConnection::connectToBus(QDBusConnection::SessionBus, newConnectionName()))
{
    if (isConnected())
        report(QStringLiteral("connected ") + uniqueName());
}

Endpoint::~Endpoint() { QDBusConnection::disconnectFromBus(m_connection.name()); }

QString Endpoint::label(const QString &call) const
{
    return m_name.isEmpty() ? call : m_name + QLatin1Char('/') + call;
}

void Endpoint::report(const QString &event) const
{
    if (!m_isCut)
        m_events.add(m_name.isEmpty() ? event : QStringLiteral("application %1 %2").arg(m_name, event));
}

// The bus handles messages in order: when it has answered the question, it has all that came before.
static void flush(const QDBusConnection &connection)
{
    connection.call(QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
        QStringLiteral("/org/freedesktop/DBus"), QStringLiteral("org.freedesktop.DBus.Peer"), QStringLiteral("Ping")));
}

// QtDBus closes a connection only with its last user, and every call manager is one. So the socket is shut down
// beneath them; which one it is, the library knows that QtDBus itself stands on.
void Endpoint::cut()
{
    using GetSocket = quint32 (*)(void *connection, int *socket);
    const auto getSocket
        = reinterpret_cast<GetSocket>(QLibrary::resolve(QStringLiteral("dbus-1"), 3, "dbus_connection_get_socket"));
    int socket = -1;
    flush(m_connection);
    if (!getSocket || !getSocket(m_connection.internalPointer(), &socket) || shutdown(socket, SHUT_RDWR) != 0)
        qFatal("cannot close a connection to the bus");
    report(QStringLiteral("left"));
    m_isCut = true;
}

void Endpoint::onDisconnected(QObject *receiver, const char *slot)
{
    m_connection.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
        QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), receiver, slot);
}
