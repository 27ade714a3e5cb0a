// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_DESKTOPHOST_H
#define TESTS_DESKTOPHOST_H

#include "program.h"

#include <QtCore/QStringList>
#include <QtCore/QVariantMap>

/** voicecalld with the built plug-in on the test's bus, seen and driven through its bus interfaces. */
class DesktopHost
{
public:
    /** The bus name of the host, under which applications reach the plug-in too. */
    static QString name();

    /** Starts it and waits until it is ready; false when it did not come up. */
    bool start(const QStringList &options = {});

    /** Ends it with SIGTERM; its exit code. */
    int stop();

    /** Ends it at once, and waits until the bus has noticed. */
    void kill();

    /** Properties of every call, by handler id. */
    QMap<QString, QVariantMap> calls() const;

    /** Properties of the only call; empty when there is none or more than one. */
    QVariantMap call() const;

    /** "Uri=StatusText" of every call, sorted: the call table in short. */
    QStringList table() const;

    /** Waits until table() is this. */
    bool waitForTable(const QStringList &table) const;

    /** Waits until the only call has this StatusText. */
    bool waitForStatus(const QString &statusText) const;

    /** Calls a method of the only call's Call1; the name of the error, empty when there was none. */
    QString command(const QString &method, const QVariantList &arguments = {}) const;

    /** The same with the call whose Uri is this, which is waited for. */
    QString commandTo(const QString &uri, const QString &method, const QVariantList &arguments = {}) const;

    /** Calls a method of the host object, `interface` without its common prefix, e.g. "Audio1". */
    QString manage(const QString &interface, const QString &method, const QVariantList &arguments = {}) const;

    /** A property of the host object. */
    QVariant property(const QString &interface, const QString &property) const;

    /** (id, type) of every provider, as "TYPE ID". */
    QStringList providers() const;

    Program &program() { return m_program; }

private:
    Program m_program;
};

#endif
