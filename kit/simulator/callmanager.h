// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef SIMULATOR_CALLMANAGER_H
#define SIMULATOR_CALLMANAGER_H

#include "call.h"

#include <QtCore/QMap>

/**
 * The calls under one path that is registered with the host.
 *
 * While a registration is on its way, new calls are kept back: the host takes its picture of the calls
 * at some moment meanwhile, and a call that is in the picture and announced as well would be reported
 * twice. A call that ends before it came out has never been.
 */
class CallManager : public QObject
{
    Q_OBJECT
public:
    explicit CallManager(const QString &path, QObject *parent = nullptr);

    QString path() const { return m_path; }
    QString pathOf(const Call &call) const { return m_path + QLatin1Char('/') + call.name(); }

    Call *add(const CallDescription &description);

    /** By name; null when there is none. Calls that are kept back are found too. */
    Call *find(const QString &name) const;

    /** In the order of their names. */
    QList<Call *> calls() const { return m_calls.values(); }

    void keepBack();
    void letOut();

Q_SIGNALS:
    /** The call can be seen from now on. */
    void published(Call *call);

    /** A published call is gone; it is still alive during the signal, with its last status. */
    void withdrawn(Call *call);

private:
    void remove(Call *call);

    const QString m_path;
    QMap<QString, Call *> m_calls;
    QList<Call *> m_keptBack;
    bool m_keepsBack = false;
};

#endif
