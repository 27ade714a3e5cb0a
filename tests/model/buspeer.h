// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_BUSPEER_H
#define TESTS_BUSPEER_H

#include "step.h"

#include <dbus/dbus.h>
#include <functional>
#include <memory>
#include <string>

using BusMessage = std::unique_ptr<DBusMessage, void (*)(DBusMessage *)>;

/**
 * A connection of its own to the session bus, such as an application has. It only sends: what comes back is
 * seen by the BusMonitor. Dropping it closes the connection without a word, as a killed process does.
 *
 * Constructing it throws std::runtime_error when there is no bus.
 */
class BusPeer
{
public:
    BusPeer();

    /** The unique bus name. */
    const std::string &name() const { return m_name; }

    /** Writes the message to the bus before it returns; gives its serial number. */
    unsigned send(DBusMessage *message);

    /** Writes the first half of the message to the bus: the rest never comes, nor may anything else. */
    void sendHalf(DBusMessage *message);

    DBusConnection *connection() const { return m_connection.get(); }

private:
    std::unique_ptr<DBusConnection, void (*)(DBusConnection *)> m_connection;
    std::string m_name;
};

/** Appends arguments to a message: objects, interfaces and values, as object managers report them. */
class ArgumentWriter
{
public:
    explicit ArgumentWriter(DBusMessage *message) { dbus_message_iter_init_append(message, &m_iterator); }

    ArgumentWriter &string(const std::string &text);
    ArgumentWriter &path(const std::string &text);
    ArgumentWriter &number(unsigned number);
    ArgumentWriter &boolean(bool value);
    ArgumentWriter &signedNumber(int number);
    ArgumentWriter &strings(const std::vector<std::string> &texts);
    ArgumentWriter &properties(const Properties &properties);
    ArgumentWriter &interfaces(const Interfaces &interfaces);
    ArgumentWriter &objects(const std::vector<ObjectReport> &objects);

private:
    explicit ArgumentWriter() = default;

    using Content = std::function<void(ArgumentWriter &)>;
    ArgumentWriter &basic(int type, const void *value);
    ArgumentWriter &container(int type, const char *signature, const Content &content);
    ArgumentWriter &value(const PropertyValue &value);
    ArgumentWriter &numeric(char type, double number);

    DBusMessageIter m_iterator;
};

BusMessage busMessage(DBusMessage *message);

#endif
