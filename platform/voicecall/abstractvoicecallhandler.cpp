// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "abstractvoicecallhandler.h"

AbstractVoiceCallHandler::AbstractVoiceCallHandler(QObject *parent) : QObject(parent) { }

AbstractVoiceCallHandler::~AbstractVoiceCallHandler() = default;

bool AbstractVoiceCallHandler::isOngoing() const
{
    const VoiceCallStatus now = status();
    return now == StatusActive || now == StatusHeld;
}
