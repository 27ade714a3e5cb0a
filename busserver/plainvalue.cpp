// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "plainvalue.h"

#include <QtDBus/QDBusObjectPath>
#include <QtDBus/QDBusSignature>
#include <QtDBus/QDBusVariant>
#include <algorithm>

bool PlainValue::isPlain(const QVariant &value)
{
    const int type = value.userType();
    if (type == qMetaTypeId<QDBusSignature>())
        return !value.value<QDBusSignature>().signature().isEmpty();
    return value.isValid() && (type < QMetaType::User || type == qMetaTypeId<QDBusObjectPath>());
}

bool PlainValue::arePlain(const QVariantMap &values) { return std::all_of(values.cbegin(), values.cend(), isPlain); }

static QVariant unwrapped(QVariant value)
{
    while (value.userType() == qMetaTypeId<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

QVariantMap PlainValue::plain(const QVariantMap &values)
{
    QVariantMap kept;
    for (auto value = values.cbegin(); value != values.cend(); ++value) {
        const QVariant inner = unwrapped(value.value());
        if (isPlain(inner))
            kept.insert(value.key(), inner);
    }
    return kept;
}
