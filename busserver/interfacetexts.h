// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BUSSERVER_INTERFACETEXTS_H
#define BUSSERVER_INTERFACETEXTS_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

/** The files of dbus/, as they were when the program was built. */
namespace InterfaceTexts {

/** The file that describes the interface; empty when there is none. */
QByteArray of(const QString &interface);

} // namespace InterfaceTexts

#endif
