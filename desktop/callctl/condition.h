// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef CALLCTL_CONDITION_H
#define CALLCTL_CONDITION_H

#include "hoststate.h"

#include <QtCore/QStringList>

/** Something that will perhaps hold of the host, for scripts that wait for it. */
class Condition
{
public:
    /** `call` is an id, or a part of a name or address; empty for any call. Throws Failure for an unknown word. */
    explicit Condition(const QString &word, const QString &call = {});

    /** The words there are. */
    static QStringList words();

    /**
     * Waits until it holds, for a host too, but no longer than so many seconds, unless negative. Gives the id of
     * the call that made it hold, if one did. Throws Failure when the time is over, or the bus gone.
     */
    QString wait(double seconds);

private:
    bool holds(const HostState &state, QString *id) const;
    void learn(const HostState &state);
    bool isMeant(const CallInfo &call) const;
    QString text() const;

    QString m_word;
    QString m_call;
    bool m_isId = false;
};

#endif
