// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef SIMULATOR_INTERFACEMAP_H
#define SIMULATOR_INTERFACEMAP_H

#include <QtCore/QMap>
#include <QtCore/QStringList>
#include <QtCore/QVariantMap>
#include <QtDBus/QDBusObjectPath>

// Types of their own, as the client library has: several parts of a program may name the plain maps differently.

/** Interface name to properties, a{sa{sv}}. */
class RawInterfaceMap : public QMap<QString, QVariantMap>
{
    using QMap::QMap;
};

/** Object path to interfaces, a{oa{sa{sv}}}. */
class RawObjectMap : public QMap<QDBusObjectPath, RawInterfaceMap>
{
    using QMap::QMap;
};

Q_DECLARE_METATYPE(RawInterfaceMap)
Q_DECLARE_METATYPE(RawObjectMap)

/** Makes the types above known to the bus library. */
void registerInterfaceMaps();

/** Call1, DTMF1 and AudioControl1 stand for the interfaces of that name; other names are full names. */
QString interfaceName(const QString &word);

/** What is wrong with an interface as it is written; empty if nothing. */
QString interfaceFault(const QString &word);

/**
 * Reads interfaces with their properties, such as `Call1 Status=u:3 Uri=s:sip:ann@example.org DTMF1`: a
 * property belongs to the interface before it. What is wrong with it, empty if nothing.
 */
QString readInterfaces(const QStringList &words, RawInterfaceMap *interfaces);

#endif
