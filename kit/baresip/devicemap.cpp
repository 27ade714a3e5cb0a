// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "devicemap.h"

#include <QtCore/QRegularExpression>

bool DeviceMap::add(const QString &pair)
{
    static const QRegularExpression form(QStringLiteral("^([^=]+)=([A-Za-z0-9_]+,[^\\s]*)$"));
    const QRegularExpressionMatch match = form.match(pair);
    if (!match.hasMatch() || m_devices.contains(match.captured(1)))
        return false;
    m_devices.insert(match.captured(1), match.captured(2));
    return true;
}
