// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALLD_BUSLINK_H
#define VOICECALLD_BUSLINK_H

/**
 * What has to stand between Qt's bus layer and libdbus for a connection to outlive what this program says.
 */
namespace BusLink {

/**
 * The bus daemon cuts off whoever sends a message that is larger than it lets through. From now on such a
 * message is not sent: the caller gets an error for his call instead of an answer that is too large, a call
 * fails, and a signal is lost, with a warning. Goes for all connections of this process; 0 is the limit of
 * the D-Bus protocol.
 *
 * An application's announcement grows by some bytes when it is passed on, and a list of what several
 * applications have said is larger than any of their messages: that these could be sent says nothing of ours.
 */
void setLargestMessage(int bytes);

} // namespace BusLink

#endif
