// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef SIMULATOR_NEWCALL_H
#define SIMULATOR_NEWCALL_H

#include <QtCore/QStringList>
#include <RingletClient/calldescription.h>

/** A call that a command asks for. */
struct NewCall
{
    /** Empty for the first application. */
    QString application;
    /** Path of the call manager that it is to belong to; empty for the first one. */
    QString manager;
    Ringlet::CallDescription description;
};

/** A call with the simulator's own address and name, and otherwise like `pattern`. */
NewCall newCall(bool incoming, const Ringlet::CallDescription &pattern = {});

/** Reads `CALL ADDRESS [OPTION...]`; what is wrong with it, empty if nothing. */
QString readNewCall(const QStringList &words, NewCall *call);

/** What is wrong with the name of a call or an application, which has no others in front of it; empty if nothing. */
QString nameFault(const QString &what, const QString &name);

/** "APPLICATION/CALL" or "CALL": the first part, empty if there is none, and the second. */
QString applicationOf(const QString &label);
QString callOf(const QString &label);

#endif
