// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_OBJECTREPORT_H
#define TESTS_OBJECTREPORT_H

#include <cstdint>
#include <dbus/dbus.h>
#include <map>
#include <string>
#include <variant>
#include <vector>

/** What an object manager tells of one object: its path and its interfaces, of which the first has properties. */
struct ObjectReport
{
    using Value = std::variant<bool, uint32_t, std::string>;

    std::string path;
    std::vector<std::string> interfaces;
    std::map<std::string, Value> properties;

    /** Appends "oa{sa{sv}}". */
    void appendTo(DBusMessageIter *iterator) const;
};

/** Appends the objects as "a{oa{sa{sv}}}", which is what GetManagedObjects returns. */
void appendObjects(DBusMessage *message, const std::vector<ObjectReport> &objects);

#endif
