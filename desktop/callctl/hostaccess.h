// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef CALLCTL_HOSTACCESS_H
#define CALLCTL_HOSTACCESS_H

#include "hoststate.h"

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusPendingReply>
#include <chrono>

/** The host, for commands that ask or tell it one thing and end. Everything here throws Failure. */
namespace HostAccess {

/** The session bus, connected. */
QDBusConnection bus();

/** What the host shows now; a host that does not answer is given up after this time. */
HostState state(std::chrono::milliseconds patience = std::chrono::seconds(5));

/** Waits for the host's answer; what its error means to a person begins with `refusal`, if it is given. */
void waitFor(QDBusPendingReply<> reply, const QString &refusal = {});

} // namespace HostAccess

#endif
