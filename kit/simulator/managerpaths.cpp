// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "managerpaths.h"

#include <QtCore/QRegularExpression>

static bool isManagerPath(const QString &path)
{
    static const QRegularExpression form(QStringLiteral("^(/[A-Za-z0-9_]+)+$"));
    return form.match(path).hasMatch();
}

QString managersFault(const QStringList &paths)
{
    for (const QString &path : paths) {
        if (!isManagerPath(path))
            return QStringLiteral("\"%1\" is no path for a call manager; one is like /my/calls").arg(path);
        if (paths.count(path) > 1)
            return QStringLiteral("%1 is given twice").arg(path);
        for (const QString &other : paths) {
            if (other.startsWith(path + QLatin1Char('/')))
                return QStringLiteral("%1 lies among the calls of %2").arg(other, path);
        }
    }
    return {};
}
