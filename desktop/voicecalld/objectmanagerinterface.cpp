// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "objectmanagerinterface.h"

#include "bustree.h"

ObjectManagerInterface::ObjectManagerInterface(const BusTree *tree)
    : BusInterface(QStringLiteral("org.freedesktop.DBus.ObjectManager")),
      m_tree(tree)
{
}

QDBusMessage ObjectManagerInterface::call(const QDBusMessage &message)
{
    return message.createReply(QVariant::fromValue(m_tree->managedObjects()));
}
