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

static int fittingNumber(int most, int largestMessage, int bytesOfEach)
{
    const int room = largestMessage / bytesOfEach;
    return most == 0 ? room : qMin(most, room);
}

Bounds Bounds::fitting() const
{
    Bounds result = *this;
    if (largestMessage == 0 || longestText == 0)
        return result;
    const int bytesOfCall = callBytes + shownTexts * characterBytes * (longestText + 1);
    result.calls.inAll = fittingNumber(calls.inAll, largestMessage, bytesOfCall);
    result.providers.inAll = fittingNumber(providers.inAll, largestMessage, providerBytes);
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
