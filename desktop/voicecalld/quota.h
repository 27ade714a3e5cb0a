// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALLD_QUOTA_H
#define VOICECALLD_QUOTA_H

#include "bounds.h"

#include <QtCore/QHash>

/** Shares out what there is room for, so that one application leaves some to the others. */
class Quota
{
public:
    /** `kind` names in a warning what is shared out. */
    Quota(const char *kind, const Bounds::Most &most) : m_kind(kind), m_most(most) { }

    /** Whether there was room for one more; the first time that there is none, a warning says so. */
    bool take(const QString &application);

    /** What was taken is free again. */
    void giveBack(const QString &application);

private:
    void warn();

    const char *m_kind;
    Bounds::Most m_most;
    QHash<QString, int> m_taken;
    int m_takenInAll = 0;
    bool m_hasWarned = false;
};

#endif
