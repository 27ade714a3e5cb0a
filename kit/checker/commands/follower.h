// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef KIT_CHECKER_FOLLOWER_H
#define KIT_CHECKER_FOLLOWER_H

#include "analysis/analysis.h"
#include "commands/monitor.h"

/**
 * Follows the session bus until it is told to stop. What was there before is asked for; questions and answers are
 * seen on the bus like everything else.
 */
class Follower
{
public:
    Follower(const std::string &host, const std::string &application);

    /** False with `error` where there is no bus, or it must not be watched. */
    bool start(std::string *error);

    /** Goes on until SIGINT or SIGTERM, stop(), or the bus's end; false with `error` at the last. */
    bool run(std::string *error);

    /** Handles what has come so far, and lets time pass. */
    void handlePending();
    void stop() { m_isStopped = true; }

    /** Told of every message, before it is analysed. */
    std::function<void(const Monitor::Item &)> onMessage;

    /** Asks applications again and again for their objects, so that a call that nobody announces is found. */
    void keepAsking();

    Analysis &analysis() { return m_analysis; }
    Selection &selection() { return m_selection; }
    Bus &bus() { return *m_bus; }

private:
    void handle(const Monitor::Item &item);
    void learn(const std::string &unique);
    void askForWhatIs();
    void askAgain();
    void search();

    Analysis m_analysis;
    Selection m_selection;
    Monitor m_monitor;
    Connection m_connection;
    std::unique_ptr<Bus> m_bus;
    bool m_isStopped = false;
    bool m_isAsking = false;
    Time m_askedAt = 0;
    std::map<std::string, Time> m_toSearch; // applications without an object manager where it should be, and when
};

#endif
