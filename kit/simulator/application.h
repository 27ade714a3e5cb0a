// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef SIMULATOR_APPLICATION_H
#define SIMULATOR_APPLICATION_H

#include "callmanager.h"
#include "hostlink.h"
#include "objecttree.h"

#include <QtCore/QSet>

/** A simulated application: one connection to the bus, its call managers, their calls. */
class Application : public QObject
{
    Q_OBJECT
public:
    /** `managers` are object paths, at least one; `connection` is connected. */
    Application(const QString &host, const QStringList &managers, const QDBusConnection &connection, EventLog &events,
        QObject *parent = nullptr);
    ~Application() override;

    /** Registers with the host from now on. Calls made before this are in the host's first picture. */
    void start();

    const HostLink &host() const { return *m_host; }
    QStringList managerPaths() const;

    /** Null when the description names a manager that this application does not have. */
    Call *addCall(const CallDescription &description);

    /** Null when there is none. */
    Call *findCall(const QString &name) const;

    QList<Call *> calls() const;

    /** Whether a call of this name has come to its end. */
    bool hasEnded(const QString &name) const { return m_ended.contains(name); }

    /** Ends all calls; left() is emitted when everything that was sent has reached the bus. */
    void leave();

Q_SIGNALS:
    void left();

    /** The bus has gone; nothing can be sent or received any more. */
    void busLost();

private:
    CallManager *findManager(const QString &path) const;
    void onShown(const QString &path, const InterfaceMap &interfaces);
    void onHostGone() const;

    QDBusConnection m_connection;
    QList<CallManager *> m_managers;
    QList<ObjectTree *> m_trees;
    HostLink *m_host;
    QSet<QString> m_ended;
};

#endif
