// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "hostrequest.h"

static const struct
{
    const char *verb;
    const char *usage;
    int arguments;
} requests[] = {
    {"answer", "ADDRESS", 1},
    {"hangup", "ADDRESS", 1},
    {"hold", "ADDRESS on|off", 2},
    {"dtmf", "ADDRESS TONES", 2},
    {"mute", "on|off", 1},
    {"input", "ID", 1},
    {"output", "ID", 1},
    {"restart", "host", 1},
};

QString hostRequestFault(const QStringList &words)
{
    QStringList usages;
    for (const auto &request : requests) {
        usages.append(QStringLiteral("%1 %2").arg(QLatin1String(request.verb), QLatin1String(request.usage)));
        if (words.constFirst() == QLatin1String(request.verb) && words.size() - 1 == request.arguments)
            return {};
    }
    return QStringLiteral("nobody at a host can \"%1\"; there are %2")
        .arg(words.join(QLatin1Char(' ')), usages.join(QStringLiteral(", ")));
}
