// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef KIT_CHECKER_WORLD_H
#define KIT_CHECKER_WORLD_H

#include "analysis/message.h"

#include <any>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <typeindex>
#include <vector>

template <typename Value>
using ByName = std::map<std::string, Value, std::less<>>;

/** Statuses of a call, as applications number them. */
namespace Status {
constexpr unsigned ended = 1;
constexpr unsigned dialing = 2;
constexpr unsigned incoming = 3;
constexpr unsigned active = 5;
constexpr unsigned held = 7;
constexpr unsigned firstUnknown = 8;

constexpr bool isFinal(unsigned status) { return status == 0 || status == ended || status == 4; }
constexpr bool isActive(unsigned status) { return status == active || status == 6; }

/** What a host shows for it: "incoming", "disconnected", ... */
std::string_view wordOf(unsigned status);
} // namespace Status

/** What a rule remembers of something, one value for each type. */
class Memory
{
public:
    template <typename Value>
    Value &of()
    {
        std::any &slot = m_values[std::type_index(typeid(Value))];
        if (!slot.has_value())
            slot = Value();
        return *std::any_cast<Value>(&slot);
    }

private:
    std::map<std::type_index, std::any> m_values;
};

/** A command or an update that the host has sent to a call. */
struct Command
{
    std::uint32_t serial = 0;
    std::string member;
    bool flag = false; // SetHold: hold or resume
    Time at = 0;
    std::uint64_t number = 0;
};

/** A call object, and what a host knows of it at this moment. */
struct Call
{
    explicit Call(std::string path) : path(std::move(path)) { }

    std::string path;
    std::uint64_t id = 0; // no two calls have the same, also where they have the same path
    bool isKnown = false; // a host has had a report with Call1 that it can read
    bool isShown = false; // and has said so
    bool isGone = false; // and it has been removed
    bool isSubscribed = false; // the host's match rule for its status was seen
    bool wasAssumed = false; // it was there before anybody watched
    int cause = -1; // the finding that says why the host does not know it
    Time reportedAt = 0;
    Time removedAt = 0;
    std::uint64_t reportedIn = 0;
    bool isFromSnapshot = false;
    std::set<std::string, std::less<>> interfaces; // as the host keeps them
    std::set<std::string, std::less<>> forgotten; // reported before Call1
    unsigned status = 0; // what the host shows
    unsigned sent = 0; // what the application has sent last, heard or not
    bool hasStatus = false; // its report had a Status that can be read
    bool isHoldable = false;
    std::string name;
    std::string uri;
    bool hasAudioState = false;
    std::vector<Command> open; // not yet answered
    Memory memory;
};

/** A path that an application has registered with the host that is there. */
struct Manager
{
    Time registeredAt = 0;
    std::uint64_t number = 0;
    bool isReplied = false;
    Time askedAt = 0; // GetManagedObjects came; 0 while it has not
    bool isAnswered = false;
    bool hasFailed = false;
    bool wasListed = false; // its registration was not seen, the host says that it is there
    int cause = -1; // the finding that says why calls at this path do not show
    std::string why; // the host's question failed with this error
};

/** A connection that has, or wants to have, to do with calls. */
struct Application
{
    std::string name;
    unsigned pid = 0; // 0 when unknown
    std::string program;
    bool isBorn = false; // its coming was seen, so all that it did was
    std::uint64_t id = 0;
    ByName<Manager> managers;
    ByName<Call> calls;
    int cause = -1; // the finding that says why none of its calls shows
    Time lastSent = 0;
    Memory memory;
};

struct Device
{
    bool isInput = false;
    bool isOutput = false;
};

/** Everybody who has to do with calls, as far as has been seen. */
struct World
{
    std::string hostName;
    std::string host; // the unique name of its owner; empty while there is none, or it is not known
    bool isHostKnown = false; // whether there is one has been seen
    Time hostSince = 0;
    ByName<Application> applications;
    ByName<unsigned> processes; // process ids of connections
    std::set<std::string, std::less<>> born; // connections whose coming was seen
    ByName<Device> devices;
    bool isMuted = false;
    Memory memory;

    bool isHost(std::string_view name) const { return (!host.empty() && name == host) || name == hostName; }
    Application *find(std::string_view name);
    Call *findCall(std::string_view application, std::string_view path);

    /** Other connections of the same process that have to do with calls. */
    std::vector<Application *> siblingsOf(const Application &application);
};

#endif
