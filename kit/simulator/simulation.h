// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef SIMULATOR_SIMULATION_H
#define SIMULATOR_SIMULATION_H

#include "application.h"
#include "rawapplication.h"

/** All the applications that this process plays. The first one has no name. */
class Simulation : public QObject
{
    Q_OBJECT
public:
    /** `host` is the bus name of the host that all of them look for. */
    Simulation(const QString &host, Ringlet::CallManager::Commanders commanders, EventLog &events);

    // What went wrong, empty if nothing.

    /** `managers` are object paths; none for one that is made of the name. */
    QString addApplication(const QString &name, const QStringList &managers);

    QString addRawApplication(const QString &name);

    /** The application's connection closes without a word, and its name is free. */
    QString leave(const QString &name);

    /** Null when there is none of this kind. */
    Application *application(const QString &name) const { return m_applications.value(name); }
    RawApplication *rawApplication(const QString &name) const { return m_rawApplications.value(name); }

    /** Of all applications. */
    QList<SimulatedCall *> calls() const;

    /** All that have a name, as they stand in messages. */
    QString names() const;

    /** Ends all calls; ended() is emitted when everything that was sent has reached the bus. */
    void end();

Q_SIGNALS:
    void ended();

    /** The bus has gone; nothing can be sent or received any more. */
    void busLost();

private:
    template <typename Kind>
    bool removeFrom(QMap<QString, Kind *> *applications, const QString &name);

    QString nameFault(const QString &name) const;
    void onEnded();

    const QString m_host;
    const Ringlet::CallManager::Commanders m_commanders;
    EventLog &m_events;
    QMap<QString, Application *> m_applications;
    QMap<QString, RawApplication *> m_rawApplications;
    int m_unended = 0;
};

#endif
