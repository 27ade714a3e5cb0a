// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef SIMULATOR_CALLOBJECT_H
#define SIMULATOR_CALLOBJECT_H

#include "call.h"
#include "eventlog.h"
#include "wiretypes.h"

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>

/** A call on the bus: passes the host's commands to the call, and what the call says to the bus. */
class CallObject : public QObject
{
    Q_OBJECT
public:
    /** `call` outlives this object. */
    CallObject(Call &call, const QString &path, const QDBusConnection &connection, EventLog &events, QObject *parent);

    QString path() const { return m_path; }

    /** The interfaces that the call has, with the properties as they are now. */
    InterfaceMap interfaces() const;

    /** Handles a method call that is addressed to the object; the reply to send. */
    QDBusMessage handle(const QDBusMessage &message);

    /**
     * The host has told that it shows the call, and with which status. A change of status that it could
     * not hear, because it subscribes only when it shows the call, is sent again.
     */
    void onShown(uint status);

private:
    struct Method;
    static const QList<Method> &methods();

    void onAccept(const QVariantList &arguments);
    void onReject(const QVariantList &arguments);
    void onSetHold(const QVariantList &arguments);
    void onSendDtmf(const QVariantList &arguments);
    void onUpdateAudioRouteState(const QVariantList &arguments);
    void onUpdateAudioRoute(const QVariantList &arguments);

    QDBusMessage dispatch(const QDBusMessage &message);
    void sendStatus(uint status);
    void sendSignal(const QString &interface, const QString &member, const QVariantList &arguments);
    void report(const QString &event);
    void report(Call::Outcome outcome);

    Call &m_call;
    const QString m_path;
    QDBusConnection m_connection;
    EventLog &m_events;
};

#endif
