// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "hostlink.h"

#include "words.h"

#include <QtDBus/QDBusPendingCallWatcher>
#include <QtDBus/QDBusPendingReply>

static const QString servicePath = QStringLiteral("/zelkovar/call/service");
static const QString serviceInterface = QStringLiteral("zelkovar.Call.Service1");
static const QString managerInterface = QStringLiteral("zelkovar.Call.ServiceManager1");

HostLink::HostLink(const QString &name, const QStringList &managers, const QDBusConnection &connection,
    EventLog &events, QObject *parent)
    : QObject(parent),
      m_name(name),
      m_managers(managers),
      m_connection(connection),
      m_events(events)
{
    m_watcher.setConnection(connection);
    connect(&m_watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
        [this](const QString &, const QString &, const QString &owner) { setOwner(owner); });
    // For any sender, and compared with the host's name on arrival: to give the sender here would make the
    // bus library ask for its owner and wait for the answer.
    m_connection.connect(QString(), servicePath, managerInterface, QStringLiteral("InterfacesAdded"),
        {m_connection.baseService()}, QStringLiteral("soa{sa{sv}}"), this, SLOT(onInterfacesAdded(QDBusMessage)));
}

// Watch first, ask then: whatever happens after the answer is told by the watch.
void HostLink::start()
{
    m_watcher.addWatchedService(m_name);
    QDBusMessage question = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
        QStringLiteral("/org/freedesktop/DBus"), QStringLiteral("org.freedesktop.DBus"),
        QStringLiteral("GetNameOwner"));
    question << m_name;
    auto *watcher = new QDBusPendingCallWatcher(m_connection.asyncCall(question), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        const QDBusPendingReply<QString> reply = *watcher;
        setOwner(reply.isError() ? QString() : reply.value());
        watcher->deleteLater();
    });
}

void HostLink::setOwner(const QString &owner)
{
    if (m_owner == owner)
        return;
    const bool wasPresent = isPresent();
    m_owner = owner;
    if (wasPresent)
        leave();
    if (isPresent())
        enter();
    else
        m_events.add(QStringLiteral("waiting for host ") + m_name);
}

void HostLink::leave()
{
    m_registered.clear();
    m_events.add(QStringLiteral("host gone"));
    for (const QString &manager : m_managers)
        emit settled(manager);
    emit gone();
}

void HostLink::enter()
{
    m_events.add(QStringLiteral("host appeared ") + *m_owner);
    for (const QString &manager : m_managers)
        registerManager(manager);
}

// Addressed to the host's unique name: a host that has come since must not answer for this one.
void HostLink::registerManager(const QString &manager)
{
    emit registering(manager);
    QDBusMessage request = QDBusMessage::createMethodCall(
        *m_owner, servicePath, serviceInterface, QStringLiteral("RegisterCallManager"));
    request << QVariant::fromValue(QDBusObjectPath(manager));
    auto *watcher = new QDBusPendingCallWatcher(m_connection.asyncCall(request), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, manager, owner = *m_owner] {
        if (owner == m_owner)
            onAnswer(manager, watcher->reply());
        watcher->deleteLater();
    });
}

void HostLink::onAnswer(const QString &manager, const QDBusMessage &answer)
{
    if (answer.type() == QDBusMessage::ReplyMessage) {
        m_registered.append(manager);
        m_events.add(QStringLiteral("registered ") + manager);
    } else {
        m_events.add(
            QStringLiteral("refused %1 %2 %3").arg(manager, answer.errorName(), quoted(answer.errorMessage())));
    }
    emit settled(manager);
}

void HostLink::onInterfacesAdded(const QDBusMessage &message)
{
    if (message.service() != m_owner)
        return;
    const auto path = message.arguments().at(1).value<QDBusObjectPath>();
    emit shown(path.path(), qdbus_cast<InterfaceMap>(message.arguments().at(2)));
}
