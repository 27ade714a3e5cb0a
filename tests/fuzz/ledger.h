// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_LEDGER_H
#define TESTS_LEDGER_H

#include "message.h"

#include <map>
#include <set>
#include <string>
#include <utility>

/** Kind, destination, object, member and types of a message, for people. */
std::string describe(DBusMessage *message);

/**
 * Who has shown what to the plug-in, and hence whom it may send what: GetManagedObjects to call managers that were
 * registered, commands to objects that were reported as calls, replies to who has asked, and its own two signals
 * about those who registered. Anything else is a finding.
 */
class Ledger
{
public:
    /** A message to the plug-in, with its sender and serial. */
    void note(DBusMessage *message);

    /** A message from the plug-in that is not for the bus daemon. */
    void check(DBusMessage *message);

    /** Everybody is gone. */
    void clear();

private:
    using Object = std::pair<std::string, std::string>; // who, where

    void noteReported(const std::string &sender, DBusMessageIter *object);
    void noteSnapshot(DBusMessage *message);
    void checkCall(DBusMessage *message) const;
    void checkSignal(DBusMessage *message) const;
    void checkReply(DBusMessage *message);

    std::set<Object> m_managers;
    std::set<Object> m_calls;
    std::set<std::string> m_registered;
    std::map<dbus_uint32_t, std::string> m_callers; // by the serial of the call
};

#endif
