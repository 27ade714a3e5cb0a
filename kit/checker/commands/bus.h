// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef KIT_CHECKER_BUS_H
#define KIT_CHECKER_BUS_H

#include "analysis/message.h"
#include "analysis/variants.h"

#include <deque>
#include <functional>
#include <map>
#include <string>
#include <vector>

struct ObjectRelease
{
    void operator()(gpointer object) const { g_object_unref(object); }
};
using Connection = std::unique_ptr<GDBusConnection, ObjectRelease>;
using BusMessage = std::unique_ptr<GDBusMessage, ObjectRelease>;

/** Microseconds since the epoch. */
Time now();

/** What a process is called; empty when that cannot be told. */
std::string programOf(unsigned pid);

/** Whom a person means: everybody, a bus name, a process id, or a program's name. */
class Selection
{
public:
    explicit Selection(std::string wanted) : m_wanted(std::move(wanted)) { }

    bool isEverybody() const { return m_wanted.empty(); }
    const std::string &text() const { return m_wanted; }

    /** Learns of a connection; whether it is meant. */
    bool learn(const std::string &unique, unsigned pid, const std::string &program);

    /** The owner of the name that is wanted. */
    void learnOwner(const std::string &unique) { m_known[unique] = true; }

    bool contains(const std::string &unique) const;

private:
    std::string m_wanted;
    std::map<std::string, bool> m_known;
};

/** A connection that asks. Every question is given up after two seconds. */
class Bus
{
public:
    /** Connects to the session bus; null with `error` where there is none. */
    static Connection connect(std::string *error);

    explicit Bus(GDBusConnection *connection) : m_connection(connection) { }

    /** Told of every question and its answer, in the order of the bus. */
    std::function<void(GDBusMessage *)> onMessage;

    /** The answer's first argument; null when it was an error, or none came. */
    Variant ask(const std::string &destination, const std::string &path, std::string_view interface, const char *member,
        GVariant *arguments = nullptr);

    /** Sends the question and does not wait for the answer. */
    void askAside(const std::string &destination, const std::string &path, std::string_view interface,
        const char *member, GVariant *arguments = nullptr);

    Variant askBus(const char *member, GVariant *arguments = nullptr);
    std::string ownerOf(const std::string &name);
    unsigned processOf(const std::string &unique);
    std::vector<std::string> uniqueNames();

    /** Paths of a connection, found by introspection, that have an object manager. */
    std::vector<std::string> objectManagers(const std::string &unique);

    std::string uniqueName() const { return g_dbus_connection_get_unique_name(m_connection); }

private:
    GDBusConnection *m_connection;
};

#endif
