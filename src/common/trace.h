// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef RINGLET_TRACE_H
#define RINGLET_TRACE_H

#include "common/host.h"

#include <QtCore/QLoggingCategory>

/**
 * Writes the trace line of an operation: its signature, the source line and the object. Stands first in
 * the operation's body, so that a log reads in the order of calls.
 */
#define RINGLET_TRACE() qCInfo(voicecall, "%s:%d %p", Q_FUNC_INFO, __LINE__, static_cast<const void *>(this))

/** Qt's default category, to be asked first: qDebug() and qInfo() format what nobody wants to read, too. */
inline const QLoggingCategory &defaultLog() { return *QLoggingCategory::defaultCategory(); }

#endif
