// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef RINGLET_CALLPROVIDER_H
#define RINGLET_CALLPROVIDER_H

#include "common/dbustypes.h"
#include "common/host.h"

#include <QtCore/QStringList>

class CallProviderPrivate;

#ifdef Q_MOC_RUN
// For moc alone, which then registers the type of the signals' first parameter, for queued connections. The
// meta-type system itself keeps knowing DBusObject only.
Q_DECLARE_METATYPE(DBusCallObject)
#endif

/**
 * The calls of one registered call manager, as a provider of the host.
 *
 * Every object of the application that carries zelkovar.Call.Call1 becomes one CallHandler, a child of
 * this object, which lives until the object loses that interface. Providers of this type place no calls.
 */
class CallProvider : public AbstractVoiceCallProvider
{
    Q_OBJECT

public:
    /** Starts to fetch the application's objects; `manager` is borrowed and must not be null. */
    CallProvider(
        const DBusCallManager &callManager, const QString &appId, VoiceCallManagerInterface *manager, QObject *parent);
    ~CallProvider() override;

    /** "ringlet/" and the call manager. */
    QString providerId() const override;

    QString providerType() const override;
    QList<AbstractVoiceCallHandler *> voiceCalls() const override;

    /** Empty until the first dial(), which sets it for good. */
    QString errorString() const override;

    /** Id of the application, empty when unknown. */
    QString appId() const;

    VoiceCallManagerInterface *manager() const;

    /** Removes every call, each announced to the host. To be called before the host lets go of the provider. */
    void remove();

Q_SIGNALS:
    // What the application reported of an object that is, or was until now, a call.
    void interfacesAdded(const DBusCallObject &call, const QVariantMapMap &interfaces);
    void interfacesRemoved(const DBusCallObject &call, const QStringList &interfaces);

public Q_SLOTS:
    /** Always refused. */
    bool dial(const QString &msisdn) override;

    void onInterfacesAdded(const QString &service, const QDBusObjectPath &object, const QVariantMapMap &interfaces);
    void onInterfacesRemoved(const QString &service, const QDBusObjectPath &object, const QStringList &interfaces);

private:
    void initialize();

    CallProviderPrivate *d;
};

#endif
