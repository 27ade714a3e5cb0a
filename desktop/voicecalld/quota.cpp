// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "quota.h"

#include <voicecallmanagerinterface.h>

static bool isReached(int most, int count) { return most != 0 && count >= most; }

bool Quota::take(const QString &application)
{
    if (isReached(m_most.inAll, m_takenInAll) || isReached(m_most.ofEach, m_taken.value(application))) {
        warn();
        return false;
    }
    ++m_taken[application];
    ++m_takenInAll;
    return true;
}

void Quota::giveBack(const QString &application)
{
    --m_takenInAll;
    if (--m_taken[application] == 0)
        m_taken.remove(application);
}

void Quota::warn()
{
    if (m_hasWarned)
        return;
    m_hasWarned = true;
    qCWarning(voicecall,
        "Too many %s: %d of one application are shown, and %d in all; the others are hidden as long as"
        " there is no room",
        m_kind, m_most.ofEach, m_most.inAll);
}
