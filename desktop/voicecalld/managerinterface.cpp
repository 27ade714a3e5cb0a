// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "managerinterface.h"

#include "busserver/busreply.h"
#include "voicecallmanager.h"

#include <abstractvoicecallprovider.h>

#include <QtCore/QPointer>

// What an error names of what the caller has sent, and of what there is.
static constexpr int namedCharacters = 1024;
static constexpr int namedProviders = 20;

ManagerInterface::ManagerInterface(VoiceCallManager *manager)
    : BusInterface(QStringLiteral("org.tarnwickle.voicecall.Manager1"),
        {{QStringLiteral("Dial"), [this](const QDBusMessage &message) { return dial(message); }}}),
      m_manager(manager)
{
    connect(manager, &VoiceCallManager::providerAdded, this, [this](const ProviderInfo &provider) {
        tell(QStringLiteral("ProviderAdded"), {provider.id, provider.type});
    });
    connect(manager, &VoiceCallManager::providerRemoved, this,
        [this](const QString &id) { tell(QStringLiteral("ProviderRemoved"), {id}); });
}

void ManagerInterface::tell(const QString &change, const QVariantList &arguments)
{
    // By name only: the list is long where there are many providers, and each that comes would make it be sent.
    emit propertiesChanged({{QStringLiteral("Providers"), QVariant()}});
    emit raised(change, arguments);
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
    for (const ProviderInfo &provider : providers.mid(0, namedProviders))
        known.append(provider.id);
    if (providers.size() > namedProviders)
        known.append(QStringLiteral("and %1 more").arg(providers.size() - namedProviders));
    return QStringLiteral("No provider has the id '%1'; %2")
        .arg(id.size() > namedCharacters ? id.left(namedCharacters) + QChar(0x2026) : id, BusReply::thereIs(known));
}
