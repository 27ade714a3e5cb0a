// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "call_p.h"

#include "callmanager_p.h"

#include <QtCore/QPointer>

namespace Ringlet {

CallPrivate::CallPrivate(Call *call, CallManagerPrivate &owner, const CallDescription &description, const QString &path)
    : q(call),
      manager(owner),
      object(path, description, owner.connection, *this)
{
}

void CallPrivate::setAnnounced()
{
    isAnnounced = true;
    emit q->announced();
}

// --- What the host knows

// The host subscribes to the status only when it shows the call, and never asks for it: a change that it could
// not hear is sent again.
void CallPrivate::setShown(CallStatus seen)
{
    const QPointer<Call> alive(q);
    const bool isNews = !isShown;
    isShown = true;
    emit q->shown(seen);
    if (alive && isNews)
        emit q->shownChanged(true);
    if (!alive || hasEnded || seen == object.status())
        return;
    object.sendStatus();
    emit q->statusRepeated(object.status());
}

void CallPrivate::forgetHost()
{
    const QPointer<Call> alive(q);
    const bool wasShown = isShown;
    const bool hadRoute = route.has_value();
    const bool hadDevices = !devices.isEmpty();
    isShown = false;
    route.reset();
    devices.clear();
    m_requestedMute.reset();
    m_requestedDevices.reset();
    if (wasShown)
        emit q->shownChanged(false);
    if (alive && hadDevices)
        emit q->audioDevicesChanged();
    if (alive && hadRoute)
        emit q->audioRouteChanged();
}

// --- The host's commands

void CallPrivate::accept()
{
    const QString method = QStringLiteral("Accept");
    emit q->commandReceived(method, {});
    if (is(CallStatus::Incoming))
        emit q->answerRequested();
    else
        emit q->commandIgnored(method);
}

void CallPrivate::reject(uint reason)
{
    emit q->commandReceived(QStringLiteral("Reject"), {reason});
    emit q->rejectRequested(reason);
}

void CallPrivate::setHold(bool hold)
{
    const QString method = QStringLiteral("SetHold");
    emit q->commandReceived(method, {hold});
    if (object.description().holdable && is(hold ? CallStatus::Active : CallStatus::Held))
        emit q->holdRequested(hold);
    else
        emit q->commandIgnored(method);
}

void CallPrivate::sendTones(const QString &tones)
{
    emit q->commandReceived(QStringLiteral("SendDTMF"), {tones});
    emit q->tonesRequested(tones);
}

void CallPrivate::updateAudio(const AudioDeviceList &newDevices, const AudioRoute &newRoute)
{
    const QPointer<Call> alive(q);
    emit q->commandReceived(QStringLiteral("UpdateAudioRouteState"),
        {QVariant::fromValue(newDevices), newRoute.microphoneMuted, newRoute.input, newRoute.output});
    if (alive && newDevices != devices) {
        devices = newDevices;
        emit q->audioDevicesChanged();
    }
    if (alive)
        takeRoute(newRoute);
}

// An update without a state before it does not tell that the host listens.
void CallPrivate::updateAudioRoute(const AudioRoute &newRoute)
{
    const QPointer<Call> alive(q);
    emit q->commandReceived(
        QStringLiteral("UpdateAudioRoute"), {newRoute.microphoneMuted, newRoute.input, newRoute.output});
    if (alive && route)
        takeRoute(newRoute);
}

void CallPrivate::takeRoute(const AudioRoute &newRoute)
{
    m_requestedMute.reset();
    m_requestedDevices.reset();
    if (newRoute == route)
        return;
    route = newRoute;
    m_muteEcho.told(newRoute.microphoneMuted);
    emit q->audioRouteChanged();
}

// --- What the application says

void CallPrivate::setStatus(CallStatus status)
{
    if (hasEnded || status == object.status())
        return;
    object.setStatus(status);
    if (isAnnounced)
        object.sendStatus();
    emit q->statusChanged(status);
}

// The final status goes out before the interfaces do: behind them nobody listens any more.
void CallPrivate::end()
{
    if (hasEnded)
        return;
    const QPointer<Call> alive(q);
    if (!is(CallStatus::Disconnected))
        setStatus(CallStatus::Disconnected);
    if (!alive || hasEnded)
        return;
    hasEnded = true;
    manager.withdraw(*this);
    q->deleteLater();
    emit q->ended();
}

Call::Outcome CallPrivate::canRequest() const
{
    if (!object.description().audioControl)
        return Call::Outcome::Unsupported;
    if (!is(CallStatus::Active) && !is(CallStatus::Dialing))
        return Call::Outcome::WrongStatus;
    return route ? Call::Outcome::Sent : Call::Outcome::TooEarly;
}

// Compared with what was asked for last, too: a wish that is on its way can be taken back.
Call::Outcome CallPrivate::requestMute(bool muted)
{
    const Call::Outcome outcome = canRequest();
    if (outcome != Call::Outcome::Sent)
        return outcome;
    if (route->microphoneMuted == muted && m_requestedMute.value_or(muted) == muted)
        return Call::Outcome::Unchanged;
    m_requestedMute = muted;
    object.sendMuteRequest(muted);
    return outcome;
}

Call::Outcome CallPrivate::requestRoute(const QString &input, const QString &output)
{
    const Call::Outcome outcome = canRequest();
    if (outcome != Call::Outcome::Sent)
        return outcome;
    const QPair<QString, QString> wanted(input, output);
    const QPair<QString, QString> selected(route->input, route->output);
    if (selected == wanted && m_requestedDevices.value_or(wanted) == wanted)
        return Call::Outcome::Unchanged;
    m_requestedDevices = wanted;
    object.sendRouteRequest(input, output);
    return outcome;
}

Call::Outcome CallPrivate::reportMuted(bool muted)
{
    return m_muteEcho.isEcho(muted) ? Call::Outcome::Unchanged : requestMute(muted);
}

// --- Call

Call::Call(CallManagerPrivate &manager, const CallDescription &description, const QString &path)
    : QObject(manager.q),
      d(std::make_unique<CallPrivate>(this, manager, description, path))
{
}

Call::~Call() { d->end(); }

CallDescription Call::description() const { return d->object.description(); }
QString Call::path() const { return d->object.path(); }
QString Call::name() const { return path().mid(path().lastIndexOf(QLatin1Char('/')) + 1); }
CallStatus Call::status() const { return d->object.status(); }
void Call::setStatus(CallStatus status) { d->setStatus(status); }
bool Call::is(CallStatus status) const { return canonical(d->object.status()) == canonical(status); }

void Call::end() { d->end(); }
bool Call::hasEnded() const { return d->hasEnded; }
bool Call::isShown() const { return d->isShown; }
std::optional<AudioRoute> Call::audioRoute() const { return d->route; }
AudioDeviceList Call::audioDevices() const { return d->devices; }
Call::Outcome Call::requestMicrophoneMute(bool muted) { return d->requestMute(muted); }

Call::Outcome Call::requestAudioRoute(const QString &input, const QString &output)
{
    return d->requestRoute(input, output);
}

Call::Outcome Call::reportMicrophoneMuted(bool muted) { return d->reportMuted(muted); }

} // namespace Ringlet
