// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BENCH_AUDIOSTATE_H
#define BENCH_AUDIOSTATE_H

#include <audioroutestate.h>

/** A phone's usual devices: earpiece, speaker, microphone and a headset. */
const AudioRouteState &usualAudioState();

#endif
