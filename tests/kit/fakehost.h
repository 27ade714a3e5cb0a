// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_FAKEHOST_H
#define TESTS_FAKEHOST_H

#include "busserver/businterface.h"
#include "busserver/bustree.h"

#include <QtCore/QSet>
#include <QtDBus/QDBusArgument>

using InterfaceMap = BusInterfaceMap;
using ObjectMap = BusObjectMap;

/** A device in UpdateAudioRouteState. */
struct FakeDevice
{
    QString id;
    int type = 0;
    bool isInput = false;
    bool isOutput = false;
    QString name;
    QVariantMap properties;
};
using FakeDeviceList = QList<FakeDevice>;
Q_DECLARE_METATYPE(FakeDevice)
Q_DECLARE_METATYPE(FakeDeviceList)

/**
 * The host as an application sees it, on a connection of its own. It records in order what applications
 * send, and does nothing by itself but what every host does: asks for the objects when a call manager
 * registers, answers the registration after that, and tells everybody of the calls that it has seen.
 */
class FakeHost : public QObject
{
    Q_OBJECT
public:
    FakeHost();
    ~FakeHost() override;

    static QString defaultName() { return QStringLiteral("org.tarnwickle.voicecall"); }

    bool takeName(const QString &name = defaultName());
    void dropName(const QString &name = defaultName());

    QDBusConnection connection() const { return m_connection; }
    QString uniqueName() const { return m_connection.baseService(); }

    // --- What arrived

    /**
     * What applications sent, in order, each as "RegisterCallManager /manager",
     * "GetManagedObjects /manager: /call=STATUS ..." (its reply), "InterfacesAdded /call STATUS",
     * "InterfacesRemoved /call INTERFACE ..." (sorted), "StatusChanged /call STATUS", "RequestMute /call true" or
     * "RequestAudioRoute /call INPUT OUTPUT".
     */
    QStringList wire() const { return m_wire; }
    void forgetWire() { m_wire.clear(); }

    /** Runs the event loop until something that equals, or is followed by a blank or a colon, `start` came. */
    bool waitForWire(const QString &start, int count = 1) const;

    /** Unique name of the application that registered last. */
    QString application() const { return m_application; }

    /** Takes this one for the application that registered last: as a stranger does, who only knows its name. */
    void setApplication(const QString &application) { m_application = application; }

    /**
     * The calls that registered applications have reported, by path, as they were when reported, without those
     * that were removed.
     */
    ObjectMap calls() const { return m_calls; }

    // --- What the host does

    /** Answers no registration until answerRegistrations(). */
    void holdAnswers() { m_holdsAnswers = true; }
    void answerRegistrations();

    /** Answers registrations with this error. */
    void refuseWith(const QString &errorName) { m_refusal = errorName; }

    /** Tells nobody of the calls, until broadcast(). */
    void keepQuiet() { m_isQuiet = true; }

    /** Tells everybody that it shows a call of an application; of the one that registered last if none is given. */
    void broadcast(const QString &path, const InterfaceMap &interfaces, const QString &application = {});

    /** Calls a method of the application's and runs the event loop until it is answered. */
    QDBusMessage call(
        const QString &path, const QString &interface, const QString &member, const QVariantList &arguments = {}) const;

    /** The application's answer to GetManagedObjects now. */
    ObjectMap managedObjects(const QString &manager) const;

    /** Returns when the application has handled what was sent to it, and what it sent in turn has come. */
    bool settle(const QString &manager) const;

private Q_SLOTS:
    void onSignal(const QDBusMessage &signal);

private:
    void subscribe(const QString &interface, const QString &member, const QString &signature);
    void serve();
    QDBusMessage onRegistration(const QDBusMessage &message);
    void askForObjects(const QString &manager);
    void onReported(const QString &application, const QDBusObjectPath &path, const InterfaceMap &interfaces);

    QDBusConnection m_connection;
    BusTree m_tree;
    /** Belongs to the tree. */
    BusInterface *m_announcements = nullptr;
    QStringList m_wire;
    ObjectMap m_calls;
    QString m_application;
    QSet<QString> m_registered;
    QList<QDBusMessage> m_held;
    QString m_refusal;
    bool m_holdsAnswers = false;
    bool m_isQuiet = false;
};

#endif
