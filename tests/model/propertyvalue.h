// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_PROPERTYVALUE_H
#define TESTS_PROPERTYVALUE_H

#include <string>
#include <string_view>
#include <vector>

/**
 * One of the values that applications give to properties in histories: every type that a property should
 * have, and many that it should not.
 *
 * A value of the wrong type is read as QVariant converts it. What comes of that stands in the row, so that the
 * model needs no Qt; a test holds the rows against QVariant.
 */
struct PropertyValue
{
    /** As histories and failures show it: BusMonitor writes a variant that holds the value the same way. */
    const char *text;
    const char *signature;
    /** What is sent, by `signature`: the number, or else the text (elements of "as" parted by commas). */
    double number;
    const char *string;
    /** What the host reads where it expects a boolean, an unsigned number, a text. */
    bool asBool;
    unsigned asNumber;
    const char *asText;
};

const std::vector<PropertyValue> &propertyValues();

/** The value that `rest` begins with, the longest if several fit; null when none does. */
const PropertyValue *propertyValueAt(std::string_view rest);

#endif
