// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALLD_PROVIDERINFO_H
#define VOICECALLD_PROVIDERINFO_H

#include <QtCore/QList>
#include <QtCore/QMetaType>
#include <QtCore/QString>
#include <QtDBus/QDBusArgument>

/** A provider as the bus shows it: (ss). */
struct ProviderInfo
{
    QString id;
    QString type;

    /** Registers both types with the bus library; to be called before one is sent. */
    static void registerTypes();
};

using ProviderList = QList<ProviderInfo>;

QDBusArgument &operator<<(QDBusArgument &argument, const ProviderInfo &provider);
const QDBusArgument &operator>>(const QDBusArgument &argument, ProviderInfo &provider);

Q_DECLARE_METATYPE(ProviderInfo)
Q_DECLARE_METATYPE(ProviderList)

#endif
