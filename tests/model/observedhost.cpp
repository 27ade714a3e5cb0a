// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "observedhost.h"

#include "busmonitor.h"
#include "callmodel.h"

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <algorithm>

static std::string text(bool value) { return value ? "true" : "false"; }

static std::string quoted(const QString &text) { return '"' + text.toStdString() + '"'; }

ObservedHost::ObservedHost(std::function<std::string(const QString &)> peerName) : m_peerName(std::move(peerName))
{
    connect(this, &VoiceCallManagerInterface::setMuteMicrophoneRequested, this, [this](bool mute) {
        note("mute " + text(mute));
        setMuted(mute);
    });
}

void ObservedHost::note(const std::string &line)
{
    QDBusMessage message
        = QDBusMessage::createSignal(QStringLiteral("/host"), QString::fromUtf8(noteInterface), QStringLiteral("Note"));
    message << QString::fromStdString(line);
    QDBusConnection::sessionBus().send(message);
}

// A provider id is "ringlet/", the application's bus name, "@", and the path; here without the first.
std::string ObservedHost::idOf(const AbstractVoiceCallProvider *provider) const
{
    const QString id = provider->providerId();
    const QString identity = id.section(QLatin1Char('/'), 1);
    return m_peerName(identity.section(QLatin1Char('@'), 0, 0)) + "@"
        + identity.section(QLatin1Char('@'), 1).toStdString();
}

void ObservedHost::addProvider(AbstractVoiceCallProvider *provider)
{
    const std::string id = idOf(provider);
    note("provider added " + id);
    m_providers.push_back({id, provider, false});
    connect(provider, &AbstractVoiceCallProvider::voiceCallAdded, this,
        [=](AbstractVoiceCallHandler *handler) { addCall(id, handler); });
    connect(provider, &AbstractVoiceCallProvider::voiceCallRemoved, this,
        [=](const QString &callId) { removeCall(id, callId); });
    connect(provider, &AbstractVoiceCallProvider::voiceCallsChanged, this, [=] { note("calls changed " + id); });
}

void ObservedHost::removeProvider(AbstractVoiceCallProvider *provider)
{
    note("provider removed " + idOf(provider));
    for (Provider &known : m_providers)
        if (known.provider == provider)
            known.removed = true;
}

// Before the call is made, whose time may run at once.
QString ObservedHost::newHandlerId()
{
    m_ages.emplace_back();
    m_ages.back().start();
    return QStringLiteral("h%1").arg(m_ages.size());
}

void ObservedHost::addCall(const std::string &providerId, AbstractVoiceCallHandler *handler)
{
    const std::string id = handler->handlerId().toStdString();
    note("call added " + id + " " + providerId);
    if (!handler->provider()->voiceCalls().contains(handler))
        note(id + " is not among the calls of its provider");
    m_calls.push_back({id, providerId, handler, m_ages.at(std::stoul(id.substr(1)) - 1), false});
    listen(id, handler);
}

void ObservedHost::removeCall(const std::string &providerId, const QString &id)
{
    note("call removed " + id.toStdString() + " " + providerId);
    for (Call &call : m_calls) {
        if (call.id != id.toStdString())
            continue;
        if (call.handler && call.handler->provider()->voiceCalls().contains(call.handler))
            note(call.id + " is still among the calls of its provider");
        call.removed = true;
    }
}

void ObservedHost::listen(const std::string &id, AbstractVoiceCallHandler *handler)
{
    const auto on = [&](auto signal, const std::string &words) {
        connect(handler, signal, this, [=] { note(id + " " + words); });
    };
    connect(
        handler, &AbstractVoiceCallHandler::statusChanged, this, [=](AbstractVoiceCallHandler::VoiceCallStatus status) {
            note(id + " status " + std::to_string(status));
            if (handler->status() != status)
                note(id + " has another status than it tells");
        });
    connect(handler, &AbstractVoiceCallHandler::supportsDtmfChanged, this,
        [=](bool supported) { note(id + " dtmf " + text(supported)); });
    on(&AbstractVoiceCallHandler::lineIdChanged, "line changed");
    on(&AbstractVoiceCallHandler::startedAtChanged, "start changed");
    on(&AbstractVoiceCallHandler::emergencyChanged, "emergency changed");
    on(&AbstractVoiceCallHandler::multipartyChanged, "multiparty changed");
    on(&AbstractVoiceCallHandler::forwardedChanged, "forwarded changed");
    on(&AbstractVoiceCallHandler::remoteHeldChanged, "remote held changed");
    on(&AbstractVoiceCallHandler::parentHandlerIdChanged, "parent changed");
    on(&AbstractVoiceCallHandler::childCallsChanged, "children changed");
}

void ObservedHost::selectInputDevice(const QString &id)
{
    note("input " + id.toStdString());
    setInputDevice(id);
}

void ObservedHost::selectOutputDevice(const QString &id)
{
    note("output " + id.toStdString());
    setOutputDevice(id);
}

void ObservedHost::setMuted(bool muted)
{
    m_audio.microphoneMuted = muted;
    emit microphoneMutedChanged();
}

void ObservedHost::setInputDevice(const QString &id)
{
    m_audio.inputDeviceId = id;
    emit selectedInputDeviceChanged();
}

void ObservedHost::setOutputDevice(const QString &id)
{
    m_audio.outputDeviceId = id;
    emit selectedOutputDeviceChanged();
}

void ObservedHost::setDevices(unsigned count)
{
    m_audio.devices.clear();
    for (unsigned i = 0; i < count; ++i) {
        const AudioDeviceRow &row = audioDeviceRows()[i];
        AudioDevice device;
        device.id = QString::fromUtf8(row.id);
        device.type = row.type;
        device.isInput = row.isInput;
        device.isOutput = row.isOutput;
        device.name = QString::fromUtf8(row.name);
        m_audio.devices.append(device);
    }
    emit devicesChanged();
}

AbstractVoiceCallHandler *ObservedHost::call(const std::string &id) const
{
    const auto found = std::find_if(
        m_calls.begin(), m_calls.end(), [&](const Call &call) { return call.id == id && !call.removed; });
    return found == m_calls.end() ? nullptr : found->handler.data();
}

AbstractVoiceCallProvider *ObservedHost::provider(const std::string &id) const
{
    const auto found = std::find_if(m_providers.begin(), m_providers.end(),
        [&](const Provider &provider) { return provider.id == id && !provider.removed; });
    return found == m_providers.end() ? nullptr : found->provider.data();
}

Lines ObservedHost::state() const
{
    Lines lines;
    int calls = 0;
    for (const Provider &known : m_providers) {
        if (known.removed)
            continue;
        if (!known.provider) {
            lines.push_back(known.id + " was deleted without a word");
            continue;
        }
        lines.push_back(known.id + " type " + known.provider->providerType().toStdString() + " error "
            + quoted(known.provider->errorString()));
        calls += known.provider->voiceCalls().size();
    }
    for (const Call &call : m_calls) {
        if (call.removed)
            continue;
        if (!call.handler) {
            lines.push_back(call.providerId + " " + call.id + " was deleted without a word");
            continue;
        }
        --calls;
        lines.push_back(described(call));
        const Lines odd = oddities(call);
        lines.insert(lines.end(), odd.begin(), odd.end());
    }
    if (calls != 0)
        lines.push_back("providers list " + std::to_string(calls) + " calls more than the host has");
    std::sort(lines.begin(), lines.end());
    return lines;
}

std::string ObservedHost::described(const Call &call) const
{
    const AbstractVoiceCallHandler &handler = *call.handler;
    return call.providerId + " " + handler.handlerId().toStdString() + " status " + std::to_string(handler.status())
        + " line " + quoted(handler.lineId()) + " uri " + quoted(handler.uri()) + " app " + quoted(handler.appId())
        + " incoming " + text(handler.isIncoming()) + " holdable " + text(handler.holdable()) + " dtmf "
        + text(handler.supportsDtmf()) + " remoteheld " + text(handler.isRemoteHeld());
}

// What never changes, and the duration, which depends on the clock: no call is longer than it has been there.
Lines ObservedHost::oddities(const Call &call) const
{
    const AbstractVoiceCallHandler &handler = *call.handler;
    const std::pair<bool, const char *> all[] = {
        {handler.isMultiparty() || handler.supportsMultiparty(), "is multiparty"},
        {handler.isEmergency(), "is an emergency"},
        {handler.isForwarded(), "is forwarded"},
        {handler.startedAt().isValid(), "has a start"},
        {!handler.parentHandlerId().isEmpty() || !handler.childCalls().isEmpty(), "is in a conference"},
        {handler.provider() != provider(call.providerId), "has another provider"},
        {handler.duration() < 0 || handler.duration() > call.age.elapsed() / 1000, "lasts longer than it is there"},
    };
    Lines lines;
    for (const auto &[is, words] : all)
        if (is)
            lines.push_back(call.id + " " + words);
    return lines;
}

Lines ObservedHost::leftOver(bool all) const
{
    Lines lines;
    for (const Provider &known : m_providers)
        if (known.provider && (all || known.removed))
            lines.push_back("provider " + known.id + " has not been deleted");
    for (const Call &call : m_calls)
        if (call.handler && (all || call.removed))
            lines.push_back("call " + call.id + " has not been deleted");
    return lines;
}
