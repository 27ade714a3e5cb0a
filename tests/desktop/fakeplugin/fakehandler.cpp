// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "fakehandler.h"

#include <abstractvoicecallprovider.h>

#include <QtCore/QHash>

FakeHandler::FakeHandler(const QString &id, const QVariantMap &state, AbstractVoiceCallProvider *provider,
    std::function<void(const QString &)> note)
    : AbstractVoiceCallHandler(provider),
      m_id(id),
      m_state(state),
      m_provider(provider),
      m_note(std::move(note))
{
}

AbstractVoiceCallHandler::VoiceCallStatus FakeHandler::status() const
{
    return VoiceCallStatus(m_state.value(QStringLiteral("Status")).toInt());
}

void FakeHandler::hangup()
{
    command(QStringLiteral("hangup"));
    if (flag("LeavesOnHangup"))
        emit leaving();
}

void FakeHandler::hold(bool on) { command(on ? QStringLiteral("hold true") : QStringLiteral("hold false")); }

void FakeHandler::change(const QVariantMap &changes, const QString &signal)
{
    for (auto change = changes.cbegin(); change != changes.cend(); ++change)
        m_state.insert(change.key(), change.value());

    const QHash<QString, std::function<void()>> signalsByName = {
        {QStringLiteral("statusChanged"), [this] { emit statusChanged(status()); }},
        {QStringLiteral("lineIdChanged"), [this] { emit lineIdChanged(lineId()); }},
        {QStringLiteral("durationChanged"), [this] { emit durationChanged(duration()); }},
        {QStringLiteral("startedAtChanged"), [this] { emit startedAtChanged(startedAt()); }},
        {QStringLiteral("emergencyChanged"), [this] { emit emergencyChanged(isEmergency()); }},
        {QStringLiteral("multipartyChanged"), [this] { emit multipartyChanged(isMultiparty()); }},
        {QStringLiteral("forwardedChanged"), [this] { emit forwardedChanged(isForwarded()); }},
        {QStringLiteral("remoteHeldChanged"), [this] { emit remoteHeldChanged(isRemoteHeld()); }},
        {QStringLiteral("supportsDtmfChanged"), [this] { emit supportsDtmfChanged(supportsDtmf()); }},
        {QStringLiteral("parentHandlerIdChanged"), [this] { emit parentHandlerIdChanged(parentHandlerId()); }},
        {QStringLiteral("childCallsChanged"), [this] { emit childCallsChanged(); }},
    };
    if (signalsByName.contains(signal))
        signalsByName.value(signal)();
}
