// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef KIT_CHECKER_REPORT_H
#define KIT_CHECKER_REPORT_H

#include "analysis/variants.h"
#include "analysis/world.h"

/** What an application's report of an object says: its interfaces with their properties, a{sa{sv}}. */
namespace Report {
/** The interface that was meant, when it is one of calls and written otherwise; else empty. */
std::string_view meantInterface(std::string_view written);

bool has(GVariant *interfaces, std::string_view interface);

/** Whether the object is, or is meant to be, a call or a part of one. */
bool concernsCalls(GVariant *interfaces);

/** The properties of the interface, a{sv}; null when it is not there. */
Variant propertiesOf(GVariant *interfaces, std::string_view interface);

/** What the host of this project makes of a value: its Qt converts where it can. */
std::optional<unsigned> asNumber(GVariant *value);
std::optional<bool> asTruth(GVariant *value);
std::optional<std::string> asText(GVariant *value);

/** Puts into the call what a host reads of the report that first shows it. */
void read(GVariant *interfaces, Call *call);
} // namespace Report

#endif
