// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "providerinfo.h"

#include <QtDBus/QDBusMetaType>

void ProviderInfo::registerTypes()
{
    qDBusRegisterMetaType<ProviderInfo>();
    qDBusRegisterMetaType<ProviderList>();
}

QDBusArgument &operator<<(QDBusArgument &argument, const ProviderInfo &provider)
{
    argument.beginStructure();
    argument << provider.id << provider.type;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, ProviderInfo &provider)
{
    argument.beginStructure();
    argument >> provider.id >> provider.type;
    argument.endStructure();
    return argument;
}
