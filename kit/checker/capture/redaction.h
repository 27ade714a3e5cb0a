// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef KIT_CHECKER_REDACTION_H
#define KIT_CHECKER_REDACTION_H

#include "analysis/variants.h"

#include <map>

/**
 * Replaces what tells who spoke with whom: names and addresses of calls, tones, names of devices. The same text is
 * replaced by the same word, and what is of a wrong type keeps it, so that a checker finds the same.
 */
class Redaction
{
public:
    /** Changes the message's arguments, if need be. */
    void apply(GDBusMessage *message);

private:
    Variant redacted(GVariant *value);
    Variant veiled(GVariant *value);
    std::string word(std::string_view text);

    std::map<std::string, std::size_t, std::less<>> m_words;
};

#endif
