// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef RINGLETCLIENT_CALLOBJECT_H
#define RINGLETCLIENT_CALLOBJECT_H

#include "busserver/businterface.h"
#include "busserver/busobject.h"
#include "wiretypes.h"

#include <RingletClient/calldescription.h>

#include <QtDBus/QDBusConnection>

namespace Ringlet {

class HostLink;

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

/** A call as it stands on the bus: its interfaces and its signals. */
class CallObject
{
public:
    /** `receiver` outlives this object. */
    CallObject(const QString &path, const CallDescription &description, const QDBusConnection &connection,
        CommandReceiver &receiver);

    QString path() const { return m_path; }
    const CallDescription &description() const { return m_description; }
    CallStatus status() const { return m_status; }

    CommandReceiver &receiver() const { return m_receiver; }

    /** The interfaces that the call has. They refer to both objects. */
    BusObject::Interfaces makeInterfaces(const HostLink &host) const;

    /** Of zelkovar.Call.Call1, as they are now; the other interfaces have none. */
    QVariantMap properties() const;

    /** What the property says from now on. */
    void setStatus(CallStatus status) { m_status = status; }

    void sendStatus();
    void sendMuteRequest(bool mute);
    void sendRouteRequest(const QString &input, const QString &output);

private:
    void sendSignal(const QString &interface, const QString &member, const QVariantList &arguments);

    const QString m_path;
    const CallDescription m_description;
    CallStatus m_status;
    QDBusConnection m_connection;
    CommandReceiver &m_receiver;
};

} // namespace Ringlet

#endif
