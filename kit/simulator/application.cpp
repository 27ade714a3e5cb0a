// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "application.h"

#include <QtDBus/QDBusPendingCallWatcher>

Application::Application(const QString &host, const QStringList &managers, const QDBusConnection &connection,
    EventLog &events, QObject *parent)
    : QObject(parent),
      m_connection(connection)
{
    for (const QString &path : managers) {
        auto *manager = new CallManager(path, this);
        m_managers.append(manager);
        m_trees.append(new ObjectTree(*manager, connection, events, this));
    }
    m_host = new HostLink(host, managers, connection, events, this);
    connect(m_host, &HostLink::registering, this, [this](const QString &path) { findManager(path)->keepBack(); });
    connect(m_host, &HostLink::settled, this, [this](const QString &path) { findManager(path)->letOut(); });
    connect(m_host, &HostLink::shown, this, &Application::onShown);
    connect(m_host, &HostLink::gone, this, &Application::onHostGone);
    m_connection.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
        QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this, SIGNAL(busLost()));
}

// The trees refer to the managers.
Application::~Application() { qDeleteAll(m_trees); }

void Application::start()
{
    for (ObjectTree *tree : qAsConst(m_trees))
        tree->putOnBus();
    m_host->start();
}

QStringList Application::managerPaths() const
{
    QStringList paths;
    for (const CallManager *manager : m_managers)
        paths.append(manager->path());
    return paths;
}

CallManager *Application::findManager(const QString &path) const
{
    for (CallManager *manager : m_managers) {
        if (path.isEmpty() || manager->path() == path)
            return manager;
    }
    return nullptr;
}

Call *Application::addCall(const CallDescription &description)
{
    CallManager *manager = findManager(description.manager);
    if (!manager)
        return nullptr;
    Call *call = manager->add(description);
    m_ended.remove(call->name());
    connect(call, &Call::ended, this, [this, call] { m_ended.insert(call->name()); });
    return call;
}

Call *Application::findCall(const QString &name) const
{
    for (const CallManager *manager : m_managers) {
        if (Call *call = manager->find(name))
            return call;
    }
    return nullptr;
}

QList<Call *> Application::calls() const
{
    QList<Call *> calls;
    for (const CallManager *manager : m_managers)
        calls += manager->calls();
    return calls;
}

void Application::onShown(const QString &path, const InterfaceMap &interfaces)
{
    const QVariant status = interfaces.value(QStringLiteral("zelkovar.Call.Call1")).value(QStringLiteral("Status"));
    if (status.userType() != QMetaType::UInt)
        return;
    for (const ObjectTree *tree : m_trees) {
        if (CallObject *object = tree->find(path))
            object->onShown(status.toUInt());
    }
}

void Application::onHostGone() const
{
    for (Call *call : calls()) {
        call->setShown(false);
        call->forgetAudio();
    }
}

// The bus handles the messages of a connection in order: when it has answered, it has them all.
void Application::leave()
{
    for (Call *call : calls())
        call->end();
    const QDBusMessage ping = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
        QStringLiteral("/org/freedesktop/DBus"), QStringLiteral("org.freedesktop.DBus.Peer"), QStringLiteral("Ping"));
    auto *watcher = new QDBusPendingCallWatcher(m_connection.asyncCall(ping), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, &Application::left);
}
