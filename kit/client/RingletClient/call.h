// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef RINGLETCLIENT_CALL_H
#define RINGLETCLIENT_CALL_H

#include <RingletClient/audio.h>
#include <RingletClient/calldescription.h>
#include <RingletClient/export.h>

#include <QtCore/QObject>
#include <QtCore/QVariantList>
#include <memory>
#include <optional>

namespace Ringlet {

class CallPrivate;
class CallManagerPrivate;

/**
 * A call of the application's, in the host's call list. Made by CallManager::addCall().
 *
 * The host's wishes come as the signals whose names end in "Requested". Nothing has happened then: the
 * application does what it can, and tells with setStatus() or end() what became of it. The other way round,
 * the application tells each change of its own with the same functions, and asks the host for what is the
 * host's: the microphone mute and the choice of audio devices.
 *
 * Whatever the application says that is so already is not sent. Nothing here waits for anybody.
 */
class RINGLETCLIENT_EXPORT Call : public QObject
{
    Q_OBJECT
    Q_PROPERTY(Ringlet::CallStatus status READ status WRITE setStatus NOTIFY statusChanged)
    Q_PROPERTY(bool shown READ isShown NOTIFY shownChanged)
public:
    /** What became of a wish that was to go to the host. */
    enum class Outcome {
        /** It is on its way. No answer comes but audioRouteChanged(), if the host grants it. */
        Sent,
        /** It is so already. */
        Unchanged,
        /** Hosts hear it only while the call is dialing or active. */
        WrongStatus,
        /** The host has not told this call of its audio yet, which is the sign that it listens. */
        TooEarly,
        /** The call was described without audio control. */
        Unsupported
    };
    Q_ENUM(Outcome)

    /** Ends the call if it has not ended. Not to be deleted while one of its signals is handled; see end(). */
    ~Call() override;

    CallDescription description() const;

    /** The last element of the object path. */
    QString name() const;
    QString path() const;

    CallStatus status() const;

    /**
     * Tells the host what the call is doing now. A call that is disconnected stays in the host's list until
     * end(); one that has ended keeps its status.
     */
    void setStatus(CallStatus status);

    /** Whether it has the status, or one that means the same. */
    bool is(CallStatus status) const;

    /**
     * Disconnects the call unless it is, and takes it out of the host's list. It is deleted when the event
     * loop runs next.
     */
    void end();

    bool hasEnded() const;

    /** Whether the host that is there now has told that it shows the call. */
    bool isShown() const;

    /** Unset until the host has told, and again when it has gone. */
    std::optional<AudioRoute> audioRoute() const;

    /** Empty until the host has told, and when it describes devices in a form that is not known here. */
    AudioDeviceList audioDevices() const;

    /** The user wants the microphone muted or unmuted. What is done about it, audioRouteChanged() tells. */
    Outcome requestMicrophoneMute(bool muted);

    /** The user wants these devices, given by their ids. Both are named in every request. */
    Outcome requestAudioRoute(const QString &input, const QString &output);

    /**
     * The application's own audio has been muted or unmuted, for whatever reason: the user at the
     * application, or what the application did on audioRouteChanged(). The former is asked of the host, the
     * latter is not: host and application would never come to rest. A report counts as the effect of what
     * the host told if it says the same within two seconds.
     *
     * For applications whose audio engine tells only that it has changed; one that knows what the user did
     * calls requestMicrophoneMute() for it, and nothing else.
     */
    Outcome reportMicrophoneMuted(bool muted);

Q_SIGNALS:
    // --- What the host wishes. Only what makes sense in the call's status is passed on.

    /** An incoming call is to be answered. Then: setStatus(CallStatus::Active). */
    void answerRequested();

    /** The call is to be rejected, cancelled or hung up; hosts give the reason 1 for all of them. Then: end(). */
    void rejectRequested(uint reason);

    /** An active call is to be held, or a held one resumed. Then: setStatus(). */
    void holdRequested(bool hold);

    /** To be sent in order. */
    void tonesRequested(const QString &tones);

    // --- What the host has told

    /** Set, changed, or, when the host has gone, unset. */
    void audioRouteChanged();

    void audioDevicesChanged();

    /** `seen` is the status that the host saw. If the call has another one by now, that has been sent again. */
    void shown(Ringlet::CallStatus seen);

    void shownChanged(bool shown);

    // --- What became of the call

    /**
     * It can be seen on the bus from now on: at once, or, while the manager is Looking or Registering, as soon
     * as it is neither.
     */
    void announced();

    /** Emitted when the host has been told. */
    void statusChanged(Ringlet::CallStatus status);

    /** The host showed an older one, and has been told again. */
    void statusRepeated(Ringlet::CallStatus status);

    /** It is out of the host's list. The last signal of all. */
    void ended();

    // --- For logs

    /**
     * A method of the call was called, before anything is made of it. Devices are an AudioDeviceList, all
     * other arguments as they are on the bus.
     */
    void commandReceived(const QString &method, const QVariantList &arguments);

    /** The command makes no sense in the call's status, and nothing is made of it. */
    void commandIgnored(const QString &method);

private:
    friend class CallManagerPrivate;
    Call(CallManagerPrivate &manager, const CallDescription &description, const QString &path);

    const std::unique_ptr<CallPrivate> d;
};

} // namespace Ringlet

#endif
