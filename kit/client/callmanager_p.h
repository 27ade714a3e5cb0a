// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef RINGLETCLIENT_CALLMANAGER_P_H
#define RINGLETCLIENT_CALLMANAGER_P_H

#include "busserver/bustree.h"
#include "hostlink.h"

#include <RingletClient/callmanager.h>

#include <QtCore/QMap>

namespace Ringlet {

class CallPrivate;

/**
 * While a registration is on its way, new calls are kept back: the host takes its picture of the calls at
 * some moment meanwhile, and a call that is in the picture and announced as well would be reported twice.
 * So they are until it is known whether there is a host, lest a call be announced before the registration.
 * A call that ends before it came out has never been.
 */
class CallManagerPrivate
{
public:
    CallManagerPrivate(
        CallManager *manager, const QString &managerPath, const QString &hostName, const QDBusConnection &bus);

    Call *addCall(const CallDescription &description);

    /** The call has ended. */
    void withdraw(CallPrivate &call);

    void flush();

    CallManager *const q;
    const QString path;
    QDBusConnection connection;
    BusTree tree;
    HostLink host;
    CallManager::State state = CallManager::State::Looking;
    QString errorName;
    QString errorString;
    /** By name. */
    QMap<QString, CallPrivate *> calls;

private:
    void fail(const QString &name, const QString &text);
    void setState(CallManager::State newState, const QString &name = {}, const QString &text = {});
    void followBus();
    void followHost();
    void onMissed(const QDBusMessage &message) const;
    void letOut();
    void onVanished();
    void onShown(const QString &object, const BusInterfaceMap &interfaces) const;
    void onBusLost();
    QString nameFor(const CallDescription &description);

    QVector<CallPrivate *> m_keptBack;
    int m_counter = 0;
};

} // namespace Ringlet

#endif
