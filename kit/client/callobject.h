// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef RINGLETCLIENT_CALLOBJECT_H
#define RINGLETCLIENT_CALLOBJECT_H

#include "wiretypes.h"

#include <RingletClient/calldescription.h>

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>

namespace Ringlet {

/** Takes the host's commands to a call. Arguments are what the interfaces say. */
class CommandReceiver
{
public:
    virtual ~CommandReceiver() = default;

    virtual void accept() = 0;
    virtual void reject(uint reason) = 0;
    virtual void setHold(bool hold) = 0;
    virtual void sendTones(const QString &tones) = 0;
    virtual void updateAudio(const AudioDeviceList &devices, const AudioRoute &route) = 0;
    virtual void updateAudioRoute(const AudioRoute &route) = 0;
};

/** A call as it stands on the bus: its interfaces, its signals, and the way of the host's commands to it. */
class CallObject
{
public:
    /** `receiver` outlives this object. */
    CallObject(const QString &path, const CallDescription &description, const QDBusConnection &connection,
        CommandReceiver &receiver);

    QString path() const { return m_path; }
    const CallDescription &description() const { return m_description; }
    CallStatus status() const { return m_status; }

    /** The interfaces that the call has, with the properties as they are now. */
    InterfaceMap interfaces() const;

    /** What the property says from now on. */
    void setStatus(CallStatus status) { m_status = status; }

    void sendStatus();
    void sendMuteRequest(bool mute);
    void sendRouteRequest(const QString &input, const QString &output);

    /** Handles a method call that is addressed to the object; the reply to send. */
    QDBusMessage handle(const QDBusMessage &message);

private:
    struct Method;
    static const QVector<Method> &methods();

    QVariantMap properties() const;
    bool offers(const QString &interface) const;
    QDBusMessage dispatch(const QDBusMessage &message);
    void sendSignal(const QString &interface, const QString &member, const QVariantList &arguments);

    const QString m_path;
    const CallDescription m_description;
    CallStatus m_status;
    QDBusConnection m_connection;
    CommandReceiver &m_receiver;
};

} // namespace Ringlet

#endif
