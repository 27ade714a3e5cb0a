// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "answering.h"

#include "typedvalue.h"
#include "words.h"

using Read = QString (*)(const QStringList &words, Answering *answering);

static QString readNow(const QStringList &, Answering *) { return {}; }

static QString readNever(const QStringList &, Answering *answering)
{
    answering->isGiven = false;
    return {};
}

static QString readLate(const QStringList &words, Answering *answering)
{
    return readSeconds(words.constFirst(), &answering->delayMs);
}

static QString readError(const QStringList &words, Answering *answering)
{
    answering->error = words.constFirst();
    return dottedNameFault(answering->error);
}

static QString readWith(const QStringList &words, Answering *answering)
{
    answering->hasValues = true;
    return readValues(words, &answering->values);
}

static const struct
{
    const char *name;
    int minimum;
    int maximum;
    Read read;
} manners[] = {
    {"now", 0, 0, readNow},
    {"never", 0, 0, readNever},
    {"late", 1, 1, readLate},
    {"error", 1, 1, readError},
    {"with", 0, 32, readWith},
};

QString readAnswering(const QStringList &words, Answering *answering)
{
    const QStringList arguments = words.mid(1);
    for (const auto &manner : manners) {
        if (words.constFirst() == QLatin1String(manner.name) && arguments.size() >= manner.minimum
            && arguments.size() <= manner.maximum)
            return manner.read(arguments, answering);
    }
    return QStringLiteral(
        "\"%1\" is no way to answer; there are now, never, late SECONDS, error NAME and with VALUE...")
        .arg(words.join(QLatin1Char(' ')));
}
