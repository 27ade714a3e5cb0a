// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef KIT_CHECKER_EVENTTEXT_H
#define KIT_CHECKER_EVENTTEXT_H

#include "analysis/occasion.h"

namespace EventText {
/** What has happened, in a few words; empty for what nobody wants to read. */
std::string of(const Occasion &occasion);
} // namespace EventText

#endif
