// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BUSSERVER_SIGNATURE_H
#define BUSSERVER_SIGNATURE_H

#include <QtCore/QStringList>

/** Signatures of the bus. Those that came with a message are well-formed: the bus sees to it. */
namespace Signature {

/** The type of each argument: "a(ss)b" has "a(ss)" and "b". */
QStringList types(const QString &signature);

} // namespace Signature

#endif
