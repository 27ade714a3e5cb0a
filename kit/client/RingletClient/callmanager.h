// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef RINGLETCLIENT_CALLMANAGER_H
#define RINGLETCLIENT_CALLMANAGER_H

#include <RingletClient/call.h>

#include <QtDBus/QDBusConnection>

namespace Ringlet {

/**
 * The application's calls, registered with the voice-call host of the session whenever there is one.
 *
 * It exports an object manager at its path, with the calls below it, watches the host's name and registers
 * each time somebody takes it; calls that are up then appear in the new host by themselves. A host that is
 * not there, refuses or dies is an ordinary state. Nothing waits, and nothing has to be started: the work
 * begins when the event loop runs.
 *
 * Hosts know no way to take a registration back but to leave the bus. A manager that is destroyed ends its
 * calls.
 *
 * All messages that go by are logged at debug level in the category "ringlet.client".
 */
class RINGLETCLIENT_EXPORT CallManager : public QObject
{
    Q_OBJECT
    Q_PROPERTY(State state READ state NOTIFY stateChanged)
public:
    enum class State {
        /** It is not known yet whether there is a host. So at first. */
        Looking,
        /** No host is there. It is awaited. */
        Waiting,
        /** A host is there, and has not answered the registration yet. */
        Registering,
        /** The host shows the calls. */
        Registered,
        /** The host is there, but has refused, or did not answer; see errorString(). The next one is awaited. */
        Refused,
        /** There is no session bus, it has gone, or path or host name are unusable; see errorString(). It stays so. */
        Failed
    };
    Q_ENUM(State)

    /** Who may command the calls. Questions are answered to everybody. */
    enum class Commanders {
        /** Whoever owns the host's name. Others get "org.freedesktop.DBus.Error.AccessDenied". */
        Host,
        /** Everybody on the bus: for tests, and for playing the host by hand. */
        Anyone
    };
    Q_ENUM(Commanders)

    /** With the host of the desktop, on the session bus. `path` is an object path of the application's choice. */
    explicit CallManager(const QString &path, QObject *parent = nullptr);

    /** `hostName` is the host's name on the bus. */
    CallManager(
        const QString &path, const QString &hostName, const QDBusConnection &connection, QObject *parent = nullptr);

    ~CallManager() override;

    QString path() const;
    QString hostName() const;

    State state() const;

    /** Unique bus name of the host that is there; empty when there is none. */
    QString hostOwner() const;

    /** In states Refused and Failed: the D-Bus error, such as "org.freedesktop.DBus.Error.AccessDenied". */
    QString errorName() const;
    /** For people. */
    QString errorString() const;

    /** At first only the host may. */
    void setCommanders(Commanders commanders);
    Commanders commanders() const;

    /**
     * A call begins: an incoming one with status Incoming, an outgoing one with Dialing. It belongs to the
     * manager. Null, with a warning, when there is a call of that name.
     */
    Call *addCall(const CallDescription &description);

    /** The calls that have not ended, by name. */
    QList<Call *> calls() const;

    /** Null when no call that has not ended has the name. */
    Call *findCall(const QString &name) const;

    /** In state Refused: asks the host again. Otherwise nothing. */
    void registerAgain();

    /** Ends all calls. flushed() is emitted when everything that was sent has reached the bus. */
    void endCalls();

Q_SIGNALS:
    void stateChanged(Ringlet::CallManager::State state);

    /** `uniqueName` is also hostOwner(). */
    void hostAppeared(const QString &uniqueName);
    void hostVanished();

    /** From within addCall(), before anybody else learns of the call. */
    void callAdded(Ringlet::Call *call);

    /** See endCalls(). Also emitted when the bus does not take it any more. */
    void flushed();

    /**
     * The host sent a command to a call that it does not know to be gone; it was answered with an error.
     * For logs.
     */
    void lateCommand(const QString &path, const QString &method);

private:
    friend class CallManagerPrivate;
    const std::unique_ptr<CallManagerPrivate> d;
};

} // namespace Ringlet

#endif
