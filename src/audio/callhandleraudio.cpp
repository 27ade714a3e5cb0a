// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// The part of CallHandler that exchanges the audio state between the host and the application.

#include "calls/callhandler_p.h"
#include "common/trace.h"

#include <QtDBus/QDBusConnection>

void CallHandlerPrivate::addAudioControl()
{
    audioControlProxy.reset(new AudioControlProxy(object.service, object.proxyPath(), QDBusConnection::sessionBus()));
    QObject::connect(audioControlProxy.data(), &AudioControlProxy::RequestMute, q, &CallHandler::onMuteRequested);
    QObject::connect(
        audioControlProxy.data(), &AudioControlProxy::RequestAudioRoute, q, &CallHandler::onAudioRouteRequested);
    QObject::connect(provider->manager(), Host::microphoneMutedChanged, q, &CallHandler::onAudioRouteChanged);
    QObject::connect(provider->manager(), Host::selectedInputDeviceChanged, q, &CallHandler::onAudioRouteChanged);
    QObject::connect(provider->manager(), Host::selectedOutputDeviceChanged, q, &CallHandler::onAudioRouteChanged);
    QObject::connect(provider->manager(), Host::devicesChanged, q, &CallHandler::onAudioDevicesChanged);
    q->onAudioDevicesChanged();
}

void CallHandler::onMuteRequested(bool mute)
{
    RINGLET_TRACE();
    if (Host::mayOwnAudio(status()))
        Host::requestMute(d->provider->manager(), mute);
}

// The parameters are named the wrong way round: the first carries the application's wish for the input
// device, as its signal does. The names are part of the published meta-object, and stay.
void CallHandler::onAudioRouteRequested(const QString &request_output_device_id, const QString &request_input_device_id)
{
    RINGLET_TRACE();
    if (!Host::mayOwnAudio(status()))
        return;
    Host::selectInputDevice(d->provider->manager(), request_output_device_id);
    Host::selectOutputDevice(d->provider->manager(), request_input_device_id);
}

void CallHandler::onAudioDevicesChanged()
{
    RINGLET_TRACE();
    const AudioRouteState state = Host::audioRouteState(d->provider->manager());
    d->audioControlProxy->UpdateAudioRouteState(
        Host::devices(state), Host::microphoneMuted(state), Host::inputDeviceId(state), Host::outputDeviceId(state));
}

void CallHandler::onAudioRouteChanged()
{
    RINGLET_TRACE();
    const AudioRouteState state = Host::audioRouteState(d->provider->manager());
    d->audioControlProxy->UpdateAudioRoute(
        Host::microphoneMuted(state), Host::inputDeviceId(state), Host::outputDeviceId(state));
}
