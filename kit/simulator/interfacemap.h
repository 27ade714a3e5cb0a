// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef SIMULATOR_INTERFACEMAP_H
#define SIMULATOR_INTERFACEMAP_H

#include "busserver/bustypes.h"

#include <QtCore/QStringList>

/** Call1, DTMF1 and AudioControl1 stand for the interfaces of that name; other names are full names. */
QString interfaceName(const QString &word);

/** What is wrong with an interface as it is written; empty if nothing. */
QString interfaceFault(const QString &word);

/**
 * Reads interfaces with their properties, such as `Call1 Status=u:3 Uri=s:sip:ann@example.org DTMF1`: a
 * property belongs to the interface before it. What is wrong with it, empty if nothing.
 */
QString readInterfaces(const QStringList &words, BusInterfaceMap *interfaces);

#endif
