// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef RINGLET_CALLPROVIDERFACTORY_H
#define RINGLET_CALLPROVIDERFACTORY_H

#include "common/dbustypes.h"
#include "common/host.h"

#include <QtCore/QStringList>
#include <sys/types.h>

class CallProviderFactoryPrivate;

/**
 * The plug-in: makes a provider of every call manager that an application registers, and hands it to the
 * host for as long as the application is there.
 *
 * Applications can register from initialize() on, which needs the session bus; providers are made from
 * configure() on. A call manager that registers in between stays without a provider.
 */
class CallProviderFactory : public AbstractVoiceCallManagerPlugin
{
    Q_OBJECT
    Q_INTERFACES(AbstractVoiceCallManagerPlugin)
    Q_PLUGIN_METADATA(IID "org.tarnwickle.voicecall.ringlet")

public:
    explicit CallProviderFactory(QObject *parent = nullptr);
    ~CallProviderFactory() override;

    QString pluginId() const override;

public Q_SLOTS:
    /** Exports the registration service on the session bus; false when its object path is taken. */
    bool initialize() override;

    /** Accepts one host, once; null is accepted and leaves the plug-in without one. */
    bool configure(VoiceCallManagerInterface *manager) override;

    bool start() override;
    bool suspend() override;
    bool resume() override;
    void finalize() override;

private Q_SLOTS:
    void onCallManagerAdded(const DBusCallManager &callManager, pid_t);
    void onCallManagerRemoved(const DBusCallManager &callManager);
    void onInterfacesAdded(const DBusCallObject &call, const QVariantMapMap &interfaces);
    void onInterfacesRemoved(const DBusCallObject &call, const QStringList &interfaces);

private:
    CallProviderFactoryPrivate *d;
};

#endif
