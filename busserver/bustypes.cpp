// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "bustypes.h"

#include <QtDBus/QDBusMetaType>

void registerBusTypes()
{
    qDBusRegisterMetaType<BusInterfaceMap>();
    qDBusRegisterMetaType<BusObjectMap>();
}
