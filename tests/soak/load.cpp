// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "load.h"

#include "waitfor.h"

#include <poll.h>
#include <stdexcept>

static constexpr size_t applicationsAtOnce = 16;
static constexpr int pollMs = 1000;
static constexpr int callsPerAudioChange = 10;
static const std::string residentName = "resident";

Load::Load(const std::string &address, unsigned seed) : m_address(address), m_host(address), m_random(seed)
{
    m_host.onShown = [this](const std::string &uri, const std::string &hostPath) {
        if (Application *application = find(uri))
            application->callShown(uri, hostPath);
    };
    m_host.onStatus = [this](const std::string &uri, int status) {
        if (Application *application = find(uri))
            application->statusShown(uri, status);
    };
    m_host.onGone = [this](const std::string &uri) { onGone(uri); };
}

void Load::welcomeResident()
{
    start({residentName, 0});
    while (!m_applications.at(residentName)->isRegistered())
        step();
}

void Load::dismissResident() { m_applications.erase(residentName); }

void Load::run(int registrations, int calls)
{
    const int goal = m_calls + calls;
    const int residentCalls = calls / 5;
    m_registrationsLeft = registrations;
    m_callsLeft = calls - residentCalls;
    m_applications.at(residentName)->takeCalls(residentCalls);
    while (m_calls < goal || m_applications.size() > 1)
        step();
}

void Load::step()
{
    startApplications();
    waitForTraffic();
    pump();
    letGo();
}

Application *Load::find(const std::string &uri)
{
    const auto found = m_applications.find(Application::ownerOf(uri));
    return found == m_applications.end() ? nullptr : found->second.get();
}

void Load::onGone(const std::string &uri)
{
    ++m_calls;
    if (Application *application = find(uri))
        application->callGone(uri);
    if (m_calls % callsPerAudioChange == 0)
        m_host.changeAudio();
    onCallEnded();
}

void Load::startApplications()
{
    while (m_registrationsLeft > 0 && m_applications.size() < applicationsAtOnce)
        start(plan());
}

// A few of each manner among many ordinary ones; what is left of the calls is shared out evenly.
Application::Plan Load::plan()
{
    static constexpr Manner manners[]
        = {Manner::Ordinary, Manner::Ordinary, Manner::Ordinary, Manner::Ordinary, Manner::Ordinary, Manner::Ordinary,
            Manner::Ordinary, Manner::Ordinary, Manner::HasCallAlready, Manner::HasCallAlready, Manner::RegistersTwice,
            Manner::AnswersLate, Manner::RefusesSnapshot, Manner::NeverAnswersSnapshot, Manner::Hurried};

    Application::Plan plan = {"a" + std::to_string(++m_serial), 0};
    plan.manner = manners[m_random() % std::size(manners)];
    plan.leavesCallUp = m_random() % 4 == 0;
    plan.seed = m_random();
    if (plan.manner == Manner::Hurried)
        return plan;
    const int most = 2 * m_callsLeft / m_registrationsLeft;
    plan.calls = m_registrationsLeft == 1 ? m_callsLeft : int(m_random() % unsigned(most + 1));
    m_callsLeft -= plan.calls;
    --m_registrationsLeft;
    return plan;
}

void Load::start(const Application::Plan &plan)
{
    m_applications.emplace(plan.name, std::make_unique<Application>(m_address, m_host, plan));
}

void Load::waitForTraffic()
{
    std::vector<pollfd> descriptors = {{m_host.descriptor(), POLLIN, 0}};
    for (const auto &[name, application] : m_applications)
        descriptors.push_back({application->descriptor(), POLLIN, 0});
    for (int waited = 0; poll(descriptors.data(), descriptors.size(), pollMs) == 0; waited += pollMs) {
        if (waited > waitLimitMs)
            throw std::runtime_error("nothing goes on any more");
        check();
    }
}

void Load::pump()
{
    m_host.pump();
    for (const auto &[name, application] : m_applications)
        application->pump();
}

void Load::letGo()
{
    for (auto application = m_applications.begin(); application != m_applications.end();) {
        if (application->first == residentName || !application->second->isDone()) {
            ++application;
            continue;
        }
        ++(application->second->isHurried() ? m_hurried : m_registrations);
        application = m_applications.erase(application);
    }
}
