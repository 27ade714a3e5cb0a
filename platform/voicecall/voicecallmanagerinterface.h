// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALL_VOICECALLMANAGERINTERFACE_H
#define VOICECALL_VOICECALLMANAGERINTERFACE_H

#include "audioroutestate.h"
#include "voicecallglobal.h"

#include <QtCore/QObject>
#include <QtCore/QString>

class AbstractVoiceCallProvider;

/**
 * The host, as plug-ins see it: it owns the call list and the audio. Plug-ins borrow it from configure()
 * until they are destroyed, and use it on the main thread only.
 */
class VOICECALL_EXPORT VoiceCallManagerInterface : public QObject
{
    Q_OBJECT

public:
    explicit VoiceCallManagerInterface(QObject *parent = nullptr);
    ~VoiceCallManagerInterface() override;

    /**
     * Takes up `provider` and the calls it has; ownership stays with the plug-in. Null, one that is there
     * already, and a second one with the same provider id are ignored with a warning.
     */
    virtual void addProvider(AbstractVoiceCallProvider *provider) = 0;

    /** Lets go of `provider` and of every call of its that is still listed. Unknown ones are ignored. */
    virtual void removeProvider(AbstractVoiceCallProvider *provider) = 0;

    /** A fresh id for a new handler; never the same twice in the host's life. */
    virtual QString newHandlerId() = 0;

    /** The audio state as it is now. */
    virtual AudioRouteState audioRouteState() const = 0;

    /** Selects the input device of this id; an id that no input device has is ignored with a warning. */
    virtual void selectInputDevice(const QString &id) = 0;

    /** Selects the output device of this id; an id that no output device has is ignored with a warning. */
    virtual void selectOutputDevice(const QString &id) = 0;

Q_SIGNALS:
    /** Emitted by plug-ins: asks the host to mute or unmute the microphone, which it may refuse in silence. */
    void setMuteMicrophoneRequested(bool mute);

    // Emitted by the host after the state that audioRouteState() gives has changed as a whole; where devices
    // and a selection change together, devicesChanged() comes first.
    void microphoneMutedChanged();
    void selectedInputDeviceChanged();
    void selectedOutputDeviceChanged();
    void devicesChanged();
};

#endif
