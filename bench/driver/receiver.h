// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BENCH_RECEIVER_H
#define BENCH_RECEIVER_H

#include "child.h"
#include "control.h"
#include "loop.h"

#include <deque>
#include <map>

/** The programs that are measured against each other. */
enum class Kind {
    Plugin, // the plug-in, in a host
    Bare, // Qt's bus layer alone
    Sending, // the same, which also sends what the plug-in does when a call comes or goes
    Relaying, // the same, through adaptors of its object as the plug-in does
    Peer, // the bus's reference library
};

/** How a measured program is started. */
struct Start
{
    /** Goes before its command line: a checker. */
    std::vector<std::string> wrapper;
    /** Logging rules of Qt; none by default, as in a host that sets none. */
    std::string logging;
    /** The file that it logs to. */
    std::string errors = "/dev/null";
};

/** A measured program on the bus of the environment, with the events that it has reported. */
class Receiver
{
public:
    Receiver(Loop &loop, Kind kind, const Start &start = {});
    ~Receiver();

    /** The name that it owns on the bus. */
    const std::string &name() const { return m_name; }
    pid_t process() const { return m_child.id(); }
    Kind kind() const { return m_kind; }

    void request(Command command, uint32_t call = 0);
    /** Waits for the next event of this kind, and forgets it. */
    Event next(EventKind kind);
    /** Waits until so many of a kind have come since the last one was asked for; the last of them. */
    Event nth(EventKind kind, int count);

    /** The memory of its process. */
    Event memory();

private:
    void read();

    Loop &m_loop;
    Kind m_kind;
    std::string m_name;
    SocketPair m_control;
    Child m_child;
    std::map<EventKind, std::deque<Event>> m_events;
};

/** Command line of the program of a kind, with these arguments. */
std::vector<std::string> commandLine(Kind kind, const std::string &argument);

#endif
