// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BENCH_PARTY_H
#define BENCH_PARTY_H

#include "application.h"

/** What results call a program of this kind. */
const char *nameOf(Kind kind);

/** Registers, with so many calls in the snapshot, and waits until their signals are subscribed to. */
void bringUp(Receiver &receiver, Application &application, CallKind kind, int calls);
/** Waits for the audio state of so many calls with audio control, if the program sends any by itself. */
void expectAudioState(const Receiver &receiver, Application &application, int calls);

/** A measured program and an application at it. */
class Party
{
public:
    Party(const std::string &address, Kind kind, const Start &start = {});

    void bringUp(CallKind kind, int calls) { ::bringUp(receiver, application, kind, calls); }
    void expectAudioState(int calls) { ::expectAudioState(receiver, application, calls); }

    const char *who() const { return nameOf(receiver.kind()); }

    Loop loop;
    Receiver receiver;
    Application application;
};

/** A message's way through a relay process, which is what a bus daemon does at the least. */
class RelayedSocket
{
public:
    RelayedSocket();

    /** Nanoseconds until a message of a usual size is at the other end. */
    double oneWay();
    /** Nanoseconds until it has come back. */
    double roundTrip();

private:
    Event next();

    SocketPair m_near; // ours and the relay's
    SocketPair m_middle; // the relay's and the end's
    SocketPair m_control; // on which the end reports
    Child m_relay;
    Child m_end;
};

#endif
