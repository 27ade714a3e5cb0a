// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "receiver.h"

#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

std::vector<std::string> commandLine(Kind kind, const std::string &argument)
{
    if (kind == Kind::Plugin)
        return {BENCHHOST, argument, RINGLET_PLUGIN};
    if (kind == Kind::Sending)
        return {BARERECEIVER, argument, "--sends"};
    if (kind == Kind::Relaying)
        return {BARERECEIVER, argument, "--relays"};
    return {kind == Kind::Bare ? BARERECEIVER : BUSPEER, argument};
}

static std::vector<std::string> wrapped(const std::vector<std::string> &wrapper, const std::vector<std::string> &line)
{
    std::vector<std::string> all = wrapper;
    all.insert(all.end(), line.begin(), line.end());
    return all;
}

static std::vector<std::string> environment(const Start &start)
{
    // One seed for every run: where a hash puts its entries is not what differs between two.
    std::vector<std::string> variables = {"QT_HASH_SEED=0"};
    if (!start.logging.empty())
        variables.push_back("QT_LOGGING_RULES=" + start.logging);
    return variables;
}

static std::string newName()
{
    static int count = 0;
    return "org.tarnwickle.bench.n" + std::to_string(++count);
}

Receiver::Receiver(Loop &loop, Kind kind, const Start &start)
    : m_loop(loop),
      m_kind(kind),
      m_name(newName()),
      m_child(Side::Measured, wrapped(start.wrapper, commandLine(kind, m_name)), {m_control.far}, environment(start),
          start.errors)
{
    m_control.closeFar();
    m_loop.watch(m_control.near, [this] { read(); });
    next(EventKind::Ready);
}

Receiver::~Receiver()
{
    m_loop.forget(m_control.near);
    // It ends when nobody is there to ask it for anything.
    shutdown(m_control.near, SHUT_RDWR);
    m_child.wait();
}

void Receiver::request(Command command, uint32_t call)
{
    const Request request = {command, call};
    if (write(m_control.near, &request, sizeof request) != sizeof request)
        throw std::runtime_error(m_name + " takes no requests");
}

void Receiver::read()
{
    Event events[64];
    const ssize_t size = recv(m_control.near, events, sizeof events, MSG_DONTWAIT);
    if (size == 0)
        throw std::runtime_error(m_name + " has ended");
    for (ssize_t i = 0; i < size / ssize_t(sizeof(Event)); ++i)
        m_events[events[i].kind].push_back(events[i]);
}

Event Receiver::next(EventKind kind) { return nth(kind, 1); }

Event Receiver::nth(EventKind kind, int count)
{
    std::deque<Event> &events = m_events[kind];
    m_loop.waitUntil([&] { return int(events.size()) >= count; }, "event " + std::to_string(int(kind)));
    const Event event = events[size_t(count) - 1];
    events.erase(events.begin(), events.begin() + count);
    return event;
}

Event Receiver::memory()
{
    request(Command::Memory);
    return next(EventKind::Memory);
}
