// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALLD_DAEMON_H
#define VOICECALLD_DAEMON_H

#include "hearingcheck.h"
#include "options.h"
#include "supervisor.h"

#include <QtCore/QObject>
#include <QtDBus/QDBusConnection>

class PluginSet;

/** The program: puts the parts together, runs, and takes them apart. */
class Daemon : public QObject
{
    Q_OBJECT

public:
    explicit Daemon(const Options &options);

    /** Returns when it is over, with the exit code. What went wrong has been said on standard error then. */
    int run();

private Q_SLOTS:
    void onBusLost();

private:
    bool loadPlugins(PluginSet &plugins) const;
    /** Runs the event loop, in which the name is claimed. */
    int serve(const PluginSet &plugins);
    int claimName(const PluginSet &plugins);
    /** What is wrong when the name is taken. */
    QString anotherOwner() const;

    Options m_options;
    QDBusConnection m_bus;
    QDBusConnection m_questionBus;
    HearingCheck m_hearing;
    Supervisor m_supervisor;
};

#endif
