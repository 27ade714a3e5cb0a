// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "party.h"

#include <poll.h>
#include <stdexcept>
#include <unistd.h>

// A StatusChanged on the bus, header and body.
static constexpr size_t usualSize = 160;

const char *nameOf(Kind kind)
{
    static const char *const names[] = {"plug-in", "bare", "bare, sending", "bare, relaying", "libdbus"};
    return names[int(kind)];
}

Party::Party(const std::string &address, Kind kind, const Start &start)
    : receiver(loop, kind, start),
      application(loop, address, receiver)
{
}

void bringUp(Receiver &receiver, Application &application, CallKind kind, int calls)
{
    application.setSnapshot(kind, calls);
    application.registerManager();
    if (receiver.kind() == Kind::Peer)
        return;
    application.waitForSnapshots(1);
    if (calls > 0)
        receiver.nth(EventKind::CallAdded, calls);
    if (kind == CallKind::Full)
        expectAudioState(receiver, application, calls);
    application.settle();
}

void expectAudioState(const Receiver &receiver, Application &application, int calls)
{
    if (receiver.kind() != Kind::Bare && receiver.kind() != Kind::Peer)
        application.waitForCommands(calls);
}

RelayedSocket::RelayedSocket()
    : m_relay(Side::Applications, {RELAY}, {m_near.far, m_middle.near}),
      m_end(Side::Measured, {RELAY, "end"}, {m_control.far, m_middle.far})
{
    m_near.closeFar();
    m_control.closeFar();
}

Event RelayedSocket::next()
{
    Event event = {};
    pollfd descriptor = {m_control.near, POLLIN, 0};
    poll(&descriptor, 1, -1);
    if (read(m_control.near, &event, sizeof event) != sizeof event)
        throw std::runtime_error("the relay has ended");
    return event;
}

double RelayedSocket::oneWay()
{
    const char message[usualSize] = {};
    const int64_t begin = now();
    if (write(m_near.near, message, sizeof message) != sizeof message)
        throw std::runtime_error("the relay takes nothing");
    const Event event = next();
    char back[usualSize];
    if (read(m_near.near, back, sizeof back) <= 0)
        throw std::runtime_error("the relay gives nothing back");
    return double(event.at - begin);
}

double RelayedSocket::roundTrip()
{
    const char message[usualSize] = {};
    char back[usualSize];
    const int64_t begin = now();
    if (write(m_near.near, message, sizeof message) != sizeof message)
        throw std::runtime_error("the relay takes nothing");
    pollfd descriptor = {m_near.near, POLLIN, 0};
    poll(&descriptor, 1, -1);
    if (read(m_near.near, back, sizeof back) <= 0)
        throw std::runtime_error("the relay gives nothing back");
    const int64_t end = now();
    next();
    return double(end - begin);
}
