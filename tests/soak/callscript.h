// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_CALLSCRIPT_H
#define TESTS_CALLSCRIPT_H

#include <cstdint>
#include <random>
#include <string>
#include <vector>

/** Statuses as applications number them. */
enum RemoteStatus : uint32_t { Disconnected = 1, Dialing = 2, Ringing = 3, Active = 5, Held = 7 };

/** One step of a call's life, in this order: what the host is told, what is awaited, what the call then says. */
struct Step
{
    enum Request { None, Mute, Unmute, Route };

    /** Method of the host's call object, such as "Answer"; empty when the host's user does nothing. */
    std::string hostCommand;
    /** Method of the call that this has to lead to. */
    std::string awaited;
    /** The new status; 0 leaves it as it is. */
    uint32_t status;
    /** What the call asks of the host's audio. */
    Request request = None;
    /** Interfaces that the call shows only now. */
    std::vector<std::string> interfaces = {};
};

/** The life of a call from the moment that the host shows it. */
struct CallScript
{
    const char *name;
    int weight; // how often, among all
    uint32_t status; // at the beginning
    bool holdable;
    std::vector<std::string> interfaces; // those that it begins with
    std::vector<Step> steps;

    bool isIncoming() const { return status == Ringing; }

    /** One of the scripts, each as often as its weight says. */
    static const CallScript &draw(std::mt19937 &random);
};

extern const std::string callInterface;
extern const std::string dtmfInterface;
extern const std::string audioInterface;

#endif
