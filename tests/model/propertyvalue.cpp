// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "propertyvalue.h"

const std::vector<PropertyValue> &propertyValues()
{
    // The simplest first: shrinking goes towards the top.
    static const std::vector<PropertyValue> values{
        {"u0", "u", 0, "", false, 0, "0"},
        {"u1", "u", 1, "", true, 1, "1"},
        {"u2", "u", 2, "", true, 2, "2"},
        {"u3", "u", 3, "", true, 3, "3"},
        {"u4", "u", 4, "", true, 4, "4"},
        {"u5", "u", 5, "", true, 5, "5"},
        {"u6", "u", 6, "", true, 6, "6"},
        {"u7", "u", 7, "", true, 7, "7"},
        {"u8", "u", 8, "", true, 8, "8"},
        {"u4294967295", "u", 4294967295, "", true, 4294967295, "4294967295"},
        {"true", "b", 1, "", true, 1, "true"},
        {"false", "b", 0, "", false, 0, "false"},
        {R"("")", "s", 0, "", false, 0, ""},
        {R"("Ann")", "s", 0, "Ann", true, 0, "Ann"},
        {R"("sip:ann@example.org")", "s", 0, "sip:ann@example.org", true, 0, "sip:ann@example.org"},
        {R"("Zoë")", "s", 0, "Zoë", true, 0, "Zoë"},
        {R"("yes")", "s", 0, "yes", true, 0, "yes"},
        {R"("0")", "s", 0, "0", false, 0, "0"},
        {R"("5")", "s", 0, "5", true, 5, "5"},
        {R"("-5")", "s", 0, "-5", true, 0, "-5"},
        {R"("0x5")", "s", 0, "0x5", true, 0, "0x5"},
        {R"("true")", "s", 0, "true", true, 0, "true"},
        {R"("FALSE")", "s", 0, "FALSE", false, 0, "FALSE"},
        {"i0", "i", 0, "", false, 0, "0"},
        {"i7", "i", 7, "", true, 7, "7"},
        {"i-1", "i", -1, "", true, 4294967295, "-1"},
        {"n3", "n", 3, "", true, 3, "3"},
        {"q2", "q", 2, "", true, 2, "2"},
        {"x5", "x", 5, "", true, 5, "5"},
        {"x4294967301", "x", 4294967301, "", true, 5, "4294967301"},
        {"t7", "t", 7, "", true, 7, "7"},
        {"y65", "y", 65, "", true, 65, "A"},
        {"d5", "d", 5, "", true, 5, "5"},
        {"d6.5", "d", 6.5, "", true, 7, "6.5"},
        {"d0", "d", 0, "", false, 0, "0"},
        {"/c", "o", 0, "/c", false, 0, ""},
        {"g(u)", "g", 0, "u", false, 0, ""},
        {"v:u5", "v", 5, "", false, 0, ""},
        {"v:v:u5", "v", 5, "v", false, 0, ""},
        {R"(as["5"])", "as", 0, "5", false, 0, "5"},
        {R"(as["a","b"])", "as", 0, "a,b", false, 0, ""},
        {"ay[y53]", "ay", 53, "", true, 5, "5"},
        {"ai[i5]", "ai", 5, "", false, 0, ""},
        {R"(a{sv}{"k":u5})", "a{sv}", 5, "k", false, 0, ""},
        {"(u5)", "(u)", 5, "", false, 0, ""},
    };
    return values;
}

static bool startsWith(std::string_view whole, std::string_view start)
{
    return whole.substr(0, start.size()) == start;
}

const PropertyValue *propertyValueAt(std::string_view rest)
{
    const PropertyValue *longest = nullptr;
    for (const PropertyValue &value : propertyValues()) {
        const std::string_view text = value.text;
        if (startsWith(rest, text) && (!longest || text.size() > std::string_view(longest->text).size()))
            longest = &value;
    }
    return longest;
}
