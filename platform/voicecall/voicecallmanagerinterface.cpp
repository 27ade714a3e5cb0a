// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "voicecallmanagerinterface.h"

VoiceCallManagerInterface::VoiceCallManagerInterface(QObject *parent) : QObject(parent) { }

VoiceCallManagerInterface::~VoiceCallManagerInterface() = default;
