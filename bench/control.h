// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BENCH_CONTROL_H
#define BENCH_CONTROL_H

#include <cstdint>
#include <ctime>
#include <unistd.h>

// What the driver and the measured programs say to each other, over a socket pair beside the bus: fixed
// records, so that nothing is parsed while time is taken. The programs find their end at controlDescriptor.

constexpr int controlDescriptor = 3;

enum class Command : uint32_t {
    Answer, // Accept to the call
    Hold, // SetHold(true)
    SendTones, // SendDTMF
    ChangeRoute, // the host's input device: UpdateAudioRoute to every call with audio control
    ChangeDevices, // the host's devices: UpdateAudioRouteState to every call with audio control
    Memory, // EventKind::Memory
    CountFrom, // callgrind counts from here
    CountUpTo, // callgrind writes what it has counted
    Trace, // `call` trace lines
};

struct Request
{
    Command command;
    /** The number of the call, in the order of their coming. */
    uint32_t call = 0;
};

enum class EventKind : uint32_t {
    Ready, // on the bus
    Status, // a call's statusChanged
    CallAdded,
    CallGone, // the call's object is destroyed
    ManagerGone, // the call manager's object is destroyed
    Done, // a request was carried out, from `at` on
    Memory,
};

struct Event
{
    EventKind kind = EventKind::Ready;
    /** When it happened, or the request began: nanoseconds of the clock that all processes share. */
    int64_t at = 0;
    /** Of a request: processor time that it took of the main thread, nanoseconds. */
    int64_t cost = 0;
    // Of the memory: bytes.
    int64_t heap = 0;
    int64_t resident = 0;
};

inline int64_t timeOf(clockid_t clock)
{
    timespec time = {};
    clock_gettime(clock, &time);
    return int64_t(time.tv_sec) * 1000000000 + time.tv_nsec;
}

inline int64_t now() { return timeOf(CLOCK_MONOTONIC); }

/** What happens at this moment. */
inline Event eventNow(EventKind kind)
{
    Event event = {};
    event.kind = kind;
    event.at = now();
    return event;
}

/** Tells the driver; a program whose driver has gone ends. */
inline void report(const Event &event)
{
    if (write(controlDescriptor, &event, sizeof event) != sizeof event)
        _exit(1);
}

// Calls whose URI begins so are played by a flooder: their status is received and not reported.
constexpr char floodUri[] = "flood:";

#endif
