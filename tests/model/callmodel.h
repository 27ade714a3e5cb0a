// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_CALLMODEL_H
#define TESTS_CALLMODEL_H

#include "expectedlog.h"
#include "step.h"

#include <list>
#include <map>
#include <set>

/** The order of object paths and interface names: that of UTF-16 code units. */
struct Utf16Less
{
    bool operator()(const std::string &left, const std::string &right) const;
};

/**
 * What the plug-in must do, as seen from outside: by the host, and on the bus. It knows no classes of the
 * plug-in, only registrations, the objects that were reported, the calls that the host has, and the audio.
 *
 * take() one step after the other, then read what it must have led to.
 *
 * Applications have the names A1, A2, …: the letter of the step, and the number of the connection. The host of
 * the model does at once what it is asked for: it selects the device, it mutes.
 */
class CallModel
{
public:
    /** `appId` is what the platform says of every application's process. */
    explicit CallModel(std::string appId) : m_appId(std::move(appId)) { }

    /** Whether the step can be done now; others are left out, such as a command for a call that is not there. */
    bool isPossible(const Step &step) const;

    void take(const Step &step);

    /** Whatever the steps so far caused has happened; nothing that a later one finds is on its way any more. */
    void pause() { m_droppedRules.clear(); }

    /** Ids of the calls that the step is about: an object that two call managers report is two calls. */
    std::vector<std::string> callIds(const Step &step) const;

    /**
     * What must have happened since the last time: what the host was told and asked for, among what was sent to
     * the bus.
     */
    ExpectedLog takeLog() { return std::exchange(m_log, {}); }

    /** The call managers that are listed, in ascending order. */
    Lines registry() const;

    /** The providers that the host has and their calls, with what the getters give, in ascending order. */
    Lines state() const;

private:
    struct Call
    {
        std::string id;
        std::string object;
        Properties properties;
        unsigned remoteStatus = 0;
        bool dtmf = false;
        bool audio = false;

        const PropertyValue *property(const std::string &name) const;
        int status() const;
        bool isHoldable() const;
    };

    struct Manager
    {
        std::string service;
        std::string path;
        /** Registered when there was no host, it stays without a provider. */
        bool hasProvider = false;
        bool awaitsSnapshot = false;
        /** Somebody else has answered in the application's place, whose own answer comes to nothing then. */
        bool isForged = false;
        std::string errorString;
        /** Names of the interfaces of each object; one that was reported twice stands there twice. */
        std::map<std::string, std::vector<std::string>, Utf16Less> objects;
        /** By object path. */
        std::map<std::string, Call> calls;

        std::string id() const { return service + "@" + path; }
    };

    struct Application
    {
        bool connected = false;
        int connections = 0;
    };

    using Action = void (CallModel::*)(const Step &);
    static const std::map<StepKind, Action> &actions();

    void doNothing(const Step &) { }
    void doConfigure(const Step &step);
    void doRegister(const Step &step);
    void doRegisterBadly(const Step &step);
    void doLeave(const Step &step);
    void doAnswer(const Step &step);
    void doAnswerBadly(const Step &step);
    void doForgeAnswer(const Step &step);
    void doAdd(const Step &step);
    void doRemove(const Step &step);
    void doStatus(const Step &step);
    void doRequestMute(const Step &step);
    void doRequestRoute(const Step &step);
    void doHostCommand(const Step &step);
    void doHold(const Step &step);
    void doDtmf(const Step &step);
    void doDial(const Step &step);
    void doMute(const Step &step);
    void doSelectInput(const Step &step);
    void doSelectOutput(const Step &step);
    void doDevices(const Step &step);

    void connect(char application);
    bool isConnected(char application) const;
    std::string nameOf(char application) const;
    Manager *manager(const Step &step);
    const Manager *manager(const Step &step) const;
    std::vector<std::pair<const Manager *, const Call *>> callsOf(const Step &step) const;

    void reportAdded(Manager &manager, const std::string &object, const Interfaces &interfaces);
    void reportRemoved(Manager &manager, const std::string &object, const std::vector<std::string> &names);
    void removeEverything(Manager &manager);
    void createCall(Manager &manager, const std::string &object, const Interfaces &received);
    void addInterfaces(Manager &manager, Call &call, const Interfaces &received, bool announced);
    void removeCall(Manager &manager, const std::string &object);

    void subscribe(const Manager &manager, const std::string &object, const std::string &member);
    void unsubscribe(const Manager &manager, const std::string &object, const std::string &member);

    void pushRoute();
    void pushState();
    void setMuted(bool muted);
    void setInput(const std::string &id);
    void setOutput(const std::string &id);

    void host(const std::string &line) { m_now.push_back("host: " + line); }
    void bus(const std::string &line) { m_now.push_back(line); }
    void send(const Manager &manager, const Call &call, const std::string &member);
    /** What may come next, and may not. */
    void perhaps(const std::string &line);
    /** What `action` does, set aside. */
    template <typename Function>
    Lines effectsOf(Function action);
    void anyOrder(const std::vector<Lines> &blocks);
    void flush();

    std::string m_appId;
    bool m_configured = false;
    std::map<char, Application> m_applications;
    std::list<Manager> m_managers;
    int m_calls = 0;
    /** Calls with audio control in the order in which they got it: that of the updates. */
    std::vector<std::pair<const Manager *, const Call *>> m_audioCalls;

    /** What the bus passes on to the plug-in, and how many subscribed to it: the bus is told of the first. */
    std::map<std::string, int> m_rules;
    /** Those that the last one has dropped, who may not be gone yet. */
    std::set<std::string> m_droppedRules;

    unsigned m_devices = 0;
    std::string m_input;
    std::string m_output;
    bool m_muted = false;

    /** Of the step that is being taken. */
    Lines m_now;
    ExpectedLog m_log;
};

/** The host's audio devices in histories: the first `count` of them, as the bus shows them. */
std::string audioDevicesText(unsigned count);

struct AudioDeviceRow
{
    const char *id;
    int type;
    bool isInput;
    bool isOutput;
    const char *name;
};
const std::vector<AudioDeviceRow> &audioDeviceRows();

#endif
