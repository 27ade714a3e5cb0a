// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BUSSERVER_PLAINVALUE_H
#define BUSSERVER_PLAINVALUE_H

#include <QtCore/QVariantMap>

/**
 * Values that may outlive the message that they came in.
 *
 * The bus library decodes simple values only. Any other one stays unread and holds on to its whole message, and
 * a file descriptor stays open as long as its value lives. An empty signature is a value that the library reads
 * but refuses to send: who has kept one can never answer with it.
 */
namespace PlainValue {

/** Whether it is a basic value, a byte array or an array of texts, and can be sent again. */
bool isPlain(const QVariant &value);

bool arePlain(const QVariantMap &values);

/** Those that are plain, also inside variants, which are taken off; the others are left out. */
QVariantMap plain(const QVariantMap &values);

} // namespace PlainValue

#endif
