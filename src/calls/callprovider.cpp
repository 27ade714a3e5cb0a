// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "calls/callprovider.h"

#include "calls/callhandler.h"
#include "common/trace.h"
#include "objectmanager/objectmanager.h"

#include <QtCore/QDebug>
#include <QtCore/QHash>
#include <QtDBus/QDBusConnection>

class CallProviderPrivate
{
public:
    CallProviderPrivate(
        CallProvider *q, const DBusCallManager &callManager, const QString &appId, VoiceCallManagerInterface *manager)
        : q(q),
          manager(manager),
          callManager(callManager),
          objectManager(callManager.service, callManager.path, QDBusConnection::sessionBus(), nullptr),
          appId(appId)
    {
    }

    void addHandler(const DBusCallObject &call, const QVariantMapMap &interfaces);
    void removeHandler(const DBusCallObject &call);

    CallProvider *q;
    VoiceCallManagerInterface *manager;
    DBusCallManager callManager;
    ObjectManager objectManager;
    QString appId;
    QHash<DBusCallObject, CallHandler *> handlers;
    QString errorString;
};

void CallProviderPrivate::addHandler(const DBusCallObject &call, const QVariantMapMap &interfaces)
{
    if (defaultLog().isDebugEnabled())
        qDebug() << "Adding call handler " << call.toString();
    auto *handler = new CallHandler(Host::newHandlerId(manager), call, interfaces, q);
    handlers.insert(call, handler);
    emit q->interfacesAdded(call, interfaces);
    emit q->voiceCallAdded(handler);
    emit q->voiceCallsChanged();
}

void CallProviderPrivate::removeHandler(const DBusCallObject &call)
{
    if (defaultLog().isDebugEnabled())
        qDebug() << "Removing call handler " << call.toString();
    CallHandler *handler = handlers.value(call);
    const QString handlerId = handler->handlerId();
    handlers.remove(call);
    // The host may still hold the pointer until it has heard of the removal.
    handler->deleteLater();
    emit q->voiceCallRemoved(handlerId);
    emit q->voiceCallsChanged();
}

CallProvider::CallProvider(
    const DBusCallManager &callManager, const QString &appId, VoiceCallManagerInterface *manager, QObject *parent)
    : AbstractVoiceCallProvider(parent),
      d(new CallProviderPrivate(this, callManager, appId, manager))
{
    RINGLET_TRACE();
    initialize();
}

CallProvider::~CallProvider()
{
    RINGLET_TRACE();
    delete d;
}

void CallProvider::initialize()
{
    RINGLET_TRACE();
    // In time, although the mirror is already fetching: it reports nothing before the event loop runs.
    connect(&d->objectManager, &ObjectManager::interfacesAdded, this, &CallProvider::onInterfacesAdded);
    connect(&d->objectManager, &ObjectManager::interfacesRemoved, this, &CallProvider::onInterfacesRemoved);
}

QString CallProvider::providerId() const
{
    RINGLET_TRACE();
    return QStringLiteral("ringlet/%1").arg(d->callManager.toString());
}

QString CallProvider::providerType() const
{
    RINGLET_TRACE();
    return QStringLiteral("ringlet");
}

QList<AbstractVoiceCallHandler *> CallProvider::voiceCalls() const
{
    RINGLET_TRACE();
    QList<AbstractVoiceCallHandler *> calls;
    const QHash<DBusCallObject, CallHandler *> &handlers = d->handlers;
    for (CallHandler *handler : handlers)
        calls.append(handler);
    return calls;
}

QString CallProvider::errorString() const
{
    RINGLET_TRACE();
    return d->errorString;
}

QString CallProvider::appId() const { return d->appId; }

VoiceCallManagerInterface *CallProvider::manager() const { return d->manager; }

bool CallProvider::dial(const QString &msisdn)
{
    RINGLET_TRACE();
    Q_UNUSED(msisdn)
    d->errorString = QStringLiteral("cannot dial with this provider");
    return false;
}

void CallProvider::remove()
{
    RINGLET_TRACE();
    d->objectManager.removeAll();
}

void CallProvider::onInterfacesAdded(
    const QString &service, const QDBusObjectPath &object, const QVariantMapMap &interfaces)
{
    const DBusCallObject call(service, object);
    if (CallHandler *handler = d->handlers.value(call)) {
        handler->addInterfaces(interfaces);
        emit interfacesAdded(call, interfaces);
    } else if (interfaces.contains(callInterfaceName)) {
        d->addHandler(call, interfaces);
    }
}

void CallProvider::onInterfacesRemoved(
    const QString &service, const QDBusObjectPath &object, const QStringList &interfaces)
{
    RINGLET_TRACE();
    const DBusCallObject call(service, object);
    if (!d->handlers.contains(call))
        return;

    emit interfacesRemoved(call, interfaces);
    // A call that loses its tones or its audio control alone keeps what was made for them.
    if (interfaces.contains(callInterfaceName))
        d->removeHandler(call);
}
