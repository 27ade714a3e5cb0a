// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "recordinghost.h"

static QString text(bool value) { return value ? QStringLiteral("true") : QStringLiteral("false"); }

RecordingHost::RecordingHost()
{
    connect(this, &VoiceCallManagerInterface::setMuteMicrophoneRequested, this,
        [this](bool mute) { note(QStringLiteral("mute %1").arg(text(mute))); });
}

void RecordingHost::addProvider(AbstractVoiceCallProvider *provider)
{
    note(QStringLiteral("provider added %1").arg(provider->providerId()));
    providers.append(provider);
    connect(provider, &AbstractVoiceCallProvider::voiceCallAdded, this, &RecordingHost::follow);
    connect(provider, &AbstractVoiceCallProvider::voiceCallRemoved, this, [this](const QString &id) {
        note(QStringLiteral("call removed %1").arg(id));
        disconnect(calls.take(id), nullptr, this, nullptr);
    });
    connect(provider, &AbstractVoiceCallProvider::voiceCallsChanged, this,
        [this] { note(QStringLiteral("calls changed")); });
}

void RecordingHost::removeProvider(AbstractVoiceCallProvider *provider)
{
    note(QStringLiteral("provider removed %1").arg(provider->providerId()));
    providers.removeOne(provider);
    disconnect(provider, nullptr, this, nullptr);
}

QString RecordingHost::newHandlerId() { return QStringLiteral("h%1").arg(++handlers); }

AudioRouteState RecordingHost::audioRouteState() const { return audio; }

void RecordingHost::selectInputDevice(const QString &id) { note(QStringLiteral("input %1").arg(id)); }

void RecordingHost::selectOutputDevice(const QString &id) { note(QStringLiteral("output %1").arg(id)); }

void RecordingHost::follow(AbstractVoiceCallHandler *handler)
{
    const QString id = handler->handlerId();
    note(QStringLiteral("call added %1").arg(id));
    calls.insert(id, handler);
    connect(
        handler, &AbstractVoiceCallHandler::statusChanged, this, [=](AbstractVoiceCallHandler::VoiceCallStatus status) {
            note(QStringLiteral("%1 status %2").arg(id).arg(int(status)));
        });
    connect(handler, &AbstractVoiceCallHandler::durationChanged, this,
        [=](int seconds) { note(QStringLiteral("%1 duration %2").arg(id).arg(seconds)); });
    connect(handler, &AbstractVoiceCallHandler::supportsDtmfChanged, this,
        [=](bool supported) { note(QStringLiteral("%1 dtmf %2").arg(id, text(supported))); });
}
