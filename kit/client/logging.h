// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef RINGLETCLIENT_LOGGING_H
#define RINGLETCLIENT_LOGGING_H

#include <QtCore/QLoggingCategory>

namespace Ringlet {

/** "ringlet.client": what goes over the bus at debug level, misuse of the library as warnings. */
Q_DECLARE_LOGGING_CATEGORY(client)

} // namespace Ringlet

#endif
