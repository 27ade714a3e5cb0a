// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef KIT_CHECKER_SPELLING_H
#define KIT_CHECKER_SPELLING_H

#include <string_view>

namespace Spelling {
/** Whether `written` is not `meant`, but so near to it that nothing else can be meant. */
bool isSlip(std::string_view written, std::string_view meant);
} // namespace Spelling

#endif
