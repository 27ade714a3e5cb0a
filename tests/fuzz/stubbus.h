// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_STUBBUS_H
#define TESTS_STUBBUS_H

#include "ledger.h"
#include "message.h"
#include "stage.h"

#include <atomic>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

/**
 * A message bus inside this process, with one client: the process's own session bus connection. Everybody else
 * on it is made up: messages are sent in their names, and what is sent to them is kept.
 *
 * It does as a bus daemon does as far as the client can tell: it answers questions about names, tells everybody
 * when a name changes hands, and answers for those who are gone. It delivers without looking at match rules, as
 * if every message had the client as its destination. What the client sends is held against a Ledger.
 *
 * The bus runs on a thread of its own, for the client blocks its thread with questions to the bus. All functions
 * are for other threads.
 */
class StubBus
{
public:
    /** Listens; `onReply` is called on the bus's thread when the reply to a `call()` has come. */
    explicit StubBus(std::function<void()> onReply);
    ~StubBus();
    StubBus(const StubBus &) = delete;
    StubBus &operator=(const StubBus &) = delete;

    std::string address() const;

    static const char *clientName() { return ":1.0"; }

    /** A new participant's unique name. */
    std::string join();

    /** It leaves: its name changes hands, and calls to it fail. */
    void leave(const std::string &name);

    /** Tells that a name has changed hands, true or not. */
    void announceOwner(const std::string &name, const std::string &before, const std::string &after);

    /** Delivers a message in the name of `sender`. */
    void send(const std::string &sender, Message message);

    /** The same with a call, whose reply is kept; a ticket for reply(). */
    unsigned call(const std::string &sender, Message message);

    /** The reply to a call; null until it has come, and once it was taken. */
    Message reply(unsigned ticket);

    /** The oldest call to `name` that was not taken yet; null when there is none. */
    Message takeRequest(const std::string &name);

    /** Answers the next query of this kind in this way. */
    void distort(Query query, Answer answer);

    /** What the client has subscribed to, each rule as often as it was added. */
    std::multiset<std::string> matchRules();

    /** Reports that the client has broadcast: calls added, and removed. */
    unsigned broadcastsOfAdded() const { return m_added; }
    unsigned broadcastsOfRemoved() const { return m_removed; }

    /** Writes every message to standard output from now on. */
    void trace() { m_isTraced = true; }

    /** Forgets what those did who are gone. */
    void forget();

private:
    using Task = std::function<void()>;

    void post(Task task);
    void run();
    void runTasks();
    void pollOnce();

    void accept(DBusConnection *connection);
    void deliver(const std::string &sender, DBusMessage *message);
    DBusHandlerResult receive(DBusMessage *message);
    void receiveReply(DBusMessage *message);
    void receiveCall(DBusMessage *message);
    bool isPresent(const std::string &name);
    void remove(const std::string &name);
    void forgetCall(DBusMessage *answer);

    // As the bus daemon
    void answerAsDaemon(DBusMessage *message);
    void answerQuery(DBusMessage *message, Query query);
    void changeRules(DBusMessage *message);
    template <typename T>
    void answer(DBusMessage *message, int type, const T &value);
    void answerEmpty(DBusMessage *message);
    void answerError(DBusMessage *message, const char *name);
    void sendOwner(const std::string &name, const std::string &before, const std::string &after);

    const std::function<void()> m_onReply;
    DBusServer *m_server = nullptr;
    DBusConnection *m_connection = nullptr;
    std::vector<DBusWatch *> m_watches;
    int m_wake = -1; // an eventfd

    // Of the bus's thread.
    Ledger m_ledger;
    Message m_lastDelivered;
    std::map<dbus_uint32_t, unsigned> m_tickets; // by serial
    std::map<Query, Answer> m_distorted;
    std::multimap<std::string, Message> m_unanswered; // calls from the client, by whom they are for

    std::mutex m_mutex; // over all that follows
    std::deque<Task> m_tasks;
    std::set<std::string> m_names;
    std::map<std::string, std::deque<Message>> m_requests;
    std::map<unsigned, Message> m_replies;
    std::multiset<std::string> m_rules;

    std::atomic<unsigned> m_lastName{0};
    std::atomic<unsigned> m_lastTicket{0};
    std::atomic<unsigned> m_added{0};
    std::atomic<unsigned> m_removed{0};
    std::atomic<bool> m_stopped{false};
    std::atomic<bool> m_isTraced{false};
    std::thread m_thread;
};

#endif
