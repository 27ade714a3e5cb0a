// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "rawapplication.h"

#include "busserver/busreply.h"
#include "typedvalue.h"
#include "words.h"

#include <QtCore/QTimer>
#include <QtDBus/QDBusPendingCallWatcher>

static const QString servicePath = QStringLiteral("/zelkovar/call/service");
static const QString callInterfaces = QStringLiteral("zelkovar.Call.");

RawApplication::RawApplication(const QString &name, const QString &host, EventLog &events, QObject *parent)
    : QDBusVirtualObject(parent),
      m_host(host),
      m_endpoint(name, events)
{
    registerBusTypes();
    m_endpoint.onDisconnected(this, SIGNAL(busLost()));
    m_endpoint.connection().registerVirtualObject(QStringLiteral("/"), this, QDBusConnection::SubPath);
    follow(QStringLiteral("InterfacesAdded"), QStringLiteral("soa{sa{sv}}"), SLOT(onShown(QDBusMessage)));
    follow(QStringLiteral("InterfacesRemoved"), QStringLiteral("soas"), SLOT(onHidden(QDBusMessage)));
}

RawApplication::~RawApplication()
{
    m_endpoint.connection().unregisterObject(QStringLiteral("/"), QDBusConnection::UnregisterTree);
}

// What the host tells everybody of this application's objects.
void RawApplication::follow(const QString &member, const QString &signature, const char *slot)
{
    m_endpoint.connection().connect(QString(), servicePath, callInterfaces + QStringLiteral("ServiceManager1"), member,
        {m_endpoint.uniqueName()}, signature, this, slot);
}

void RawApplication::onShown(const QDBusMessage &message)
{
    m_endpoint.report(QStringLiteral("shown ") + message.arguments().at(1).value<QDBusObjectPath>().path());
}

void RawApplication::onHidden(const QDBusMessage &message)
{
    m_endpoint.report(QStringLiteral("hidden ") + message.arguments().at(1).value<QDBusObjectPath>().path());
}

void RawApplication::registerManager(const QString &path)
{
    QDBusMessage request = QDBusMessage::createMethodCall(
        m_host, servicePath, callInterfaces + QStringLiteral("Service1"), QStringLiteral("RegisterCallManager"));
    request << QVariant::fromValue(QDBusObjectPath(path));
    auto *watcher = new QDBusPendingCallWatcher(m_endpoint.connection().asyncCall(request), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, path] {
        const QDBusMessage reply = watcher->reply();
        m_endpoint.report(reply.type() == QDBusMessage::ReplyMessage
                ? QStringLiteral("registered ") + path
                : QStringLiteral("refused %1 %2 %3").arg(path, reply.errorName(), quoted(reply.errorMessage())));
        watcher->deleteLater();
    });
}

void RawApplication::setObject(const QString &path, const BusInterfaceMap &interfaces)
{
    if (interfaces.isEmpty())
        m_objects.remove(QDBusObjectPath(path));
    else
        m_objects.insert(QDBusObjectPath(path), interfaces);
}

void RawApplication::sendSignal(
    const QString &path, const QString &interface, const QString &member, const QVariantList &values)
{
    QDBusMessage signal = QDBusMessage::createSignal(path, interface, member);
    signal.setArguments(values);
    m_endpoint.connection().send(signal);
}

bool RawApplication::handleMessage(const QDBusMessage &message, const QDBusConnection &)
{
    if (message.member() == QLatin1String("GetManagedObjects"))
        onSnapshotWanted(message);
    else if (message.interface().startsWith(callInterfaces))
        onCommand(message);
    else
        return false;
    return true;
}

void RawApplication::onSnapshotWanted(const QDBusMessage &message)
{
    m_endpoint.report(QStringLiteral("asked ") + message.path());
    answer(message, m_snapshots, {QVariant::fromValue(m_objects)});
}

void RawApplication::onCommand(const QDBusMessage &message)
{
    QStringList words{QStringLiteral("command"), message.path(), message.member()};
    for (const QVariant &argument : message.arguments())
        words.append(valueText(argument));
    m_endpoint.report(words.join(QLatin1Char(' ')));
    answer(message, m_commands, {});
}

void RawApplication::answer(const QDBusMessage &message, const Answering &answering, const QVariantList &right)
{
    if (!answering.isGiven)
        return;
    const QDBusMessage reply = answering.error.isEmpty()
        ? message.createReply(answering.hasValues ? answering.values : right)
        : message.createErrorReply(answering.error, QStringLiteral("as the script says"));
    QTimer::singleShot(
        answering.delayMs, this, [this, message, reply] { BusReply::send(m_endpoint.connection(), message, reply); });
}
