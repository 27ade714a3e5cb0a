// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_LEAK_H
#define TESTS_LEAK_H

#include <QtCore/QString>

namespace Leak {

/**
 * Loses something for good, so that it can be seen that it is noticed: a "descriptor", "memory", "object",
 * "pending-call", "rule" or "thread"; nothing for anything else.
 */
void happen(const QString &kind);

/** Loses 11 bytes for each call, if that is the kind: "call-memory". */
void happenAtCall(const QString &kind);

} // namespace Leak

#endif
