// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_SCRIPTEDAPPLICATION_H
#define TESTS_SCRIPTEDAPPLICATION_H

#include <QtCore/QStringList>
#include <QtCore/QVector>
#include <memory>

/**
 * An application as the host sees it: a connection of its own to the session bus, from which a test sends
 * whatever it likes and on which everything that arrives is recorded.
 *
 * It stands on GLib's bus library, so that the plug-in is not tried against the one it is built on, and
 * so that values of any shape can be written down: arguments are GVariant text, for example
 * "objectpath '/calls/1', {'x': <uint32 5>}"; "handle 0" is the first of the descriptors given. A text
 * that does not parse throws std::invalid_argument.
 *
 * Method calls that arrive are answered at once with the empty reply, unless set otherwise; GetManagedObjects
 * is answered as set.
 */
class ScriptedApplication
{
public:
    /** Connects; throws std::runtime_error when the bus cannot be reached. */
    ScriptedApplication();
    ~ScriptedApplication();

    /** Its unique name on the bus. */
    QString name() const;

    /** Closes the connection, as the death of the process would. */
    void leave();

    // --- Sending

    /** Sends a signal, broadcast unless a destination is given. Flushed before this returns. */
    void signal(const QString &path, const QString &interface, const QString &member, const QString &arguments = {},
        const QString &destination = {}, const QVector<int> &descriptors = {});

    /**
     * Calls a method and runs the event loop until it is answered: the arguments of the reply as text
     * such as "([('a', '/b')],)", or the name of the error; empty when nothing came in time. An empty
     * interface is left out of the message, which the bus allows.
     */
    QString call(const QString &destination, const QString &path, const QString &interface, const QString &member,
        const QString &arguments = {}, const QVector<int> &descriptors = {});

    /** Sends a method call and does not wait for its answer. */
    void send(const QString &destination, const QString &path, const QString &interface, const QString &member,
        const QString &arguments = {});

    /**
     * Returns when the host has handled all that was sent to it before, and what it sent in turn has
     * arrived here: for tests that nothing happens. False when the host did not answer.
     */
    bool settle(const QString &host = thisProcess());

    // --- Registering and announcing; `host` is a bus name of the host

    /** Registers a call manager; true when the (empty) reply has come. */
    bool registerCallManager(const QString &path, const QString &host = thisProcess());

    /** InterfacesAdded from the call manager at `manager`; `interfaces` is the text of an a{sa{sv}}. */
    void announce(
        const QString &manager, const QString &object, const QString &interfaces, const QVector<int> &descriptors = {});

    /** InterfacesRemoved from the call manager at `manager`. */
    void withdraw(const QString &manager, const QString &object, const QStringList &interfaces);

    /** StatusChanged of zelkovar.Call.Call1 on a call object. */
    void changeStatus(const QString &object, uint status);

    // --- Answering GetManagedObjects

    /** `objects` is the text of an a{oa{sa{sv}}}; the default is an empty one. */
    void setObjects(const QString &objects);

    /** The whole body of the reply, of whatever type. The descriptors must stay open meanwhile. */
    void setSnapshotBody(const QString &arguments, const QVector<int> &descriptors = {});

    /** Answer it with this error, and with a body of whatever type where one is given, rather than a text. */
    void refuseSnapshot(const QString &errorName, const QString &arguments = {});

    /** Keep the request unanswered until releaseSnapshot(). */
    void holdSnapshot();

    /** Answers every request that was held, as set. */
    void releaseSnapshot();

    // --- Answering other calls

    /** Answers reads of the property `name`, on any object and interface, with the value of this text. */
    void setProperty(const QString &name, const QString &value);

    /** Answer every call but GetManagedObjects with this error from now on. */
    void refuseCommands(const QString &errorName);

    // --- What arrived

    /** Method calls in order, each as "/path interface.Member(arguments)" with "uint32 1"-style types. */
    QStringList calls() const;

    /** calls() without GetManagedObjects: what the host wanted of the calls themselves. */
    QStringList commands() const;

    /** Signals in order, in the same form; subscribe() first. */
    QStringList signalsHeard() const;

    /** Adds a match rule, and returns when the bus has it. */
    void subscribe(const QString &rule);

    void forgetWhatArrived();

    // --- Watching the bus

    /**
     * Makes this connection a monitor: from now on every message on the bus is recorded in traffic(), and
     * nothing can be sent from here.
     */
    void becomeMonitor();

    /**
     * All messages in order, each as ":1.2 > :1.1: " and what it is: a call or a signal in the form above
     * (a broadcast goes to "*"), "reply (uint32 5)" or "error NAME".
     */
    QStringList traffic() const;

    /** The unique name of the test process's own session bus connection, on which a host in it is reached. */
    static QString thisProcess();

private:
    class Private;
    std::unique_ptr<Private> d;
};

#endif
