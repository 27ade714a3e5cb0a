// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "abstractvoicecallprovider.h"

AbstractVoiceCallProvider::AbstractVoiceCallProvider(QObject *parent) : QObject(parent) { }

AbstractVoiceCallProvider::~AbstractVoiceCallProvider() = default;
