// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "plugin/callproviderfactory.h"

#include "calls/callprovider.h"
#include "common/propertyvalues.h"
#include "common/trace.h"
#include "service/callservice.h"

#include <QtCore/QHash>
#include <QtDBus/QDBusConnection>

class CallProviderFactoryPrivate
{
public:
    explicit CallProviderFactoryPrivate(CallProviderFactory *q) : q(q), callService(nullptr) { }

    CallProviderFactory *q;
    CallService callService;
    VoiceCallManagerInterface *manager = nullptr;
    QHash<DBusCallManager, CallProvider *> providers;
};

CallProviderFactory::CallProviderFactory(QObject *parent)
    : AbstractVoiceCallManagerPlugin(parent),
      d(new CallProviderFactoryPrivate(this))
{
    RINGLET_TRACE();
    connect(&d->callService, &CallService::callManagerAdded, this, &CallProviderFactory::onCallManagerAdded);
    connect(&d->callService, &CallService::callManagerRemoved, this, &CallProviderFactory::onCallManagerRemoved);
}

CallProviderFactory::~CallProviderFactory()
{
    RINGLET_TRACE();
    // Off the bus before the providers go, which the base class deletes as children.
    delete d;
}

QString CallProviderFactory::pluginId() const
{
    RINGLET_TRACE();
    return QStringLiteral("voicecall-ringlet-plugin");
}

bool CallProviderFactory::initialize()
{
    RINGLET_TRACE();
    // No name is requested: the object is reached under the names that the host owns.
    return QDBusConnection::sessionBus().registerObject(
        QStringLiteral("/zelkovar/call/service"), &d->callService, QDBusConnection::ExportAdaptors);
}

bool CallProviderFactory::configure(VoiceCallManagerInterface *manager)
{
    RINGLET_TRACE();
    if (d->manager) {
        qCWarning(voicecall, "%s CallProviderFactory is already configured!", Q_FUNC_INFO);
        return false;
    }
    d->manager = manager;
    return true;
}

bool CallProviderFactory::start()
{
    RINGLET_TRACE();
    return true;
}

bool CallProviderFactory::suspend()
{
    RINGLET_TRACE();
    return true;
}

bool CallProviderFactory::resume()
{
    RINGLET_TRACE();
    return true;
}

void CallProviderFactory::finalize() { RINGLET_TRACE(); }

void CallProviderFactory::onCallManagerAdded(const DBusCallManager &callManager, pid_t pid)
{
    RINGLET_TRACE();
    if (d->providers.contains(callManager)) {
        qCWarning(voicecall, "%s CallProviderFactory: Already registered %s", Q_FUNC_INFO,
            qPrintable(callManager.toString()));
        return;
    }
    const QString appId = Host::applicationId(pid);
    if (!d->manager) {
        qCWarning(voicecall, "%s CallProviderFactory is not yet configured", Q_FUNC_INFO);
        return;
    }
    auto *provider = new CallProvider(callManager, appId, d->manager, this);
    connect(provider, &CallProvider::interfacesAdded, this, &CallProviderFactory::onInterfacesAdded);
    connect(provider, &CallProvider::interfacesRemoved, this, &CallProviderFactory::onInterfacesRemoved);
    d->providers.insert(callManager, provider);
    Host::addProvider(d->manager, provider);
}

void CallProviderFactory::onCallManagerRemoved(const DBusCallManager &callManager)
{
    RINGLET_TRACE();
    CallProvider *provider = d->providers.value(callManager);
    if (!provider)
        return;
    provider->remove();
    d->providers.remove(callManager);
    Host::removeProvider(d->manager, provider);
    provider->deleteLater();
}

void CallProviderFactory::onInterfacesAdded(const DBusCallObject &call, const QVariantMapMap &interfaces)
{
    RINGLET_TRACE();
    emit d->callService.InterfacesAdded(call.service, call.path, PropertyValues::relayable(interfaces));
}

void CallProviderFactory::onInterfacesRemoved(const DBusCallObject &call, const QStringList &interfaces)
{
    RINGLET_TRACE();
    emit d->callService.InterfacesRemoved(call.service, call.path, interfaces);
}
