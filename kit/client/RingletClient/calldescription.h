// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef RINGLETCLIENT_CALLDESCRIPTION_H
#define RINGLETCLIENT_CALLDESCRIPTION_H

#include <RingletClient/callstatus.h>

namespace Ringlet {

/**
 * What a host learns of a call besides its status. It reads it once, when it first sees the call, and never
 * again: so it is given when the call is made, and stays.
 */
struct CallDescription
{
    /** Incoming or outgoing. */
    bool incoming = true;

    /** Address of the far end, such as "sip:ann@example.org"; shown. */
    QString address;

    /** Name of the far end; shown. */
    QString remoteName;

    /** Whether the application obeys Call::holdRequested(). To hold a call that is not holdable, a host rejects it. */
    bool holdable = true;

    /** Whether the application obeys Call::tonesRequested(). */
    bool tones = true;

    /** Whether the call follows the host's microphone mute and audio devices. */
    bool audioControl = true;

    /** Of the application's own side; hosts do not show them. */
    QString localAddress;
    QString localName;

    /**
     * Becomes the last element of the call's object path. Other characters than ASCII letters, digits and '_'
     * are escaped, so that an identifier of any protocol will do. Empty: "call1", "call2", …
     */
    QString name;
};

} // namespace Ringlet

#endif
