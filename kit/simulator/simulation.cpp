// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "simulation.h"

#include "managerpaths.h"

static const QString noBus = QStringLiteral("no session bus");

Simulation::Simulation(const QString &host, Ringlet::CallManager::Commanders commanders, EventLog &events)
    : m_host(host),
      m_commanders(commanders),
      m_events(events)
{
}

QString Simulation::nameFault(const QString &name) const
{
    if (m_applications.contains(name) || m_rawApplications.contains(name))
        return QStringLiteral("there is an application \"%1\" already").arg(name);
    return {};
}

QString Simulation::addApplication(const QString &name, const QStringList &managers)
{
    const QStringList paths = managers.isEmpty() ? QStringList(QStringLiteral("/ringlet/") + name) : managers;
    QString fault = nameFault(name);
    if (fault.isEmpty())
        fault = managersFault(paths);
    if (!fault.isEmpty())
        return fault;
    auto *application = new Application(name, m_host, paths, m_commanders, m_events, this);
    m_applications.insert(name, application);
    connect(application, &Application::ended, this, &Simulation::onEnded);
    connect(application, &Application::busLost, this, &Simulation::busLost);
    return application->isConnected() ? QString() : noBus;
}

QString Simulation::addRawApplication(const QString &name)
{
    const QString fault = nameFault(name);
    if (!fault.isEmpty())
        return fault;
    auto *application = new RawApplication(name, m_host, m_events, this);
    m_rawApplications.insert(name, application);
    return application->isConnected() ? QString() : noBus;
}

// Deleted when the connection has closed: until then answers to what was asked may be on their way through it.
template <typename Kind>
bool Simulation::removeFrom(QMap<QString, Kind *> *applications, const QString &name)
{
    Kind *application = applications->take(name);
    if (!application)
        return false;
    disconnect(application, nullptr, this, nullptr);
    connect(application, &Kind::busLost, application, &QObject::deleteLater);
    application->leave();
    return true;
}

QString Simulation::leave(const QString &name)
{
    if (removeFrom(&m_applications, name) || removeFrom(&m_rawApplications, name))
        return {};
    return QStringLiteral("there is no application \"%1\"; applications: %2").arg(name, names());
}

QList<SimulatedCall *> Simulation::calls() const
{
    QList<SimulatedCall *> calls;
    for (const Application *application : m_applications)
        calls += application->calls().values();
    return calls;
}

QString Simulation::names() const
{
    QStringList names = m_applications.keys() + m_rawApplications.keys();
    names.removeAll(QString());
    return names.isEmpty() ? QStringLiteral("none") : names.join(QStringLiteral(", "));
}

void Simulation::end()
{
    m_unended = m_applications.size();
    for (Application *application : qAsConst(m_applications))
        application->end();
}

void Simulation::onEnded()
{
    if (--m_unended == 0)
        emit ended();
}
