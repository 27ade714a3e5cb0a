// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef KIT_CHECKER_VARIANTS_H
#define KIT_CHECKER_VARIANTS_H

#include <gio/gio.h>
#include <memory>
#include <string>
#include <string_view>

struct VariantRelease
{
    void operator()(GVariant *value) const { g_variant_unref(value); }
};

/** A GVariant of one's own. */
using Variant = std::unique_ptr<GVariant, VariantRelease>;

inline bool hasType(GVariant *value, const char *type) { return g_variant_is_of_type(value, G_VARIANT_TYPE(type)); }

inline Variant child(GVariant *container, gsize index) { return Variant(g_variant_get_child_value(container, index)); }

/** The text of a string, path or signature; the value has to live longer. */
inline std::string_view textOf(GVariant *value)
{
    gsize length = 0;
    const char *text = g_variant_get_string(value, &length);
    return {text, length};
}

/** The value as busctl's and gdbus's users write it, cut where it gets long. */
std::string printed(GVariant *value);

/** Calls `take(key, value)` for every entry of a dictionary, the value without the variant around it. */
template <typename Take>
void forEachEntry(GVariant *dictionary, Take take)
{
    for (gsize i = 0, count = g_variant_n_children(dictionary); i < count; ++i) {
        const Variant entry = child(dictionary, i);
        const Variant key = child(entry.get(), 0);
        Variant value = child(entry.get(), 1);
        if (hasType(value.get(), "v"))
            value = child(value.get(), 0);
        take(textOf(key.get()), value.get());
    }
}

#endif
