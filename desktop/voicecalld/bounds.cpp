// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "bounds.h"

// Beyond it, an object path is of no use: the bus daemon refuses to pass on signals from there.
static constexpr int longestId = 1024;
// What a call and a provider take in a list at most, with three bytes for each character of a text.
static constexpr int providerBytes = longestId + 256;
static constexpr int callBytes = longestId + 1024;
static constexpr int shownTexts = 3;
static constexpr int characterBytes = 3;

// As many applications can have their full share.
static constexpr int shares = 5;

static int smaller(int bound, int other) { return bound == 0 ? other : qMin(bound, other); }

static Bounds::Most fittingNumbers(const Bounds::Most &most, int largestMessage, int bytesOfEach)
{
    const int inAll = smaller(most.inAll, largestMessage / bytesOfEach);
    return {smaller(most.ofEach, inAll / shares), inAll};
}

Bounds Bounds::fitting() const
{
    Bounds result = *this;
    if (largestMessage == 0 || longestText == 0)
        return result;
    const int bytesOfCall = callBytes + shownTexts * characterBytes * (longestText + 1);
    result.calls = fittingNumbers(calls, largestMessage, bytesOfCall);
    result.providers = fittingNumbers(providers, largestMessage, providerBytes);
    return result;
}

QString Bounds::cut(const QString &text) const
{
    if (longestText == 0 || text.size() <= longestText)
        return text;
    // Not between the halves of one character.
    const int end = text.at(longestText - 1).isHighSurrogate() ? longestText - 1 : longestText;
    return text.left(end) + QChar(0x2026);
}

bool Bounds::admitsId(const QString &id) const { return longestText == 0 || id.size() <= longestId; }
