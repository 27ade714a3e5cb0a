// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_PLUGINWORLD_H
#define TESTS_PLUGINWORLD_H

#include "busmonitor.h"
#include "observedhost.h"

#include <map>
#include <memory>

class CallProviderFactory;

/**
 * The plug-in, freshly made and initialised, with a host and with applications that have connections of their
 * own: does the steps of one history, and observes what comes of them in the words of CallModel.
 *
 * Everything waits with a limit, and throws std::runtime_error when it is reached.
 */
class PluginWorld
{
public:
    /** `monitor` watches this process's session bus connection and serves one world after the other. */
    explicit PluginWorld(BusMonitor &monitor);
    ~PluginWorld();

    /** Does what can be done without waiting; `callIds` as CallModel has them. */
    void perform(const Step &step, const std::vector<std::string> &callIds);

    /** Waits until all that was performed has had its effect. */
    void settle();

    // As of the last time that the world settled.
    Lines takeLog() { return m_monitor.takeLines(); }
    Lines registry() const { return m_registry; }
    Lines state() const { return m_host->state(); }
    Lines leftOver() const { return m_host->leftOver(false); }

    /** Destroys the plug-in; gives what it has told while that went on, and what is still there. */
    Lines end();

private:
    using Action = void (PluginWorld::*)(const Step &);
    static const std::map<StepKind, Action> &actions();

    void doConfigure(const Step &step);
    void doConfigureWithNull(const Step &step);
    void doConfigureAgain(const Step &step);
    void doLifeCycle(const Step &step);
    void doRegister(const Step &step);
    void doRegisterBadly(const Step &step);
    void doTakeName(const Step &step);
    void doLeave(const Step &step);
    void doLeaveHalfWay(const Step &step);
    void doForgeAnswer(const Step &step);
    void doClaimDeparture(const Step &step);
    void doAnswer(const Step &step);
    void doAnswerBadly(const Step &step);
    void doAnswerWithError(const Step &step);
    void doAdd(const Step &step);
    void doAddBadly(const Step &step);
    void doRemove(const Step &step);
    void doRemoveBadly(const Step &step);
    void doStatus(const Step &step);
    void doStatusBadly(const Step &step);
    void doRequestMute(const Step &step);
    void doRequestRoute(const Step &step);
    void doRequestBadly(const Step &step);
    void doDial(const Step &step);
    void doMute(const Step &step);
    void doSelectInput(const Step &step);
    void doSelectOutput(const Step &step);
    void doDevices(const Step &step);
    static bool command(const Step &step, AbstractVoiceCallHandler &call);

    BusPeer &application(char letter);
    BusMessage signal(const std::string &path, const char *interface, const char *member);
    BusMessage callToPlugin(const char *interface, const char *member) const;
    void send(char letter, const BusMessage &message);
    void sendSignal(char letter, const BusMessage &message);
    BusMessage snapshotReply(char letter, const std::string &manager, int type = DBUS_MESSAGE_TYPE_METHOD_RETURN);

    BusMonitor &m_monitor;
    std::string m_pluginName;
    std::unique_ptr<ObservedHost> m_host;
    std::unique_ptr<ObservedHost> m_otherHost;
    std::unique_ptr<CallProviderFactory> m_factory;
    std::map<char, std::unique_ptr<BusPeer>> m_applications;
    std::map<char, int> m_connections;
    /** By unique bus name; also of those that have left. */
    std::map<std::string, std::string> m_names;
    /** Who settles: the messages of others may still be on their way to the plug-in. */
    BusPeer *m_last = nullptr;
    /** What the service object last said when asked for its call managers. */
    std::string m_answer;
    Lines m_registry;
};

#endif
