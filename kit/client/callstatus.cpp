// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include <RingletClient/callstatus.h>

namespace Ringlet {

static const struct
{
    CallStatus meaning;
    const char *name;
} statuses[] = {
    {CallStatus::Disconnected, "disconnected"},
    {CallStatus::Disconnected, "disconnected"},
    {CallStatus::Dialing, "dialing"},
    {CallStatus::Incoming, "incoming"},
    {CallStatus::Disconnected, "disconnected"},
    {CallStatus::Active, "active"},
    {CallStatus::Active, "active"},
    {CallStatus::Held, "held"},
};

static bool isKnown(CallStatus status) { return quint32(status) < sizeof statuses / sizeof *statuses; }

CallStatus canonical(CallStatus status)
{
    return isKnown(status) ? statuses[quint32(status)].meaning : CallStatus::Disconnected;
}

QString statusName(CallStatus status)
{
    return QString::fromLatin1(isKnown(status) ? statuses[quint32(status)].name : "unknown");
}

} // namespace Ringlet
