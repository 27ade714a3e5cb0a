// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "pathtaker.h"

#include <QtDBus/QDBusConnection>

bool PathTaker::initialize()
{
    return QDBusConnection::sessionBus().registerObject(
        QStringLiteral("/zelkovar/call/service"), this, QDBusConnection::ExportAdaptors);
}
