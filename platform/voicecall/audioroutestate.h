// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALL_AUDIOROUTESTATE_H
#define VOICECALL_AUDIOROUTESTATE_H

#include "audiodevice.h"

/** The host's whole audio state at one moment. */
struct AudioRouteState
{
    AudioDeviceList devices;
    /** Id of the selected device; empty when none is. */
    QString inputDeviceId;
    /** Id of the selected device; empty when none is. */
    QString outputDeviceId;
    bool microphoneMuted = false;
};

#endif
