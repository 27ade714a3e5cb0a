// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef RINGLET_CALLHANDLER_P_H
#define RINGLET_CALLHANDLER_P_H

#include "audiocontrolproxy.h"
#include "callproxy.h"
#include "calls/callhandler.h"
#include "calls/callprovider.h"
#include "dtmfproxy.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QScopedPointer>

class CallHandlerPrivate
{
public:
    CallHandlerPrivate(CallHandler *q, const DBusCallObject &object, const QString &handlerId, CallProvider *provider)
        : q(q),
          object(object),
          handlerId(handlerId),
          provider(provider)
    {
    }

    ~CallHandlerPrivate()
    {
        // The last made is the first released, and all before the rest of the record.
        audioControlProxy.reset();
        dtmfProxy.reset();
        callProxy.reset();
    }

    CallHandlerPrivate(const CallHandlerPrivate &) = delete;
    CallHandlerPrivate &operator=(const CallHandlerPrivate &) = delete;

    void addCall(const QVariantMap &properties);
    void addDtmf();
    /** Wires the exchange of audio state and sends the application all of it. */
    void addAudioControl();

    CallHandler *q;
    DBusCallObject object;
    QString handlerId;
    CallProvider *provider;
    // Made when the object first shows the interface, and kept until the handler goes.
    QScopedPointer<CallProxy> callProxy;
    QScopedPointer<DTMFProxy> dtmfProxy;
    QScopedPointer<AudioControlProxy> audioControlProxy;
    qint64 durationMs = 0;
    int durationTimerId = -1;
    QElapsedTimer durationClock; // since the last tick
    bool incoming = false;
    quint32 remoteStatus = 0;
    QVariantMap callProperties; // self-contained
};

#endif
