// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef SIMULATOR_CALLSTATUS_H
#define SIMULATOR_CALLSTATUS_H

#include <QtCore/QString>

/** The numbers that go over the bus. Several mean the same; the ones named here are those we send by ourselves. */
namespace CallStatus {

constexpr uint Disconnected = 1;
constexpr uint Dialing = 2;
constexpr uint Incoming = 3;
constexpr uint Active = 5;
constexpr uint Held = 7;

/** One past the last number that means something. */
constexpr uint Count = 8;

/** The one of the numbers above that means the same as `status`, which is below Count. */
uint canonical(uint status);

/** "disconnected", "dialing", "incoming", "active" or "held"; "unknown" from Count on. */
QString name(uint status);

/** Number and name as they stand in event lines, for example "5 active". */
QString text(uint status);

} // namespace CallStatus

#endif
