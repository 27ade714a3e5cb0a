// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "callstatus.h"

#include <array>

static const std::array<uint, CallStatus::Count> meanings = {
    CallStatus::Disconnected,
    CallStatus::Disconnected,
    CallStatus::Dialing,
    CallStatus::Incoming,
    CallStatus::Disconnected,
    CallStatus::Active,
    CallStatus::Active,
    CallStatus::Held,
};

static const std::array<const char *, CallStatus::Count> names
    = {"disconnected", "disconnected", "dialing", "incoming", "disconnected", "active", "active", "held"};

uint CallStatus::canonical(uint status) { return meanings.at(status); }

QString CallStatus::name(uint status) { return QString::fromLatin1(status < Count ? names.at(status) : "unknown"); }

QString CallStatus::text(uint status) { return QStringLiteral("%1 %2").arg(status).arg(name(status)); }
