// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_FAULTYAPPLICATION_H
#define TESTS_FAULTYAPPLICATION_H

#include <dbus/dbus.h>
#include <functional>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

/**
 * An application that does what it is told on standard input, a command a line, and nothing by itself. It
 * stops and dies on command, so that a test knows how far it has got; and it is as fast as libdbus lets it.
 * Its call manager is /bad.
 *
 *     register PATH          calls RegisterCallManager; prints "registered PATH" when that is answered
 *     object PATH STATUS     GetManagedObjects shows a call here from now on
 *     announce PATH STATUS   InterfacesAdded with a call that has tones and audio control
 *     withdraw PATH          InterfacesRemoved of the same
 *     status PATH STATUS     StatusChanged
 *     snapshot HOW           how GetManagedObjects is answered from now on: now, hold, error, wrong, twice
 *     commands HOW           how the host's commands are answered from now on
 *     release                answers what was held
 *     unsolicited            replies that nobody has asked for
 *     descriptors COUNT      InterfacesAdded with so many file descriptors
 *     large KIND SIZE        one message of as many bytes as fit into SIZE; kinds: announcement, call,
 *                            registration
 *     flood KIND COUNT SIZE  prints "flooded KIND" when all is sent, "answered" when all replies are there;
 *                            kinds: status, announcements (and withdrawals), calls, registrations,
 *                            duplicates, bogus, mebibytes, mutes; with texts of SIZE bytes: paths (that are
 *                            registered), names (of calls), routes (that are asked for)
 *     stop, die              SIGSTOP, SIGKILL to itself
 *
 * Everything is flushed before the next command is read. "connected", "asked" (for GetManagedObjects) and
 * "command MEMBER" are the further lines that it prints; "done COMMAND" follows each command.
 */
class FaultyApplication
{
public:
    /** Connects to the session bus; throws std::runtime_error when it cannot. */
    FaultyApplication();

    /** Obeys until standard input or the bus ends; the exit code. */
    int run();

private:
    struct Unref
    {
        void operator()(DBusMessage *message) const { dbus_message_unref(message); }
    };
    using Message = std::unique_ptr<DBusMessage, Unref>;

    void readCommands();
    void obey(const std::string &line);
    void say(const std::string &line) const;
    void pump();

    dbus_uint32_t send(const Message &message);
    void flush();
    static DBusHandlerResult filter(DBusConnection *connection, DBusMessage *message, void *self);
    void receive(DBusMessage *message);
    void takeReply(DBusMessage *reply);
    void answer(DBusMessage *call, const std::string &how);
    Message properReply(DBusMessage *call) const;
    Message wrongReply(DBusMessage *call) const;

    void registerAt(const std::string &path);
    void announce(const std::string &path, dbus_uint32_t status, std::size_t padding = 0);
    void sendLarge(const std::string &kind, std::size_t size);
    void withdraw(const std::string &path);
    void changeStatus(const std::string &path, dbus_uint32_t status);
    void release();
    void sendUnsolicited();
    void flood(const std::string &kind, int count, std::size_t size);
    /** Sends the message of a flood with the given number. */
    std::function<void(int)> floodOf(const std::string &kind, std::size_t size);
    void requestRoute(const std::string &device);
    void requestMute(bool mute);
    void sendDescriptors(int count);

    DBusConnection *m_bus;
    std::string m_input;
    bool m_ended = false;
    bool m_isFlooding = false;
    std::vector<std::pair<std::string, dbus_uint32_t>> m_objects;
    std::string m_snapshotHow = "now";
    std::string m_commandsHow = "now";
    std::vector<Message> m_held;
    /** Serial numbers of the calls of a flood that are not answered yet. */
    std::set<dbus_uint32_t> m_unanswered;
    /** The registration that is on its way, and its path. */
    dbus_uint32_t m_registration = 0;
    std::string m_registering;
};

#endif
