// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "managerinterface.h"

#include "busserver/busreply.h"
#include "voicecallmanager.h"

#include <abstractvoicecallprovider.h>

#include <QtCore/QPointer>

ManagerInterface::ManagerInterface(VoiceCallManager *manager)
    : BusInterface(QStringLiteral("org.tarnwickle.voicecall.Manager1"),
        {{QStringLiteral("Dial"), [this](const QDBusMessage &message) { return dial(message); }}}),
      m_manager(manager)
{
    connect(manager, &VoiceCallManager::providersChanged, this, [this] { emit propertiesChanged(properties()); });
}

QVariantMap ManagerInterface::properties() const
{
    return {{QStringLiteral("Providers"), QVariant::fromValue(m_manager->providers())}};
}

QDBusMessage ManagerInterface::dial(const QDBusMessage &message) const
{
    const QString id = message.arguments().at(0).toString();
    const QPointer<AbstractVoiceCallProvider> provider = m_manager->provider(id);
    if (!provider)
        return message.createErrorReply(
            QStringLiteral("org.tarnwickle.voicecall.Error.NoSuchProvider"), noSuchProvider(id));
    if (provider->dial(message.arguments().at(1).toString()))
        return message.createReply();
    return message.createErrorReply(
        QStringLiteral("org.tarnwickle.voicecall.Error.DialRefused"), provider ? provider->errorString() : QString());
}

QString ManagerInterface::noSuchProvider(const QString &id) const
{
    QStringList known;
    const ProviderList providers = m_manager->providers();
    for (const ProviderInfo &provider : providers)
        known.append(provider.id);
    return QStringLiteral("No provider has the id '%1'; %2").arg(id, BusReply::thereIs(known));
}
