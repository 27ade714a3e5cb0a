// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef KIT_CHECKER_COMPARISON_H
#define KIT_CHECKER_COMPARISON_H

#include "analysis/analysis.h"

namespace Comparison {
/**
 * Sets the applications' calls beside those that the desktop host shows, from its answer to GetManagedObjects. A
 * call there names its application as the provider ".../UNIQUE-NAME@PATH".
 */
void compare(Analysis &analysis, const Message &hostCalls);
} // namespace Comparison

#endif
