// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_HISTORYTEXT_H
#define TESTS_HISTORYTEXT_H

#include "step.h"

#include <iosfwd>
#include <string>

/**
 * Histories in words, one step per line, for example:
 *
 *     the host configures the plug-in
 *     A registers /calls
 *     A answers at /calls with /calls/c1:Call1{Status=u3,Incoming=true}+DTMF1
 *     the host answers A /calls/c1
 *     A says status 5 of /calls/c1
 *     at once: A removes Call1+DTMF1 of /calls/c1 at /calls
 *
 * "at once" steps follow the one before without a pause. Values are written as their D-Bus type and the number
 * (u5), or quoted; "nothing" and "empty" stand for what has no text. Lines that begin with # are comments.
 */
std::string text(const Step &step);
std::string text(const History &history);

/** Throws std::runtime_error that names the line and says what it should be. */
Step parseStep(const std::string &line);
History parseHistory(std::istream &in);

/** The short form of an interface name in histories: "Call1" for zelkovar.Call.Call1. */
std::string shortInterfaceName(const std::string &name);

#endif
