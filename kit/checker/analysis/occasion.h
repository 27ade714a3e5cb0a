// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef KIT_CHECKER_OCCASION_H
#define KIT_CHECKER_OCCASION_H

#include "analysis/finding.h"
#include "analysis/world.h"

#include <functional>

class Analysis;

/** What can happen. Checks run before the world changes by it, unless something else is said. */
enum class Event {
    HostAppeared, // the world knows it
    HostLeft,
    RegisterCalled, // RegisterCallManager, right or wrong
    RegisterFailed,
    Registered, // the host has answered
    Asked, // the host calls GetManagedObjects
    SnapshotAnswered, // of whatever type
    SnapshotFailed,
    ProbeAnswered, // the same, asked by somebody else
    ProbeFailed,
    Announced, // InterfacesAdded, wherever from and of whatever type
    Reported, // a report of an object that the host reads, by signal or snapshot
    Relayed, // the host tells that it shows the call; the world knows it
    Removed, // InterfacesRemoved, wherever from and of whatever type
    StatusSent, // StatusChanged, wherever from and of whatever type
    RequestSent, // RequestMute or RequestAudioRoute
    PropertyChanged,
    Commanded, // Call1 or DTMF1
    AudioTold, // UpdateAudioRoute, UpdateAudioRouteState
    CommandAnswered, // either of them; the command is `command`
    CommandFailed,
    CallEnds, // the host forgets the call; removed, or its application has left
    Left, // the application has left the bus
    Signalled, // any signal of an application
    HostSought, // somebody has asked whether the host is there; the world knows
    Compared, // a call of the application beside what the host shows of it, both asked for; one may be missing
};
constexpr std::size_t eventCount = static_cast<std::size_t>(Event::Compared) + 1;

/** Something that has happened, with all that concerns it. */
struct Occasion
{
    /** With a manager it is about the manager's path, unless something else is put into `object`. */
    Occasion(Analysis &analysis, World &world, Event event, const Message &message, Application *application = nullptr,
        Manager *manager = nullptr, std::string_view managerPath = {});

    Analysis &analysis;
    World &world;
    Event event;
    const Message &message;
    Application *application = nullptr;
    Manager *manager = nullptr;
    std::string_view managerPath;
    Call *call = nullptr;
    std::string_view object; // path of the object that it is about
    GVariant *interfaces = nullptr; // Announced, when it can be read; Reported, Relayed: a{sa{sv}}; Removed: as
    std::optional<unsigned> status; // StatusSent, when it can be read
    const Command *command = nullptr;
    bool isSnapshot = false; // Reported
    std::string_view shown; // Compared: the word for the status that the host shows; empty when it shows no such call

    Time now() const { return message.time; }

    /** Reports that the application breaks the rule, here and now; the index of the finding. */
    int report(const Rule &rule, const std::string &what, std::string_view detail = {}) const;

    /** The same with another severity than the rule's. */
    int report(const Rule &rule, Severity severity, const std::string &what, std::string_view detail = {}) const;

    /** Looks again after so many microseconds, unless application or call has gone by then. */
    void later(Time delay, const std::function<void(const Occasion &)> &look) const;
};

/** Code that looks at some kinds of events. Made once, as a static object of a file in rules/. */
class Check
{
public:
    using Look = void (*)(const Occasion &);
    Check(std::initializer_list<Event> events, Look look);
    Check(const Check &) = delete;
    Check &operator=(const Check &) = delete;
    ~Check() = default;

    static void run(const Occasion &occasion);
};

#endif
