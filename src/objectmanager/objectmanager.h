// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef RINGLET_OBJECTMANAGER_H
#define RINGLET_OBJECTMANAGER_H

#include "common/dbustypes.h"
#include "dbusobjectmanagerproxy.h"

#include <QtCore/QObject>
#include <QtCore/QStringList>

/**
 * Mirrors the objects that an application exports through org.freedesktop.DBus.ObjectManager, and tells
 * of every object and interface that comes and goes. Knows nothing of calls.
 *
 * The application's changes and the snapshot that is asked for at the start are reported as they come
 * and are not reconciled: what is announced while the snapshot is on its way is reported twice, and what
 * is removed meanwhile comes back with the snapshot. An application that never answers, answers with an
 * error, or in whose name somebody else answered, is known by its changes alone. Nothing is emitted before
 * control is back in the event loop.
 */
class ObjectManager : public QObject
{
    Q_OBJECT

public:
    ObjectManager(
        const QString &service, const QDBusObjectPath &path, const QDBusConnection &connection, QObject *parent);
    ~ObjectManager() override;

    /**
     * Reports every mirrored object as having lost all its interfaces, in ascending order of paths, and
     * forgets them. Mirroring goes on.
     */
    void removeAll();

Q_SIGNALS:
    /** With `interfaces` as reported, whether known before or not; `service` is the application's bus name. */
    void interfacesAdded(const QString &service, const QDBusObjectPath &object, const QVariantMapMap &interfaces);
    /** With `interfaces` as reported, whether known before or not. */
    void interfacesRemoved(const QString &service, const QDBusObjectPath &object, const QStringList &interfaces);

public Q_SLOTS:
    void onInterfacesAdded(const QDBusObjectPath &object, const QVariantMapMap &interfaces);
    void onInterfacesRemoved(const QDBusObjectPath &object, const QStringList &interfaces);

private:
    DBusObjectManagerProxy proxy;
    QString service; // stays empty: the signals carry the name that the proxy has
    QDBusObjectPath path;
    // Names only. A name is held once for each time that it was reported; the properties are never read
    // back, and keeping them would keep the messages that brought them.
    DBusObjectList objects;
};

#endif
