// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "signature.h"

static int depthChange(QChar c)
{
    return (c == QLatin1Char('(') || c == QLatin1Char('{')) - (c == QLatin1Char(')') || c == QLatin1Char('}'));
}

// Behind the first complete type from here on: an array is as long as what it is an array of.
static int endOfType(const QString &signature, int at)
{
    const int size = int(signature.size());
    while (at < size && signature.at(at) == QLatin1Char('a'))
        ++at;
    int depth = 0;
    while (at < size) {
        depth += depthChange(signature.at(at++));
        if (depth == 0)
            break;
    }
    return at;
}

QStringList Signature::types(const QString &signature)
{
    QStringList types;
    for (int from = 0, to = 0; from < int(signature.size()); from = to) {
        to = endOfType(signature, from);
        types.append(signature.mid(from, to - from));
    }
    return types;
}
