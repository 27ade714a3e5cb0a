// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_TARGET_H
#define TESTS_TARGET_H

#include <cstddef>
#include <cstdint>
#include <string>

/**
 * Each plays one input against the plug-in in this process, as Sequence has it, and ends the process with a finding
 * when something does not hold: what the plug-in may send and to whom, what it tells the host, and that nothing of an
 * application is left when it is gone: no registration, call, object, match rule or descriptor. Needs an application
 * object.
 */
void playCalls(const std::uint8_t *data, std::size_t size);
void playValues(const std::uint8_t *data, std::size_t size);

/** The player of this name, "calls" or "values"; null for any other. */
using Player = void (*)(const std::uint8_t *data, std::size_t size);
Player playerNamed(const std::string &name);

/** Writes every message of the inputs that follow to standard output. */
void traceMessages();

#endif
