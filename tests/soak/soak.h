// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_SOAK_H
#define TESTS_SOAK_H

#include "growth.h"
#include "inventory.h"
#include "load.h"
#include "options.h"
#include "privatebus.h"
#include "program.h"

#include <QtCore/QElapsedTimer>

/** One host under load, from its start to its end, and what is found of it. */
class Soak
{
public:
    explicit Soak(const Options &options);

    /** Runs it, telling on standard output; whether the host ended as it began. Throws std::runtime_error. */
    bool run();

private:
    void startHost();
    void checkHost();
    void loseAtCall();
    void sample();
    Inventory take() const;
    Inventory atRest() const;
    Inventory settled(const Inventory &begin) const;
    bool judgeCounts(const char *when, const Inventory &begin, const Inventory &end) const;
    bool judgeGrowth() const;
    bool judgeHeap(const Inventory &begin, const Inventory &end) const;
    bool endHost();
    void writeReport(const QVector<Inventory> &looks) const;

    const Options m_options;
    PrivateBus m_bus;
    QDBusConnection m_connection;
    Program m_host;
    Load m_load;
    Growth m_growth; // of resident memory with the number of calls, in the second half
    QElapsedTimer m_clock;
};

#endif
