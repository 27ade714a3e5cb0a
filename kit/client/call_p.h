// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef RINGLETCLIENT_CALL_P_H
#define RINGLETCLIENT_CALL_P_H

#include "callobject.h"
#include "echofilter.h"

#include <RingletClient/call.h>

#include <QtCore/QPair>

namespace Ringlet {

class CallManagerPrivate;

class CallPrivate final : public CommandReceiver
{
public:
    /** `manager` outlives the call. */
    CallPrivate(Call *call, CallManagerPrivate &owner, const CallDescription &description, const QString &path);

    /** It stands on the bus from now on. */
    void setAnnounced();

    /** The host has told that it shows the call, and with which status. */
    void setShown(CallStatus seen);

    /** What the host knew of the call, it knows no more, and the other way round. */
    void forgetHost();

    void end();

    // --- The host's commands

    void accept() override;
    void reject(uint reason) override;
    void setHold(bool hold) override;
    void sendTones(const QString &tones) override;
    void updateAudio(const AudioDeviceList &devices, const AudioRoute &route) override;
    void updateAudioRoute(const AudioRoute &route) override;

    // --- What the application says

    void setStatus(CallStatus status);

    /** Whether the host hears a request now; Outcome::Sent if so. */
    Call::Outcome canRequest() const;

    Call::Outcome requestMute(bool muted);
    Call::Outcome requestRoute(const QString &input, const QString &output);
    Call::Outcome reportMuted(bool muted);

    Call *const q;
    CallManagerPrivate &manager;
    CallObject object;
    bool isAnnounced = false;
    bool isShown = false;
    bool hasEnded = false;
    std::optional<AudioRoute> route;
    AudioDeviceList devices;

private:
    bool is(CallStatus status) const { return canonical(object.status()) == status; }
    void takeRoute(const AudioRoute &newRoute);

    /** Asked for since the host last told its route; it may still come to pass. */
    std::optional<bool> m_requestedMute;
    std::optional<QPair<QString, QString>> m_requestedDevices;
    EchoFilter<bool> m_muteEcho;
};

} // namespace Ringlet

#endif
