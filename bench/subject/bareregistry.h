// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BENCH_BAREREGISTRY_H
#define BENCH_BAREREGISTRY_H

#include "barecall.h"
#include "dbusobjectmanagerproxy.h"

#include <QtCore/QMap>
#include <QtCore/QVector>
#include <QtDBus/QDBusContext>

/** One registered call manager: its object manager's proxy, and its calls by path. */
class BareManager : public QObject
{
    Q_OBJECT

public:
    BareManager(const QString &service, const QString &path);
    ~BareManager() override;

    QString service() const { return m_proxy.service(); }

Q_SIGNALS:
    void callAdded(BareCall *call);
    void callRemoved(BareCall *call);

private:
    void addCall(const QDBusObjectPath &object, const QVariantMapMap &interfaces);
    void removeCall(const QDBusObjectPath &object);

    DBusObjectManagerProxy m_proxy;
    QMap<QDBusObjectPath, BareCall *> m_calls;
};

/** Where call managers register, as at the plug-in's object; does on the bus what the plug-in does, and no more. */
class BareRegistry : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "zelkovar.Call.Service1")

public:
    /** One that `hasAdaptors` is called through them, and broadcasts its signals by them, as the plug-in's object. */
    explicit BareRegistry(bool hasAdaptors);

    /** Exports itself; false when it could not. */
    bool exportObject();

Q_SIGNALS:
    void managerAdded(BareManager *manager);
    // Of the interface; the adaptor broadcasts them, if there is one.
    void InterfacesAdded(const QString &service, const QDBusObjectPath &path, const QVariantMapMap &interfaces);
    void InterfacesRemoved(const QString &service, const QDBusObjectPath &path, const QStringList &interfaces);

public Q_SLOTS:
    void RegisterCallManager(const QDBusObjectPath &path);

private Q_SLOTS:
    void onNameOwnerChanged(const QString &name, const QString &, const QString &);

private:
    bool m_hasAdaptors;
    QVector<BareManager *> m_managers;
};

#endif
