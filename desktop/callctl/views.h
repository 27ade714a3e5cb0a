// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef CALLCTL_VIEWS_H
#define CALLCTL_VIEWS_H

#include "hoststate.h"

#include <QtCore/QStringList>

/** The host's lists as text for people; lines no wider than `columns`, 0 for as wide as they are. */
namespace Views {

/** The call of the index `chosen`, if any, has a mark before it. */
QStringList calls(const QList<CallInfo> &calls, int columns = 0, int chosen = -1);
QStringList providers(const ProviderList &providers);
QStringList devices(const HostState &state);
QString audioLine(const HostState &state, int columns = 0);

/** A call in an error message: its id and what tells it from others. */
QString brief(const CallInfo &call);

} // namespace Views

#endif
