// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "abstractvoicecallmanagerplugin.h"

AbstractVoiceCallManagerPlugin::AbstractVoiceCallManagerPlugin(QObject *parent) : QObject(parent) { }

AbstractVoiceCallManagerPlugin::~AbstractVoiceCallManagerPlugin() = default;
