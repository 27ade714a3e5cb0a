// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef RINGLET_HOST_H
#define RINGLET_HOST_H

// All that the plug-in asks of the platform goes through this header: what it calls, the signals that it hears
// and emits on the host's manager, and the numbers of states. A platform whose names differ is met by changing
// this one file. What the base classes prescribe, their operations and signals, stands in the classes that derive
// from them. All of it is listed for integrators in docs/host-operations.md.

#include <abstractvoicecallhandler.h>
#include <abstractvoicecallmanagerplugin.h>
#include <abstractvoicecallprovider.h>
#include <applicationruntime.h>
#include <audiodevice.h>
#include <audioroutestate.h>
#include <voicecallglobal.h>
#include <voicecallmanagerinterface.h>

namespace Host {

// The host's call states, by the numbers that the host gives them.
constexpr auto StatusNull = AbstractVoiceCallHandler::VoiceCallStatus(0);
constexpr auto StatusActive = AbstractVoiceCallHandler::VoiceCallStatus(1);
constexpr auto StatusHeld = AbstractVoiceCallHandler::VoiceCallStatus(2);
constexpr auto StatusDialing = AbstractVoiceCallHandler::VoiceCallStatus(3);
constexpr auto StatusIncoming = AbstractVoiceCallHandler::VoiceCallStatus(5);
constexpr auto StatusDisconnected = AbstractVoiceCallHandler::VoiceCallStatus(7);

/** Whether a call in this state may own the audio: active (1) and dialing (3) differ in the bit of value 2 alone. */
inline bool mayOwnAudio(AbstractVoiceCallHandler::VoiceCallStatus status) { return (int(status) & ~2) == 1; }

inline void addProvider(VoiceCallManagerInterface *manager, AbstractVoiceCallProvider *provider)
{
    manager->addProvider(provider);
}

inline void removeProvider(VoiceCallManagerInterface *manager, AbstractVoiceCallProvider *provider)
{
    manager->removeProvider(provider);
}

/** A fresh id for a new handler. */
inline QString newHandlerId(VoiceCallManagerInterface *manager) { return manager->newHandlerId(); }

inline AudioRouteState audioRouteState(VoiceCallManagerInterface *manager) { return manager->audioRouteState(); }

inline const AudioDeviceList &devices(const AudioRouteState &state) { return state.devices; }
inline const QString &inputDeviceId(const AudioRouteState &state) { return state.inputDeviceId; }
inline const QString &outputDeviceId(const AudioRouteState &state) { return state.outputDeviceId; }
inline bool microphoneMuted(const AudioRouteState &state) { return state.microphoneMuted; }

inline void selectInputDevice(VoiceCallManagerInterface *manager, const QString &id) { manager->selectInputDevice(id); }

inline void selectOutputDevice(VoiceCallManagerInterface *manager, const QString &id)
{
    manager->selectOutputDevice(id);
}

/** Asks the host to mute or unmute the microphone. */
inline void requestMute(VoiceCallManagerInterface *manager, bool mute)
{
    emit manager->setMuteMicrophoneRequested(mute);
}

// The manager's signals, to be connected to.
constexpr auto microphoneMutedChanged = &VoiceCallManagerInterface::microphoneMutedChanged;
constexpr auto selectedInputDeviceChanged = &VoiceCallManagerInterface::selectedInputDeviceChanged;
constexpr auto selectedOutputDeviceChanged = &VoiceCallManagerInterface::selectedOutputDeviceChanged;
constexpr auto devicesChanged = &VoiceCallManagerInterface::devicesChanged;

/** The id of the application that the process belongs to; empty when unknown. */
inline QString applicationId(pid_t pid) { return ApplicationRuntime::instance().getAppIdByPid(int(pid)); }

} // namespace Host

#endif
