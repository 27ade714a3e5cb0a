// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef CALLCTL_WATCHLINES_H
#define CALLCTL_WATCHLINES_H

#include "hoststate.h"

#include <QtCore/QStringList>

/**
 * What has changed between two states of the host, a line each, for programs to read:
 *
 *     call ID added KEY=VALUE...        call ID changed KEY=VALUE...      call ID removed
 *     provider ID added type=TYPE       provider ID removed
 *     device ID added KEY=VALUE...      device ID removed
 *     audio changed KEY=VALUE...
 *
 * `added` gives all keys, `changed` those with a new value, both in a fixed order. The keys name, address
 * and app are always JSON strings; any other value, and an id, only when it is empty or holds something
 * else than letters, digits and _ . / : @ + -.
 */
namespace WatchLines {

QStringList between(const HostState &before, const HostState &after);

} // namespace WatchLines

#endif
