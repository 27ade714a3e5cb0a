// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_BUSMONITOR_H
#define TESTS_BUSMONITOR_H

#include "buspeer.h"
#include "expectedlog.h"

#include <QtCore/QEventLoop>
#include <QtCore/QSocketNotifier>
#include <map>
#include <set>

/** Signals of this interface carry a line of their own to be written down. */
constexpr const char *noteInterface = "org.example.Note";

/**
 * Writes down everything that one connection sends, in the order in which the bus passes it on, except other messages
 * to the bus itself:
 *
 *     to NAME PATH INTERFACE.MEMBER(ARGUMENTS)      broadcast MEMBER(ARGUMENTS)
 *     reply to NAME (ARGUMENTS)                     error to NAME
 *     match NAME PATH INTERFACE.MEMBER              which it subscribes to
 *     host: LINE                                    which the host has noted
 *
 * NAME is what name() was told to call a connection.
 */
class BusMonitor
{
public:
    /** `sender` is the unique name of the connection to watch. */
    explicit BusMonitor(const std::string &sender);

    /** From now on the connection `uniqueName` is called `name`. */
    void name(const std::string &uniqueName, const std::string &name) { m_names[uniqueName] = name; }
    void forgetNames() { m_names.clear(); }

    /**
     * Runs the event loop until the watched connection has answered the call; gives the answer's arguments, or
     * "error", and does not write it down. Throws std::runtime_error when there is none in time.
     */
    std::string waitForReply(const BusPeer &caller, unsigned serial);

    /** Runs the event loop until the bus has told that the connection is gone. */
    void waitForDeparture(const std::string &uniqueName);

    /** What was written down since the last time. */
    Lines takeLines() { return std::exchange(m_lines, {}); }

    /** Serial number of the last call of GetManagedObjects to the object; 0 if there was none. */
    unsigned snapshotCall(const std::string &uniqueName, const std::string &path) const;

private:
    void readAll();
    void read(DBusMessage *message);
    void write(DBusMessage *message);
    void writeSubscription(DBusMessage *message);
    void writeSignal(DBusMessage *message);
    void writeReply(DBusMessage *message);
    std::string name(const char *uniqueName) const;
    std::string arguments(DBusMessage *message) const;
    std::string values(DBusMessageIter &iterator) const;
    std::string value(DBusMessageIter &iterator) const;
    std::string basicValue(DBusMessageIter &iterator) const;
    template <typename Done>
    void waitUntil(Done done, const std::string &what);

    std::string m_sender;
    BusPeer m_peer;
    QSocketNotifier m_notifier;
    QEventLoop m_loop;
    std::map<std::string, std::string> m_names;
    std::map<std::pair<std::string, std::string>, unsigned> m_snapshotCalls;
    std::set<std::string> m_departed;
    std::string m_awaitedCaller;
    unsigned m_awaitedSerial = 0;
    bool m_answered = false;
    std::string m_answer;
    Lines m_lines;
};

#endif
