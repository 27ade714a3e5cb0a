// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_HOSTCLIENT_H
#define TESTS_HOSTCLIENT_H

#include "busconnection.h"

#include <map>
#include <set>
#include <string>

/**
 * The desktop host as its user sees it: the call list, which is followed by its signals, and the commands.
 */
class HostClient
{
public:
    explicit HostClient(const std::string &address);

    /** Called when the host shows a call, shows another status of it, and no longer shows it. */
    std::function<void(const std::string &uri, const std::string &hostPath)> onShown;
    std::function<void(const std::string &uri, int status)> onStatus;
    std::function<void(const std::string &uri)> onGone;

    const std::string &busName() const { return m_bus.name(); }
    int descriptor() const { return m_bus.descriptor(); }
    void pump();

    /** "Answer", "Hangup", "Hold", "Resume" or "SendDtmf" of a call, not waited for. */
    void command(const std::string &hostPath, const std::string &command);

    /** Plugs a device in and out, moves the output, mutes and opens the microphone: one of these, by turns. */
    void changeAudio();

    static const std::string name;
    static const std::string root;

private:
    void handle(const Message &message);
    void handleShown(const Message &message);
    void handleChanged(const Message &message);
    void handleGone(const Message &message);
    void ask(const std::string &interface, const char *member, const std::string &argument);
    void setMuted(bool muted);
    void addDevice();

    BusConnection m_bus;
    std::map<std::string, std::string> m_uris; // by path
    unsigned m_audioChanges = 0;
};

#endif
