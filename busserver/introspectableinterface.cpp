// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "introspectableinterface.h"

#include "bustree.h"

static QDBusMessage introspect(const BusTree &tree, const QDBusMessage &call)
{
    const QString text
        = QStringLiteral("<!DOCTYPE node PUBLIC \"-//freedesktop//DTD D-BUS Object Introspection 1.0//EN\"\n"
                         "\"http://www.freedesktop.org/standards/dbus/1.0/introspect.dtd\">\n"
                         "<node>%1\n</node>\n");
    return call.createReply(text.arg(tree.introspect(call.path())));
}

IntrospectableInterface::IntrospectableInterface(const BusTree *tree)
    : BusInterface(QStringLiteral("org.freedesktop.DBus.Introspectable"),
        {{QStringLiteral("Introspect"), [tree](const QDBusMessage &call) { return introspect(*tree, call); }}})
{
}
