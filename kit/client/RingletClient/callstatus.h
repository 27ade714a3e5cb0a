// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef RINGLETCLIENT_CALLSTATUS_H
#define RINGLETCLIENT_CALLSTATUS_H

#include <RingletClient/export.h>

#include <QtCore/QMetaType>
#include <QtCore/QString>

namespace Ringlet {

/**
 * What a call is doing, as the host is told. The values are the numbers on the bus. Hosts know more numbers
 * that mean the same: 0 and 4 are disconnected too, 6 is active too; from 8 on they mean nothing. A number
 * without a name here is sent as it is, which is of use in tests of hosts only.
 */
enum class CallStatus : quint32 {
    /** The call has ended, for whatever reason. It stays in the host's list until its interfaces go. */
    Disconnected = 1,
    /** An outgoing call is being set up, or rings at the far end. */
    Dialing = 2,
    /** An incoming call rings. */
    Incoming = 3,
    /** Answered, or resumed. The host counts the time. */
    Active = 5,
    /** On hold, by either side. */
    Held = 7
};

/** The named value that means the same to the host; Disconnected for a number that means nothing. */
RINGLETCLIENT_EXPORT CallStatus canonical(CallStatus status);

/** "disconnected", "dialing", "incoming", "active" or "held"; "unknown" for a number that means nothing. */
RINGLETCLIENT_EXPORT QString statusName(CallStatus status);

} // namespace Ringlet

Q_DECLARE_METATYPE(Ringlet::CallStatus)

#endif
