// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "stricthost.h"

#include "finding.h"

#include <QtCore/QAbstractEventDispatcher>
#include <QtCore/QCoreApplication>
#include <QtCore/QTimerEvent>

namespace {

/** Reads everything; what the values are is for other tests to say. */
void readCall(const AbstractVoiceCallHandler *call)
{
    require(call->provider() && !call->handlerId().isEmpty(), "a call has no provider or no id");
    require(call->duration() >= 0, "a call's duration is negative");
    require(!call->startedAt().isValid() && call->childCalls().isEmpty(), "a call tells what it cannot know");
    require(call->status() >= AbstractVoiceCallHandler::StatusNull
            && call->status() <= AbstractVoiceCallHandler::StatusDisconnected,
        "a call's status is out of range");
    const int size = call->lineId().size() + call->uri().size() + call->appId().size() + call->parentHandlerId().size();
    const bool flags[] = {call->isIncoming(), call->isMultiparty(), call->isEmergency(), call->isForwarded(),
        call->isRemoteHeld(), call->supportsDtmf(), call->supportsMultiparty(), call->holdable(), call->isOngoing()};
    require(size >= 0 && !flags[1] && !flags[2] && !flags[3] && !flags[6], "a call claims a service that it has not");
}

void readProvider(const AbstractVoiceCallProvider *provider)
{
    require(provider->providerId().startsWith(QLatin1String("ringlet/")), "a provider's id is not of its kind");
    require(provider->providerType() == QLatin1String("ringlet"), "a provider's type is not the plug-in's");
    for (const AbstractVoiceCallHandler *call : provider->voiceCalls())
        readCall(call);
}

void fireTimers(QObject *object)
{
    const auto timers = QAbstractEventDispatcher::instance()->registeredTimers(object);
    for (const QAbstractEventDispatcher::TimerInfo &timer : timers) {
        QTimerEvent event(timer.timerId);
        QCoreApplication::sendEvent(object, &event);
    }
}

void fireStrayTimer(QObject *object)
{
    QTimerEvent event(0x7FFFFFFF);
    QCoreApplication::sendEvent(object, &event);
}

AudioDevice device(const QString &id)
{
    AudioDevice device;
    device.id = id;
    device.name = id;
    device.isInput = device.isOutput = true;
    device.properties.insert(id, id.size());
    return device;
}

} // namespace

StrictHost::StrictHost()
{
    connect(this, &VoiceCallManagerInterface::setMuteMicrophoneRequested, this, [this](bool mute) {
        m_audio.microphoneMuted = mute;
        emit microphoneMutedChanged();
    });
}

// --- What the plug-in calls

void StrictHost::addProvider(AbstractVoiceCallProvider *provider)
{
    require(provider && !m_providers.contains(provider), "a provider is added twice");
    for (const AbstractVoiceCallProvider *other : m_providers)
        require(other->providerId() != provider->providerId(), "two providers have the same id");
    require(provider->voiceCalls().isEmpty(), "a provider has calls before it was added");
    m_providers.append(provider);
    track(provider);
    connect(provider, &AbstractVoiceCallProvider::voiceCallAdded, this, &StrictHost::addCall);
    connect(provider, &AbstractVoiceCallProvider::voiceCallRemoved, this, &StrictHost::removeCall);
    connect(provider, &AbstractVoiceCallProvider::voiceCallsChanged, this, [=] { readProvider(provider); });
}

void StrictHost::removeProvider(AbstractVoiceCallProvider *provider)
{
    require(m_providers.removeOne(provider), "a provider is removed that is not there");
    require(provider->voiceCalls().isEmpty(), "a provider goes before its calls");
    readProvider(provider);
}

QString StrictHost::newHandlerId()
{
    const QString id = QString::number(++m_lastId);
    m_issuedIds.insert(id);
    return id;
}

void StrictHost::selectInputDevice(const QString &id)
{
    m_audio.inputDeviceId = id;
    emit selectedInputDeviceChanged();
}

void StrictHost::selectOutputDevice(const QString &id)
{
    m_audio.outputDeviceId = id;
    emit selectedOutputDeviceChanged();
}

// --- What it hears

void StrictHost::addCall(AbstractVoiceCallHandler *call)
{
    const QString id = call->handlerId();
    require(m_issuedIds.remove(id), "a call is announced twice, or under an id of its own making");
    m_listed.insert(id, call);
    ++m_added;
    m_calls.append(call);
    track(call);
    connect(call, &AbstractVoiceCallHandler::statusChanged, this, [=] { changed(call); });
    connect(call, &AbstractVoiceCallHandler::durationChanged, this, [=] { changed(call); });
    connect(call, &AbstractVoiceCallHandler::supportsDtmfChanged, this, [=] { changed(call); });
    changed(call);
}

void StrictHost::removeCall(const QString &id)
{
    require(m_listed.contains(id), "a call is removed twice, or was never announced");
    // Until the host has heard of its end, the call is there to be read.
    readCall(m_listed.take(id));
    ++m_removed;
    react();
}

void StrictHost::changed(AbstractVoiceCallHandler *call)
{
    readCall(call);
    react();
}

void StrictHost::react()
{
    if (!m_reaction)
        return;
    const HostStep step = *m_reaction;
    m_reaction.reset(); // before the step, which may lead here again
    act(step);
}

void StrictHost::track(QObject *object)
{
    ++m_objects;
    connect(object, &QObject::destroyed, this, [this] { --m_objects; });
}

// --- What it does

void StrictHost::act(const HostStep &step)
{
    const QString text = QString::fromStdString(step.text);
    switch (step.kind) {
    case HostStep::ChangeDevices:
        if (step.target % 4 != 3)
            m_audio.devices.append(device(text));
        else
            m_audio.devices.clear();
        emit devicesChanged();
        break;
    case HostStep::SelectInput:
        selectInputDevice(text);
        break;
    case HostStep::SelectOutput:
        selectOutputDevice(text);
        break;
    case HostStep::ToggleMute:
        m_audio.microphoneMuted = !m_audio.microphoneMuted;
        emit microphoneMutedChanged();
        break;
    case HostStep::Dial:
    case HostStep::ReadProvider:
        actOnProvider(step);
        break;
    default:
        actOnCall(step);
    }
}

void StrictHost::actOnProvider(const HostStep &step)
{
    if (m_providers.isEmpty())
        return;
    AbstractVoiceCallProvider *provider = m_providers.at(int(step.target) % m_providers.size());
    readProvider(provider);
    if (step.kind == HostStep::Dial)
        require(!provider->dial(QString::fromStdString(step.text)) && !provider->errorString().isEmpty(),
            "a provider dials, or does not say why it cannot");
}

void StrictHost::actOnCall(const HostStep &step)
{
    m_calls.removeAll(nullptr);
    if (m_calls.isEmpty())
        return;
    AbstractVoiceCallHandler *call = m_calls.at(int(step.target) % m_calls.size());
    const QString text = QString::fromStdString(step.text);
    switch (step.kind) {
    case HostStep::Answer:
        return call->answer();
    case HostStep::Hangup:
        return call->hangup();
    case HostStep::Hold:
        return call->hold();
    case HostStep::Release:
        return call->hold(false);
    case HostStep::SendDtmf:
        return call->sendDtmf(text);
    case HostStep::Deflect:
        return call->deflect(text);
    case HostStep::Merge:
        return call->merge(text);
    case HostStep::Split:
        return call->split();
    case HostStep::Tick:
        return fireTimers(call);
    case HostStep::StrayTick:
        return fireStrayTimer(call);
    default:
        return readCall(call);
    }
}

// --- The end

void StrictHost::requireEmpty() const
{
    require(m_providers.isEmpty(), "a provider is left whose application is gone");
    require(m_listed.isEmpty(), "a call is left whose application is gone");
    require(m_issuedIds.isEmpty(), "a call was made and never announced");
    require(m_objects == 0, "a provider or handler is not deleted although its application is gone");
}

void StrictHost::forget()
{
    require(m_objects == 0, "a provider or handler has outlived the plug-in");
    m_providers.clear();
    m_listed.clear();
    m_issuedIds.clear();
}
