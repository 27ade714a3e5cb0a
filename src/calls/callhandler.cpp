// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "calls/callhandler_p.h"

#include "common/propertyvalues.h"
#include "common/trace.h"

#include <QtCore/QDebug>
#include <QtCore/QTimerEvent>
#include <QtDBus/QDBusConnection>
#include <array>

// By the application's status number.
static const std::array<AbstractVoiceCallHandler::VoiceCallStatus, 8> hostStatus = {{
    Host::StatusDisconnected,
    Host::StatusDisconnected,
    Host::StatusDialing,
    Host::StatusIncoming,
    Host::StatusDisconnected,
    Host::StatusActive,
    Host::StatusActive,
    Host::StatusHeld,
}};
static constexpr uint remoteStatusHeld = 7;

static constexpr uint rejectReason = 1; // the same whatever state the call is in
static constexpr int durationIntervalMs = 1000;

CallHandler::CallHandler(
    const QString &handlerId, const DBusCallObject &object, const QVariantMapMap &interfaces, CallProvider *provider)
    : AbstractVoiceCallHandler(provider),
      d(new CallHandlerPrivate(this, object, handlerId, provider))
{
    RINGLET_TRACE();
    addInterfaces(interfaces);
}

CallHandler::~CallHandler()
{
    RINGLET_TRACE();
    delete d;
}

void CallHandler::addInterfaces(const QVariantMapMap &interfaces)
{
    if (!d->callProxy)
        d->addCall(interfaces.value(callInterfaceName));
    if (!d->dtmfProxy && interfaces.contains(dtmfInterfaceName))
        d->addDtmf();
    if (!d->audioControlProxy && interfaces.contains(audioControlInterfaceName))
        d->addAudioControl();
}

void CallHandlerPrivate::addCall(const QVariantMap &properties)
{
    callProxy.reset(new CallProxy(object.service, object.proxyPath(), QDBusConnection::sessionBus()));
    callProperties = PropertyValues::selfContained(properties);
    incoming = callProperties.value(QStringLiteral("Incoming")).toBool();
    QObject::connect(callProxy.data(), &CallProxy::StatusChanged, q, &CallHandler::onStatusChanged);
    q->onStatusChanged(callProperties.value(QStringLiteral("Status")).toUInt());
    emit q->startedAtChanged(q->startedAt());
}

void CallHandlerPrivate::addDtmf()
{
    dtmfProxy.reset(new DTMFProxy(object.service, object.proxyPath(), QDBusConnection::sessionBus()));
    emit q->supportsDtmfChanged(true);
}

AbstractVoiceCallProvider *CallHandler::provider() const
{
    RINGLET_TRACE();
    return d->provider;
}

QString CallHandler::handlerId() const
{
    RINGLET_TRACE();
    return d->handlerId;
}

QString CallHandler::lineId() const
{
    RINGLET_TRACE();
    return d->callProperties.value(QStringLiteral("RemoteName")).toString();
}

QDateTime CallHandler::startedAt() const
{
    RINGLET_TRACE();
    return QDateTime();
}

int CallHandler::duration() const
{
    RINGLET_TRACE();
    return int(d->durationMs / 1000);
}

bool CallHandler::isIncoming() const
{
    RINGLET_TRACE();
    return d->incoming;
}

bool CallHandler::isMultiparty() const
{
    RINGLET_TRACE();
    return false;
}

bool CallHandler::isEmergency() const
{
    RINGLET_TRACE();
    return false;
}

bool CallHandler::isForwarded() const
{
    RINGLET_TRACE();
    return false;
}

bool CallHandler::isRemoteHeld() const
{
    RINGLET_TRACE();
    return d->remoteStatus == remoteStatusHeld;
}

QString CallHandler::parentHandlerId() const { return QString(); }

QList<AbstractVoiceCallHandler *> CallHandler::childCalls() const { return QList<AbstractVoiceCallHandler *>(); }

QString CallHandler::uri() const
{
    RINGLET_TRACE();
    return d->callProperties.value(QStringLiteral("Uri")).toString();
}

QString CallHandler::appId() const
{
    RINGLET_TRACE();
    return d->provider->appId();
}

bool CallHandler::supportsDtmf() const { return !d->dtmfProxy.isNull(); }

bool CallHandler::supportsMultiparty() const { return false; }

bool CallHandler::holdable() const
{
    RINGLET_TRACE();
    return d->callProperties.value(QStringLiteral("Holdable")).toBool();
}

AbstractVoiceCallHandler::VoiceCallStatus CallHandler::status() const
{
    RINGLET_TRACE();
    return d->remoteStatus < hostStatus.size() ? hostStatus[d->remoteStatus] : Host::StatusNull;
}

void CallHandler::answer()
{
    RINGLET_TRACE();
    d->callProxy->Accept();
}

void CallHandler::hangup()
{
    RINGLET_TRACE();
    d->callProxy->Reject(rejectReason);
}

void CallHandler::hold(bool on)
{
    RINGLET_TRACE();
    if (on && !holdable())
        hangup();
    if (on == (status() == Host::StatusHeld))
        return;
    d->callProxy->SetHold(on);
}

void CallHandler::deflect(const QString &target)
{
    RINGLET_TRACE();
    Q_UNUSED(target)
}

void CallHandler::sendDtmf(const QString &tones)
{
    RINGLET_TRACE();
    if (d->dtmfProxy)
        d->dtmfProxy->SendDTMF(tones);
}

void CallHandler::merge(const QString &) { }

void CallHandler::split() { }

void CallHandler::timerEvent(QTimerEvent *event)
{
    RINGLET_TRACE();
    if (!isOngoing() || event->timerId() != d->durationTimerId)
        return;
    d->durationMs += d->durationClock.restart();
    emit durationChanged(int(d->durationMs / 1000));
}

void CallHandler::onStatusChanged(uint remoteStatus)
{
    RINGLET_TRACE();
    if (defaultLog().isDebugEnabled())
        qDebug() << "remote object status" << remoteStatus;
    d->remoteStatus = remoteStatus;
    if (isOngoing()) {
        if (d->durationTimerId == -1) {
            d->durationTimerId = startTimer(durationIntervalMs, Qt::CoarseTimer);
            d->durationClock.start();
        }
    } else if (d->durationTimerId != -1) {
        // What has passed since the last tick is not counted.
        killTimer(d->durationTimerId);
        d->durationTimerId = -1;
    }
    emit statusChanged(status());
}
