// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "logging.h"

namespace Ringlet {

Q_LOGGING_CATEGORY(client, "ringlet.client", QtInfoMsg)

} // namespace Ringlet
