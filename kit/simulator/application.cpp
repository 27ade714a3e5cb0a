// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "application.h"

#include "words.h"

#include <algorithm>

using Ringlet::Call;
using Ringlet::CallManager;

Application::Application(const QString &name, const QString &host, const QStringList &managers,
    CallManager::Commanders commanders, EventLog &events, QObject *parent)
    : QObject(parent),
      m_endpoint(name, events)
{
    if (!isConnected())
        return;
    m_endpoint.onDisconnected(this, SIGNAL(busLost()));
    for (const QString &path : managers)
        addManager(path, host);
    for (CallManager *manager : qAsConst(m_managers))
        manager->setCommanders(commanders);
    followHost(*m_managers.constFirst());
}

Application::~Application() { stopReporting(); }

// What becomes of the calls when their managers go is nothing that happens to the application.
void Application::stopReporting()
{
    qDeleteAll(m_calls);
    m_calls.clear();
}

void Application::leave()
{
    m_endpoint.cut();
    stopReporting();
}

void Application::addManager(const QString &path, const QString &host)
{
    auto *manager = new CallManager(path, host, m_endpoint.connection(), this);
    m_managers.append(manager);
    connect(manager, &CallManager::callAdded, this, &Application::takeCall);
    connect(manager, &CallManager::stateChanged, this, [this, manager] { onStateChanged(*manager); });
    connect(manager, &CallManager::flushed, this, &Application::onFlushed);
    connect(manager, &CallManager::lateCommand, this, [this](const QString &object, const QString &method) {
        m_endpoint.report(QStringLiteral("late %1 %2").arg(object, method));
    });
}

// They all see the same host; one of them tells of it.
void Application::followHost(const CallManager &manager)
{
    connect(&manager, &CallManager::hostAppeared, this,
        [this](const QString &owner) { m_endpoint.report(QStringLiteral("host appeared ") + owner); });
    connect(&manager, &CallManager::hostVanished, this, [this] { m_endpoint.report(QStringLiteral("host gone")); });
}

void Application::onStateChanged(const CallManager &manager)
{
    if (manager.state() == CallManager::State::Registered)
        m_endpoint.report(QStringLiteral("registered ") + manager.path());
    if (manager.state() == CallManager::State::Refused)
        m_endpoint.report(
            QStringLiteral("refused %1 %2 %3").arg(manager.path(), manager.errorName(), quoted(manager.errorString())));
    if (manager.state() == CallManager::State::Waiting && &manager == m_managers.constFirst())
        m_endpoint.report(QStringLiteral("waiting for host ") + manager.hostName());
}

QString Application::hostState() const
{
    if (m_managers.constFirst()->hostOwner().isEmpty())
        return QStringLiteral("absent");
    const bool isRegistered = std::all_of(m_managers.begin(), m_managers.end(),
        [](const CallManager *manager) { return manager->state() == CallManager::State::Registered; });
    return isRegistered ? QStringLiteral("registered") : QStringLiteral("present");
}

QStringList Application::managerPaths() const
{
    QStringList paths;
    for (const CallManager *manager : m_managers)
        paths.append(manager->path());
    return paths;
}

SimulatedCall *Application::addCall(const Ringlet::CallDescription &description, const QString &manager)
{
    const int index = manager.isEmpty() ? 0 : managerPaths().indexOf(manager);
    if (index < 0)
        return nullptr;
    m_managers.at(index)->addCall(description);
    return m_calls.value(description.name);
}

void Application::takeCall(Call *call)
{
    const QString name = call->description().name;
    m_calls.insert(name, new SimulatedCall(*call, m_endpoint.label(name), m_endpoint.events()));
    m_ended.remove(name);
    connect(call, &Call::ended, this, [this, name] {
        m_calls.remove(name);
        m_ended.insert(name);
    });
}

void Application::end()
{
    m_unflushed = m_managers.size();
    for (CallManager *manager : qAsConst(m_managers))
        manager->endCalls();
}

void Application::onFlushed()
{
    if (--m_unflushed == 0)
        emit ended();
}
