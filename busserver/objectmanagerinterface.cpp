// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "objectmanagerinterface.h"

#include "bustree.h"

ObjectManagerInterface::ObjectManagerInterface(const BusTree *tree)
    : BusInterface(QStringLiteral("org.freedesktop.DBus.ObjectManager"),
        {{QStringLiteral("GetManagedObjects"), [tree](const QDBusMessage &call) {
              return call.createReply(QVariant::fromValue(tree->managedObjects()));
          }}})
{
}
