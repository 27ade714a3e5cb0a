// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "introspectableinterface.h"

#include "bustree.h"

IntrospectableInterface::IntrospectableInterface(const BusTree *tree)
    : BusInterface(QStringLiteral("org.freedesktop.DBus.Introspectable")),
      m_tree(tree)
{
}

QDBusMessage IntrospectableInterface::call(const QDBusMessage &message)
{
    const QString text
        = QStringLiteral("<!DOCTYPE node PUBLIC \"-//freedesktop//DTD D-BUS Object Introspection 1.0//EN\"\n"
                         "\"http://www.freedesktop.org/standards/dbus/1.0/introspect.dtd\">\n"
                         "<node>\n%1</node>\n");
    return message.createReply(text.arg(m_tree->introspect(message.path())));
}
