// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_PRIVATEBUS_H
#define TESTS_PRIVATEBUS_H

#include "program.h"

#include <QtCore/QTemporaryDir>
#include <QtDBus/QDBusConnection>

/**
 * A message bus of the test's own: a dbus-daemon with the limits of an ordinary session bus and no
 * activatable services. It ends with this object, and with the process if that dies first.
 *
 * `configuration` is the text of further elements of the daemon's configuration. They stand behind its own,
 * and of two limits the last one holds.
 *
 * Constructing it throws std::runtime_error when the daemon cannot be started.
 */
class PrivateBus
{
public:
    explicit PrivateBus(const QString &configuration = {});

    QByteArray address() const { return m_address; }

    /** Makes it the session bus of this process and of the programs it starts from now on. */
    void useAsSessionBus() const;

    /** A further connection of this process to the bus, closed when the last copy of its name is dropped. */
    QDBusConnection connect(const QString &name) const;

    /** The daemon itself, to be stopped, continued and killed. */
    Program &daemon() { return m_daemon; }

private:
    QTemporaryDir m_directory;
    Program m_daemon;
    QByteArray m_address;
};

#endif
