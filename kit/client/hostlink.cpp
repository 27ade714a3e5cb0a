// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "hostlink.h"

#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusPendingCallWatcher>
#include <QtDBus/QDBusPendingReply>

namespace Ringlet {

static const QString servicePath = QStringLiteral("/zelkovar/call/service");
static const QString serviceInterface = QStringLiteral("zelkovar.Call.Service1");
static const QString managerInterface = QStringLiteral("zelkovar.Call.ServiceManager1");

HostLink::HostLink(const QString &name, const QString &manager, const QDBusConnection &connection, QObject *parent)
    : QObject(parent),
      m_name(name),
      m_manager(manager),
      m_connection(connection)
{
    m_watcher.setConnection(connection);
    connect(&m_watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
        [this](const QString &, const QString &, const QString &owner) { setOwner(owner); });
    // For any sender, and compared with the host's name on arrival: to give the sender here would make the
    // bus library ask for its owner and wait for the answer.
    m_connection.connect(QString(), servicePath, managerInterface, QStringLiteral("InterfacesAdded"),
        {m_connection.baseService()}, QStringLiteral("soa{sa{sv}}"), this, SLOT(onInterfacesAdded(QDBusMessage)));
}

// Watch first, ask then: every change after the question is told by the watch. The bus library may deliver
// such a change before the answer; then the answer is the older of the two.
void HostLink::start()
{
    m_connection.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
        QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this, SIGNAL(busLost()));
    m_watcher.addWatchedService(m_name);
    QDBusMessage question = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
        QStringLiteral("/org/freedesktop/DBus"), QStringLiteral("org.freedesktop.DBus"),
        QStringLiteral("GetNameOwner"));
    question << m_name;
    auto *watcher = new QDBusPendingCallWatcher(m_connection.asyncCall(question), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        const QDBusPendingReply<QString> reply = *watcher;
        if (!m_owner)
            setOwner(reply.isError() ? QString() : reply.value());
        watcher->deleteLater();
    });
}

void HostLink::setOwner(const QString &newOwner)
{
    if (m_owner == newOwner)
        return;
    const bool wasPresent = !owner().isEmpty();
    m_owner = newOwner;
    if (wasPresent)
        emit vanished();
    if (newOwner.isEmpty()) {
        emit absent();
        return;
    }
    emit appeared(newOwner);
    registerManager();
}

// Addressed to the host's unique name: a host that has come since must not answer for this one.
void HostLink::registerManager()
{
    emit registering();
    QDBusMessage request
        = QDBusMessage::createMethodCall(owner(), servicePath, serviceInterface, QStringLiteral("RegisterCallManager"));
    request << QVariant::fromValue(QDBusObjectPath(m_manager));
    auto *watcher = new QDBusPendingCallWatcher(m_connection.asyncCall(request), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, asked = owner()] {
        if (asked == owner())
            onAnswer(watcher->reply());
        watcher->deleteLater();
    });
}

void HostLink::onAnswer(const QDBusMessage &answer)
{
    if (answer.type() == QDBusMessage::ReplyMessage)
        emit registered();
    else
        emit refused(answer.errorName(), answer.errorMessage());
}

QString HostLink::refusal(const QString &caller) const
{
    if (m_obeysAnyone || (!caller.isEmpty() && caller == owner()))
        return {};
    const QString who = owner().isEmpty() ? QStringLiteral("nobody does now") : owner() + QStringLiteral(" does now");
    return QStringLiteral("Only the host may command a call: whoever owns %1; %2").arg(m_name, who);
}

void HostLink::onInterfacesAdded(const QDBusMessage &message)
{
    if (message.service() != owner())
        return;
    const auto path = message.arguments().at(1).value<QDBusObjectPath>();
    emit shown(path.path(), qdbus_cast<BusInterfaceMap>(message.arguments().at(2)));
}

} // namespace Ringlet
