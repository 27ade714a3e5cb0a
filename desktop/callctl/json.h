// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef CALLCTL_JSON_H
#define CALLCTL_JSON_H

#include "hoststate.h"

/** The host's lists for programs. No character in them acts on a terminal. */
namespace Json {

QString calls(const QList<CallInfo> &calls);
QString providers(const ProviderList &providers);
QString devices(const HostState &state);

/** One JSON string, quotes included. */
QString quoted(const QString &text);

} // namespace Json

#endif
