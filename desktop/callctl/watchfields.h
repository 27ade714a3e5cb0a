// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef CALLCTL_WATCHFIELDS_H
#define CALLCTL_WATCHFIELDS_H

#include "hoststate.h"

#include <QtCore/QPair>
#include <QtCore/QVector>

/** A key and its value, in the form that is printed. */
using Field = QPair<QString, QString>;
using Fields = QVector<Field>;

/** What the lines of `watch` tell of a thing: its keys in their fixed order. */
namespace WatchFields {

/** Bare where it may stand bare, else a JSON string. */
QString word(const QString &text);

Fields all(const CallInfo &call);
Fields all(const AudioDevice &device);

/** Those with a new value. */
Fields changed(const CallInfo &before, const CallInfo &after);
Fields changed(const AudioDevice &before, const AudioDevice &after);

/** The selection and the microphone; all of a host that was not there is new. */
Fields changed(const HostState &before, const HostState &after);

} // namespace WatchFields

#endif
