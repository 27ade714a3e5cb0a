// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_LOAD_H
#define TESTS_LOAD_H

#include "application.h"

#include <functional>
#include <map>

/**
 * Applications that come, have calls, and go, many at the same time; and one that stays, the resident, which has
 * a fifth of the calls: what an application leaves behind while it is there does not go with it. What they do is
 * drawn at random, and the same for the same seed.
 */
class Load
{
public:
    Load(const std::string &address, unsigned seed);

    // Each of these returns when it is done, and throws std::runtime_error when nothing goes on for a while.

    /** The resident registers. */
    void welcomeResident();
    /** The resident leaves. */
    void dismissResident();
    /**
     * So many applications register and leave, with so many calls between them and the resident, which has come
     * before. At the end the host shows none of the calls any more.
     */
    void run(int registrations, int calls);

    /** Called whenever a call has ended. */
    std::function<void()> onCallEnded = [] {};
    /** Called whenever nothing has gone on for a second; throws when there is no use in waiting. */
    std::function<void()> check = [] {};

    /** The bus name of a connection that answers no call. */
    const std::string &silentPeer() const { return m_host.busName(); }

    // So far:
    int registrations() const { return m_registrations; }
    int calls() const { return m_calls; }
    /** Applications beside those, that left without waiting for the answer to their registration. */
    int hurried() const { return m_hurried; }

private:
    void step();
    void startApplications();
    Application::Plan plan();
    void start(const Application::Plan &plan);
    void waitForTraffic();
    void pump();
    void letGo();
    void onGone(const std::string &uri);
    Application *find(const std::string &uri);

    const std::string m_address;
    HostClient m_host;
    std::mt19937 m_random;
    std::map<std::string, std::unique_ptr<Application>> m_applications;
    int m_serial = 0;
    int m_registrationsLeft = 0;
    int m_callsLeft = 0;
    int m_registrations = 0;
    int m_calls = 0;
    int m_hurried = 0;
};

#endif
