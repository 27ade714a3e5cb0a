// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef APPRUNTIME_APPLICATIONRUNTIME_H
#define APPRUNTIME_APPLICATIONRUNTIME_H

#include <QtCore/QString>

/** Tells which application a process belongs to. */
class ApplicationRuntime
{
public:
    /** Looks processes up below `procfs`, where the process file system is mounted. */
    explicit ApplicationRuntime(const QString &procfs = QStringLiteral("/proc"));

    /** The process-wide instance, for this system's own processes; lives as long as the process. */
    static ApplicationRuntime &instance();

    /**
     * The id of the application that the process `pid` belongs to, taken from the systemd unit or snap
     * scope that its control group is named after. Empty when it belongs to none, when the process is
     * gone, and on a system without control groups.
     *
     * Reads PID/cgroup there and nothing that the application controls the contents of; never waits for
     * the application. A process may still be moved or may start another: this is a name for people and
     * for lists, not a security boundary.
     */
    QString getAppIdByPid(int pid) const;

    /** The id that the text of a /proc/PID/cgroup file names; empty when it names none. */
    static QString appIdFromCgroups(const QString &cgroups);

private:
    QString m_procfs;
};

#endif
