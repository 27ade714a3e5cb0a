// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef CALLCTL_CALLCHOICE_H
#define CALLCTL_CALLCHOICE_H

#include "hoststate.h"

/** What can be done to a call. */
enum class Deed { Answer, HangUp, Hold, TakeBack, SendTones };

/** Which call a person means, and whether what is to be done to it makes sense. The host itself passes on anything. */
namespace CallChoice {

/** The call of an id, or the only one whose name or address has this in it. Throws Failure when there is none. */
CallPath named(const HostState &state, const QString &name);

/** The only call for which the deed makes sense. Throws Failure, which lists the calls, when there is none. */
CallPath only(const HostState &state, Deed deed);

/** Why the deed would do nothing to the call, or harm; empty when it makes sense. */
QString objection(const CallInfo &call, Deed deed);

/** Throws the objection as a Failure, if there is one. */
void check(const CallInfo &call, Deed deed);

} // namespace CallChoice

#endif
