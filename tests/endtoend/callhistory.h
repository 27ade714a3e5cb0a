// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_CALLHISTORY_H
#define TESTS_CALLHISTORY_H

#include <QtCore/QMap>
#include <QtCore/QStringList>
#include <QtCore/QVariantMap>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusServiceWatcher>

/** The call tables that the desktop host has shown one after the other, as its signals tell them. */
class CallHistory : public QObject
{
    Q_OBJECT
public:
    /** From now on. */
    CallHistory();

    /**
     * Each as "ADDRESS=STATUS ADDRESS=STATUS", sorted, or "nothing" when the last call has gone. A table that
     * equals the one before it is not noted again.
     */
    QStringList tables() const { return m_tables; }

    /** That no call is shown now. */
    bool isEmpty() const { return m_calls.isEmpty(); }

private Q_SLOTS:
    void onInterfacesAdded(const QDBusMessage &signal);
    void onInterfacesRemoved(const QDBusMessage &signal);
    void onPropertiesChanged(const QDBusMessage &signal);

private:
    void note();

    QDBusServiceWatcher m_watcher;
    /** Properties of a call, by object path. */
    QMap<QString, QVariantMap> m_calls;
    QStringList m_tables;
};

#endif
