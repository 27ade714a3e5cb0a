// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_BUSDAEMON_H
#define TESTS_BUSDAEMON_H

#include <QtCore/QtGlobal>

/** The daemon of the test's own session bus, which was started before the tests. */
namespace BusDaemon {

/** Its process id; 0 when it does not tell. Ask before it is stopped. */
qint64 processId();

} // namespace BusDaemon

#endif
