// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "audiorouting.h"

#include "audiobackend.h"

static QStringList idsWhere(const AudioDeviceList &devices, bool AudioDevice::*fits)
{
    QStringList ids;
    for (const AudioDevice &device : devices) {
        if (device.*fits)
            ids.append(device.id);
    }
    return ids;
}

static QString keptOrFirst(const QString &selected, const QStringList &fitting)
{
    return fitting.contains(selected) ? selected : fitting.value(0);
}

AudioRouting::AudioRouting(AudioBackend *backend) : m_backend(backend)
{
    connect(backend, &AudioBackend::devicesChanged, this, &AudioRouting::takeDevices);
    takeDevices();
}

QStringList AudioRouting::inputDeviceIds() const { return idsWhere(m_state.devices, &AudioDevice::isInput); }

QStringList AudioRouting::outputDeviceIds() const { return idsWhere(m_state.devices, &AudioDevice::isOutput); }

bool AudioRouting::selectInputDevice(const QString &id)
{
    if (!inputDeviceIds().contains(id))
        return false;
    m_state.inputDeviceId = id;
    announce();
    return true;
}

bool AudioRouting::selectOutputDevice(const QString &id)
{
    if (!outputDeviceIds().contains(id))
        return false;
    m_state.outputDeviceId = id;
    announce();
    return true;
}

void AudioRouting::setMicrophoneMuted(bool muted)
{
    m_state.microphoneMuted = muted;
    announce();
}

void AudioRouting::takeDevices()
{
    m_state.devices = m_backend->devices();
    m_state.inputDeviceId = keptOrFirst(m_state.inputDeviceId, inputDeviceIds());
    m_state.outputDeviceId = keptOrFirst(m_state.outputDeviceId, outputDeviceIds());
    announce();
}

static bool isSame(const AudioRouteState &left, const AudioRouteState &right)
{
    return left.devices == right.devices && left.inputDeviceId == right.inputDeviceId
        && left.outputDeviceId == right.outputDeviceId && left.microphoneMuted == right.microphoneMuted;
}

void AudioRouting::announce()
{
    if (isSame(m_announced, m_state))
        return;
    // A listener that changes the state again announces that itself, and nothing is left to say here then.
    const auto differs = [this](auto AudioRouteState::*member) {
        if (m_announced.*member == m_state.*member)
            return false;
        m_announced.*member = m_state.*member;
        return true;
    };
    m_backend->apply(m_state);
    if (differs(&AudioRouteState::devices))
        emit devicesChanged();
    if (differs(&AudioRouteState::inputDeviceId))
        emit inputDeviceChanged();
    if (differs(&AudioRouteState::outputDeviceId))
        emit outputDeviceChanged();
    if (differs(&AudioRouteState::microphoneMuted))
        emit microphoneMutedChanged();
}
