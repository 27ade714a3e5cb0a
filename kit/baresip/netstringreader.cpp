// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "netstringreader.h"

#include <algorithm>

static constexpr int mostDigits = 7; // as many as maximumSize has

bool NetstringReader::read(const QByteArray &bytes, QList<QByteArray> *messages)
{
    if (m_isBroken)
        return false;
    m_pending += bytes;
    QByteArray message;
    Step step = take(&message);
    for (; step == Step::Done; step = take(&message))
        messages->append(message);
    m_isBroken = step == Step::Broken;
    if (m_isBroken)
        m_pending.clear();
    return !m_isBroken;
}

void NetstringReader::reset()
{
    m_pending.clear();
    m_isBroken = false;
}

QByteArray NetstringReader::frame(const QByteArray &message)
{
    return QByteArray::number(message.size()) + ':' + message + ',';
}

NetstringReader::Step NetstringReader::take(QByteArray *message)
{
    const auto isDigit = [](char character) { return character >= '0' && character <= '9'; };
    const auto colon = std::find_if_not(m_pending.cbegin(), m_pending.cend(), isDigit);
    const int digits = int(colon - m_pending.cbegin());
    if (digits > mostDigits)
        return Step::Broken;
    if (colon == m_pending.cend())
        return Step::Incomplete;
    const int size = m_pending.left(digits).toInt();
    if (digits == 0 || *colon != ':' || size > maximumSize)
        return Step::Broken;

    const int comma = digits + 1 + size;
    if (m_pending.size() <= comma)
        return Step::Incomplete;
    if (m_pending.at(comma) != ',')
        return Step::Broken;
    *message = m_pending.mid(digits + 1, size);
    m_pending.remove(0, comma + 1);
    return Step::Done;
}
