// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALL_VOICECALLGLOBAL_H
#define VOICECALL_VOICECALLGLOBAL_H

#include <QtCore/QLoggingCategory>
#include <QtCore/QtGlobal>

#if defined(VOICECALL_LIBRARY)
#define VOICECALL_EXPORT Q_DECL_EXPORT
#else
#define VOICECALL_EXPORT Q_DECL_IMPORT
#endif

/**
 * The logging category "voicecall" that host and plug-ins share.
 *
 * Warnings and worse are shown by default; debug and info, which trace every operation, are off until
 * a filter rule such as "voicecall.info=true" asks for them.
 */
VOICECALL_EXPORT const QLoggingCategory &voicecall();

#endif
