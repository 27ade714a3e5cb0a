// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BENCH_APPLICATION_H
#define BENCH_APPLICATION_H

#include "busconnection.h"
#include "loop.h"
#include "receiver.h"

#include <memory>

/** What a call is made of. */
enum class CallKind {
    Plain, // zelkovar.Call.Call1 alone
    Full, // with tones and audio control
    Flood, // plain, and nothing of it is reported
};

/** An application on a connection of its own. Its calls are /app/0, /app/1, …, its call managers /app, /app1, … */
class Application
{
public:
    Application(Loop &loop, const std::string &address, const Receiver &receiver);
    /** Leaves the bus. */
    ~Application();

    /** Calls that the snapshot tells of. */
    void setSnapshot(CallKind kind, int count);
    /** The snapshot is sent by sendSnapshot() only, not at once. */
    void holdSnapshot() { m_isHeld = true; }

    /** Registers its next call manager; nanoseconds from the call to the answer. */
    int64_t registerManager();
    /** Waits for the request if need be; when it was sent. */
    int64_t sendSnapshot();
    /** Waits until so many snapshots were asked for and sent. */
    void waitForSnapshots(int count);

    /** Waits until everything that the receiver has subscribed to so far is known to the bus. */
    void settle();

    // When they were sent.
    int64_t announce(CallKind kind, uint32_t call);
    int64_t withdraw(uint32_t call);
    int64_t changeStatus(uint32_t call, uint32_t status);

    /** Waits until all that was sent has left. */
    void flush() { m_bus.flush(); }

    /** Waits until so many commands have come since the last were waited for; when the last one came. */
    int64_t waitForCommands(int count);

private:
    void pump();
    void handle(const Message &message);
    void answerSnapshot();
    void waitForAnswer(const Message &call);

    Loop &m_loop;
    std::string m_receiver;
    BusConnection m_bus;
    CallKind m_kind = CallKind::Plain;
    int m_snapshotSize = 0;
    bool m_isHeld = false;
    int m_managers = 0;
    uint32_t m_awaited = 0;
    int64_t m_answeredAt = 0;
    std::unique_ptr<Message> m_snapshotRequest;
    int m_snapshots = 0;
    int m_commands = 0;
    int64_t m_commandAt = 0;
};

#endif
