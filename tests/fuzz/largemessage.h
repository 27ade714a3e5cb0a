// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_LARGEMESSAGE_H
#define TESTS_LARGEMESSAGE_H

#include "bytereader.h"
#include "message.h"

#include <algorithm>
#include <string>
#include <vector>

/** What the bus's reference library reads before it waits for somebody to take it. */
constexpr unsigned readingLimit = 63 << 20;

/** A size near one at which something ends: the advised size of messages, or now and then `greatest`. */
inline unsigned largeSize(ByteReader &bytes, unsigned greatest)
{
    return (bytes.oneIn(8) ? greatest : 1000000) - 1024 + unsigned(bytes.number(2)) % 2048;
}

/** Appends an array of so many bytes, as it is or as a variant. */
inline void appendLarge(DBusMessageIter *to, unsigned size, bool isVariant)
{
    const auto append = [size](DBusMessageIter *outer) {
        appendContainer(outer, DBUS_TYPE_ARRAY, "y", [size](DBusMessageIter *array) {
            const std::vector<char> block(size, 'x');
            const char *data = block.data();
            dbus_message_iter_append_fixed_array(array, DBUS_TYPE_BYTE, &data, int(size));
        });
    };
    if (isVariant)
        appendContainer(to, DBUS_TYPE_VARIANT, "ay", append);
    else
        append(to);
}

/** An object path of so many characters, at most those that a message can carry beside it. */
inline std::string largePath(unsigned size) { return "/" + std::string(std::min(size, 1000000U), 'p'); }

#endif
