// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "application.h"

#include <algorithm>

static constexpr size_t callsAtOnce = 3;
static const std::string managerPath = "/soak";

Application::Application(const std::string &address, HostClient &host, const Plan &plan)
    : m_bus(address),
      m_host(host),
      m_plan(plan),
      m_random(plan.seed)
{
    if (m_plan.manner == Manner::HasCallAlready && m_plan.calls > 0)
        beginCall();
    if (m_plan.manner == Manner::RegistersTwice)
        registerCallManager();
    registerCallManager();
}

void Application::registerCallManager()
{
    m_registration = m_bus.send(
        Message::call({HostClient::name, "/zelkovar/call/service", "zelkovar.Call.Service1"}, "RegisterCallManager")
            .objectPath(managerPath));
}

void Application::pump()
{
    m_bus.pump([this](const Message &message) { handle(message); });
}

void Application::handle(const Message &message)
{
    if (message.repliesTo() == m_registration) {
        m_registered = true;
        beginCalls();
    } else if (message.isCall() && message.member() == "GetManagedObjects") {
        answerSnapshot(message);
    } else if (message.isCall()) {
        if (message.wantsReply())
            m_bus.send(Message::reply(message));
        for (const auto &call : m_calls) {
            if (call->path() == message.path())
                call->commanded(message.member());
        }
    }
}

void Application::answerSnapshot(const Message &request)
{
    if (m_plan.manner == Manner::RefusesSnapshot)
        m_bus.send(Message::error(request, DBUS_ERROR_FAILED));
    else if (m_plan.manner == Manner::AnswersLate && m_plan.calls > 0)
        m_heldSnapshot = std::make_unique<Message>(dbus_message_ref(request.raw()));
    else if (m_plan.manner != Manner::NeverAnswersSnapshot)
        sendSnapshot(request);
}

void Application::sendSnapshot(const Message &request)
{
    std::vector<ObjectReport> objects;
    for (const auto &call : m_calls)
        objects.push_back(call->report());
    const Message reply = Message::reply(request);
    appendObjects(reply.raw(), objects);
    m_bus.send(reply);
}

Call &Application::beginCall()
{
    const std::string uri = m_plan.name + '_' + std::to_string(++m_begun);
    const bool staysUp = m_plan.leavesCallUp && m_begun == m_plan.calls;
    m_calls.push_back(std::make_unique<Call>(m_bus, m_host, CallScript::draw(m_random), managerPath, uri, staysUp));
    return *m_calls.back();
}

void Application::beginCalls()
{
    while (m_begun < m_plan.calls && m_calls.size() < callsAtOnce)
        beginCall().announce();
}

void Application::takeCalls(int more)
{
    m_plan.calls += more;
    beginCalls();
}

void Application::callShown(const std::string &uri, const std::string &hostPath)
{
    if (m_heldSnapshot) {
        sendSnapshot(*m_heldSnapshot);
        m_heldSnapshot.reset();
    }
    if (Call *call = find(uri))
        call->shown(hostPath);
}

void Application::statusShown(const std::string &uri, int hostStatus)
{
    if (Call *call = find(uri))
        call->statusShown(hostStatus);
}

Call *Application::find(const std::string &uri) const
{
    const auto found
        = std::find_if(m_calls.begin(), m_calls.end(), [&](const auto &call) { return call->uri() == uri; });
    return found == m_calls.end() ? nullptr : found->get();
}

void Application::callGone(const std::string &uri)
{
    m_calls.erase(std::remove_if(m_calls.begin(), m_calls.end(), [&](const auto &call) { return call->uri() == uri; }),
        m_calls.end());
    beginCalls();
}

bool Application::isDone() const
{
    const auto isOver = [](const auto &call) { return call->isOver(); };
    const bool hasLivedAll
        = m_registered && m_begun == m_plan.calls && std::all_of(m_calls.begin(), m_calls.end(), isOver);
    // A call that is over is withdrawn, and waited for; but for the last one perhaps.
    const size_t left = m_plan.leavesCallUp ? 1 : 0;
    return isHurried() || (hasLivedAll && m_calls.size() <= left);
}
