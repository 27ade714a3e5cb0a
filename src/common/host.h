// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef RINGLET_HOST_H
#define RINGLET_HOST_H

// All that the plug-in needs of the platform comes through this header, and every name that is the
// platform's own choice stands here and nowhere else: a platform whose names differ is met by changing
// this one file. The operations are listed for integrators in docs/host-operations.md.

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

/** The id of the application that the process belongs to; empty when unknown. */
inline QString applicationId(pid_t pid) { return ApplicationRuntime::instance().getAppIdByPid(int(pid)); }

} // namespace Host

#endif
