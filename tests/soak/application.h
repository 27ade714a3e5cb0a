// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_SOAK_APPLICATION_H
#define TESTS_SOAK_APPLICATION_H

#include "call.h"

#include <memory>
#include <random>
#include <vector>

/** How an application goes about its registration. */
enum class Manner {
    Ordinary,
    HasCallAlready, // the first call is in the snapshot
    RegistersTwice,
    AnswersLate, // sends the snapshot when the host has seen a call of which it tells once more
    RefusesSnapshot,
    NeverAnswersSnapshot,
    Hurried, // leaves behind its registration, before the answer
};

/** An application with a connection of its own, which registers, has calls, and leaves when this object goes. */
class Application
{
public:
    struct Plan
    {
        std::string name; // all of its calls' URIs begin with it
        int calls;
        Manner manner = Manner::Ordinary;
        bool leavesCallUp = false; // the last one
        unsigned seed = 0;
    };

    Application(const std::string &address, HostClient &host, const Plan &plan);

    int descriptor() const { return m_bus.descriptor(); }
    void pump();

    /** Plans so many calls more. */
    void takeCalls(int more);

    void callShown(const std::string &uri, const std::string &hostPath);
    void statusShown(const std::string &uri, int hostStatus);
    void callGone(const std::string &uri);

    bool isRegistered() const { return m_registered; }
    bool isHurried() const { return m_plan.manner == Manner::Hurried; }
    /** Whether its plan is carried out, and it may leave. */
    bool isDone() const;

    /** The name of the application that has the call with this URI. */
    static std::string ownerOf(const std::string &uri) { return uri.substr(0, uri.find('_')); }

private:
    void registerCallManager();
    void handle(const Message &message);
    void answerSnapshot(const Message &request);
    void sendSnapshot(const Message &request);
    Call *find(const std::string &uri) const;
    Call &beginCall();
    void beginCalls();

    BusConnection m_bus;
    HostClient &m_host;
    Plan m_plan;
    std::mt19937 m_random;
    std::vector<std::unique_ptr<Call>> m_calls;
    std::unique_ptr<Message> m_heldSnapshot;
    uint32_t m_registration = 0;
    bool m_registered = false;
    int m_begun = 0;
};

#endif
