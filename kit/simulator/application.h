// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef SIMULATOR_APPLICATION_H
#define SIMULATOR_APPLICATION_H

#include "endpoint.h"
#include "simulatedcall.h"

#include <QtCore/QMap>
#include <QtCore/QSet>
#include <RingletClient/callmanager.h>

/** An application that does everything right: its call managers, their calls, and what happens to them. */
class Application : public QObject
{
    Q_OBJECT
public:
    /** `managers` are object paths, at least one; `host` is the bus name of the host. */
    Application(const QString &name, const QString &host, const QStringList &managers,
        Ringlet::CallManager::Commanders commanders, EventLog &events, QObject *parent);
    ~Application() override;

    /** If not, nothing else can be done with it. */
    bool isConnected() const { return m_endpoint.isConnected(); }

    /** "registered", "present" (not registered, or not with every manager) or "absent". */
    QString hostState() const;

    QStringList managerPaths() const;

    /** What commands and events call the call of this name. */
    QString label(const QString &call) const { return m_endpoint.label(call); }

    /** `manager` is the path of one; empty for the first. Null when there is none. */
    SimulatedCall *addCall(const Ringlet::CallDescription &description, const QString &manager);

    /** By name. */
    const QMap<QString, SimulatedCall *> &calls() const { return m_calls; }

    /** Names of calls that have come to their end. */
    const QSet<QString> &endedCalls() const { return m_ended; }

    /** Leaves the bus without a word. busLost() tells when it is done. */
    void leave();

    /** Ends all calls; ended() is emitted when everything that was sent has reached the bus. */
    void end();

Q_SIGNALS:
    void ended();

    /** Nothing can be sent or received any more. */
    void busLost();

private:
    void addManager(const QString &path, const QString &host);
    void followHost(const Ringlet::CallManager &manager);
    void onStateChanged(const Ringlet::CallManager &manager);
    void takeCall(Ringlet::Call *call);
    void onFlushed();
    void stopReporting();

    Endpoint m_endpoint;
    QVector<Ringlet::CallManager *> m_managers;
    QMap<QString, SimulatedCall *> m_calls;
    QSet<QString> m_ended;
    int m_unflushed = 0;
};

#endif
