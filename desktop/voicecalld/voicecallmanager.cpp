// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "voicecallmanager.h"

#include "audiorouting.h"
#include "call.h"

#include <abstractvoicecallprovider.h>

#include <algorithm>

VoiceCallManager::VoiceCallManager(AudioRouting *audio, const Bounds &bounds)
    : m_audio(audio),
      m_bounds(bounds),
      m_providerQuota("call managers", bounds.providers),
      m_callQuota("calls", bounds.calls)
{
    connect(audio, &AudioRouting::devicesChanged, this, &VoiceCallManagerInterface::devicesChanged);
    connect(audio, &AudioRouting::inputDeviceChanged, this, &VoiceCallManagerInterface::selectedInputDeviceChanged);
    connect(audio, &AudioRouting::outputDeviceChanged, this, &VoiceCallManagerInterface::selectedOutputDeviceChanged);
    connect(audio, &AudioRouting::microphoneMutedChanged, this, &VoiceCallManagerInterface::microphoneMutedChanged);
    connect(this, &VoiceCallManagerInterface::setMuteMicrophoneRequested, audio, &AudioRouting::setMicrophoneMuted);
}

void VoiceCallManager::addProvider(AbstractVoiceCallProvider *provider)
{
    if (!provider || find(provider)) {
        qCWarning(voicecall, "A provider that is null or already there was added: ignored");
        return;
    }
    const ProviderInfo info = {provider->providerId(), provider->providerType()};
    const auto isSame = [&](const Provider &known) { return known.info.id == info.id; };
    if (std::any_of(m_providers.cbegin(), m_providers.cend(), isSame)) {
        qCWarning(voicecall, "A second provider with the id '%s' was added: ignored", qUtf8Printable(info.id));
        return;
    }
    m_providers.append(Provider{provider, info, ++m_serial, false});
    connect(provider, &QObject::destroyed, this, [=] { forget(provider); });
    connect(provider, &AbstractVoiceCallProvider::voiceCallAdded, this,
        [=](AbstractVoiceCallHandler *handler) { addCall(provider, handler); });
    connect(provider, &AbstractVoiceCallProvider::voiceCallRemoved, this,
        [=](const QString &id) { removeCall(provider, id); });
    if (show(&m_providers.last()))
        addCalls(provider, {});
}

// The bus tells applications apart, and none can choose how it is named there.
static QString applicationOf(const QString &providerId) { return providerId.section(QLatin1Char('/'), 0, 1); }

bool VoiceCallManager::show(Provider *provider)
{
    const ProviderInfo info = provider->info;
    if (!m_bounds.admitsId(info.id)) {
        if (!m_hasWarnedOfIds)
            qCWarning(voicecall, "The id of a provider is too long to be shown: it is hidden, as will be others");
        m_hasWarnedOfIds = true;
        return false;
    }
    provider->isShown = m_providerQuota.take(applicationOf(info.id));
    m_hidesSomething |= !provider->isShown;
    if (provider->isShown)
        emit providerAdded(info);
    return provider->isShown;
}

void VoiceCallManager::addCalls(AbstractVoiceCallProvider *provider, const Handlers &known)
{
    const QList<AbstractVoiceCallHandler *> handlers = provider->voiceCalls();
    for (AbstractVoiceCallHandler *handler : handlers) {
        if (!known.contains(handler))
            addCall(provider, handler);
    }
}

void VoiceCallManager::removeProvider(AbstractVoiceCallProvider *provider)
{
    if (!find(provider))
        return;
    disconnect(provider, nullptr, this, nullptr);
    forget(provider);
}

void VoiceCallManager::removeProvidersSince(int count)
{
    while (!m_providers.isEmpty() && m_providers.constLast().serial > count)
        removeProvider(m_providers.constLast().object);
}

QString VoiceCallManager::newHandlerId() { return QStringLiteral("c%1").arg(++m_handlerIds); }

AudioRouteState VoiceCallManager::audioRouteState() const { return m_audio->state(); }

void VoiceCallManager::selectInputDevice(const QString &id)
{
    if (!m_audio->selectInputDevice(id))
        qCWarning(voicecall, "A plug-in asked for the unknown input device '%s': ignored", qUtf8Printable(id));
}

void VoiceCallManager::selectOutputDevice(const QString &id)
{
    if (!m_audio->selectOutputDevice(id))
        qCWarning(voicecall, "A plug-in asked for the unknown output device '%s': ignored", qUtf8Printable(id));
}

ProviderList VoiceCallManager::providers() const
{
    ProviderList infos;
    for (const Provider &provider : m_providers) {
        if (provider.isShown)
            infos.append(provider.info);
    }
    return infos;
}

AbstractVoiceCallProvider *VoiceCallManager::provider(const QString &id) const
{
    const auto found = std::find_if(m_providers.begin(), m_providers.end(),
        [&](const Provider &provider) { return provider.isShown && provider.info.id == id; });
    return found == m_providers.end() ? nullptr : found->object;
}

const VoiceCallManager::Provider *VoiceCallManager::find(const AbstractVoiceCallProvider *object) const
{
    const auto found = std::find_if(
        m_providers.begin(), m_providers.end(), [&](const Provider &provider) { return provider.object == object; });
    return found == m_providers.end() ? nullptr : &*found;
}

void VoiceCallManager::addCall(AbstractVoiceCallProvider *provider, AbstractVoiceCallHandler *handler)
{
    const Provider *known = find(provider);
    if (!known || !known->isShown || !handler)
        return;
    if (!m_callQuota.take(applicationOf(known->info.id))) {
        m_hidesSomething = true;
        return;
    }
    auto *call = new Call(handler, known->info, m_bounds, this);
    const auto taken = [call](const Call *other) { return other->id() == call->id(); };
    if (std::any_of(m_calls.cbegin(), m_calls.cend(), taken)) {
        qCWarning(voicecall, "A call with the id '%s' is there already: ignored", qUtf8Printable(call->id()));
        m_callQuota.giveBack(applicationOf(call->providerId()));
        delete call;
        return;
    }
    connect(call, &Call::handlerDestroyed, this, [=] { removeCall(call); });
    m_calls.append(call);
    emit callAdded(call);
}

void VoiceCallManager::removeCall(AbstractVoiceCallProvider *provider, const QString &id)
{
    const Provider *known = find(provider);
    const auto found = std::find_if(m_calls.cbegin(), m_calls.cend(),
        [&](const Call *call) { return call->id() == id && call->providerId() == known->info.id; });
    if (found != m_calls.cend())
        removeCall(*found);
}

void VoiceCallManager::removeCall(Call *call)
{
    // Its handler may still speak until the event loop has passed, but no longer to us. The call itself
    // may be the one whose signal or command leads here.
    call->release();
    m_calls.removeOne(call);
    emit callRemoved(call->id());
    call->deleteLater();
    m_callQuota.giveBack(applicationOf(call->providerId()));
    revealLater();
}

void VoiceCallManager::forget(AbstractVoiceCallProvider *provider)
{
    // It may be half destroyed: its address is all that is used of it.
    const Provider gone = *find(provider);
    const QVector<Call *> calls = m_calls;
    for (Call *call : calls) {
        if (call->providerId() == gone.info.id && m_calls.contains(call))
            removeCall(call);
    }
    m_providers.erase(std::remove_if(m_providers.begin(), m_providers.end(),
                          [=](const Provider &known) { return known.object == provider; }),
        m_providers.end());
    if (!gone.isShown)
        return;
    m_providerQuota.giveBack(applicationOf(gone.info.id));
    emit providerRemoved(gone.info.id);
    revealLater();
}

void VoiceCallManager::revealLater()
{
    if (!m_hidesSomething || m_isToReveal)
        return;
    m_isToReveal = true;
    QMetaObject::invokeMethod(this, &VoiceCallManager::reveal, Qt::QueuedConnection);
}

void VoiceCallManager::reveal()
{
    m_isToReveal = m_hidesSomething = false;
    Handlers known;
    for (const Call *call : qAsConst(m_calls))
        known.insert(call->handler());
    // By number: what plug-ins do when they are asked is theirs.
    int next = 0;
    while (next < m_providers.size()) {
        const int i = next++;
        if (m_providers.at(i).isShown || show(&m_providers[i]))
            addCalls(m_providers.at(i).object, known);
    }
}
