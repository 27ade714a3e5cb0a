// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "application.h"

#include "objectreport.h"

static std::string callPath(uint32_t call) { return "/app/" + std::to_string(call); }

static ObjectReport report(CallKind kind, uint32_t call)
{
    ObjectReport report;
    report.path = callPath(call);
    report.interfaces = {"zelkovar.Call.Call1"};
    if (kind == CallKind::Full)
        report.interfaces.insert(report.interfaces.end(), {"zelkovar.Call.DTMF1", "zelkovar.Call.AudioControl1"});
    const std::string scheme = kind == CallKind::Flood ? floodUri : "sip:";
    report.properties = {{"Incoming", true}, {"Status", uint32_t(3)}, {"Holdable", true},
        {"RemoteName", std::string("Alice Example")}, {"Uri", scheme + "alice@example.org"}};
    return report;
}

Application::Application(Loop &loop, const std::string &address, const Receiver &receiver)
    : m_loop(loop),
      m_receiver(receiver.name()),
      m_bus(address)
{
    m_loop.watch(m_bus.descriptor(), [this] { pump(); });
}

Application::~Application() { m_loop.forget(m_bus.descriptor()); }

void Application::setSnapshot(CallKind kind, int count)
{
    m_kind = kind;
    m_snapshotSize = count;
}

int64_t Application::registerManager()
{
    const std::string path = m_managers == 0 ? "/app" : "/app" + std::to_string(m_managers);
    Message call
        = Message::call({m_receiver, "/zelkovar/call/service", "zelkovar.Call.Service1"}, "RegisterCallManager");
    call.objectPath(path);
    ++m_managers;
    const int64_t begin = now();
    waitForAnswer(call);
    return m_answeredAt - begin;
}

void Application::waitForAnswer(const Message &call)
{
    m_answeredAt = 0;
    m_awaited = m_bus.send(call);
    m_loop.waitUntil([this] { return m_answeredAt != 0; }, "an answer");
}

void Application::settle()
{
    // Answered behind what was sent before, on the same connection.
    waitForAnswer(Message::call({m_receiver, "/", "org.freedesktop.DBus.Peer"}, "Ping"));
}

int64_t Application::sendSnapshot()
{
    m_loop.waitUntil([this] { return m_snapshotRequest != nullptr; }, "GetManagedObjects");
    const int64_t at = now();
    answerSnapshot();
    return at;
}

void Application::waitForSnapshots(int count)
{
    m_loop.waitUntil([=] { return m_snapshots >= count; }, "GetManagedObjects");
}

void Application::answerSnapshot()
{
    std::vector<ObjectReport> objects;
    for (int i = 0; i < m_snapshotSize; ++i)
        objects.push_back(report(m_kind, uint32_t(i)));
    const Message reply = Message::reply(*m_snapshotRequest);
    appendObjects(reply.raw(), objects);
    m_snapshotRequest.reset();
    ++m_snapshots;
    m_bus.send(reply);
    m_bus.flush();
}

int64_t Application::announce(CallKind kind, uint32_t call)
{
    const Message message = Message::signal("/app", "org.freedesktop.DBus.ObjectManager", "InterfacesAdded");
    DBusMessageIter arguments;
    dbus_message_iter_init_append(message.raw(), &arguments);
    report(kind, call).appendTo(&arguments);
    const int64_t at = now();
    m_bus.send(message);
    return at;
}

int64_t Application::withdraw(uint32_t call)
{
    Message message = Message::signal("/app", "org.freedesktop.DBus.ObjectManager", "InterfacesRemoved");
    message.objectPath(callPath(call)).strings({"zelkovar.Call.Call1"});
    const int64_t at = now();
    m_bus.send(message);
    return at;
}

int64_t Application::changeStatus(uint32_t call, uint32_t status)
{
    Message message = Message::signal(callPath(call), "zelkovar.Call.Call1", "StatusChanged");
    message.number(status);
    const int64_t at = now();
    m_bus.send(message);
    return at;
}

int64_t Application::waitForCommands(int count)
{
    m_loop.waitUntil([=] { return m_commands >= count; }, "commands");
    m_commands -= count;
    return m_commandAt;
}

void Application::pump()
{
    m_bus.pump([this](const Message &message) { handle(message); });
}

void Application::handle(const Message &message)
{
    if (message.isCall() && message.member() == "GetManagedObjects") {
        m_snapshotRequest = std::make_unique<Message>(dbus_message_ref(message.raw()));
        if (!m_isHeld)
            answerSnapshot();
    } else if (message.isCall()) {
        m_commandAt = now();
        ++m_commands;
        if (message.wantsReply())
            m_bus.send(Message::reply(message));
    } else if (message.repliesTo() == m_awaited) {
        m_answeredAt = now();
    }
}
