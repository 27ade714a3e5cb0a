// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "privatebus.h"

#include "waitfor.h"

#include <QtCore/QFile>
#include <stdexcept>

// The limits are those of the session bus configuration that is shipped with the bus daemon; without
// them the much lower ones of a system bus would hold.
static const char ordinaryConfiguration[]
    = R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:dir=%1</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
  <limit name="max_incoming_bytes">1000000000</limit>
  <limit name="max_incoming_unix_fds">250000000</limit>
  <limit name="max_outgoing_bytes">1000000000</limit>
  <limit name="max_outgoing_unix_fds">250000000</limit>
  <limit name="max_message_size">1000000000</limit>
  <limit name="service_start_timeout">120000</limit>
  <limit name="auth_timeout">240000</limit>
  <limit name="pending_fd_timeout">150000</limit>
  <limit name="max_completed_connections">100000</limit>
  <limit name="max_incomplete_connections">10000</limit>
  <limit name="max_connections_per_user">100000</limit>
  <limit name="max_pending_service_starts">10000</limit>
  <limit name="max_names_per_connection">50000</limit>
  <limit name="max_match_rules_per_connection">50000</limit>
  <limit name="max_replies_per_connection">50000</limit>
%2
</busconfig>
)";

PrivateBus::PrivateBus(const QString &configuration)
{
    QFile file(m_directory.filePath(QStringLiteral("bus.conf")));
    if (!file.open(QIODevice::WriteOnly))
        throw std::runtime_error("cannot write " + file.fileName().toStdString());
    file.write(QString::fromLatin1(ordinaryConfiguration).arg(m_directory.path(), configuration).toUtf8());
    file.close();

    m_daemon.setMustStay();
    m_daemon.start(QStringLiteral(DBUS_DAEMON),
        {QStringLiteral("--config-file=") + file.fileName(), QStringLiteral("--nofork"), QStringLiteral("--nopidfile"),
            QStringLiteral("--print-address=1")});
    if (!m_daemon.waitForOutput(QStringLiteral("unix:")))
        throw std::runtime_error("the bus daemon gave no address: " + m_daemon.errorOutput().toStdString());
    m_address = m_daemon.lines().constFirst().toUtf8();
}

void PrivateBus::useAsSessionBus() const { qputenv("DBUS_SESSION_BUS_ADDRESS", m_address); }

QDBusConnection PrivateBus::connect(const QString &name) const
{
    return QDBusConnection::connectToBus(QString::fromUtf8(m_address), name);
}
