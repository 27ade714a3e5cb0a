// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "watchcontrols.h"

#include "failure.h"
#include "keyboard.h"

#include <QtDBus/QDBusPendingCallWatcher>
#include <QtDBus/QDBusPendingReply>
#include <algorithm>
#include <functional>

WatchControls::WatchControls(const HostMonitor &monitor, WatchScreen &screen, const QDBusConnection &connection)
    : m_monitor(monitor),
      m_screen(screen),
      m_connection(connection)
{
    m_screen.setHint(QStringLiteral("a answer, x hang up, h hold, m mute, Up and Down choose, q quit"));
}

void WatchControls::press(int key)
{
    const QMap<int, std::function<void()>> meanings = {
        {'a', [this] { drive(Deed::Answer); }},
        {'x', [this] { drive(Deed::HangUp); }},
        {'h', [this] { drive(holdOrTakeBack()); }},
        {'m', [this] { toggleMute(); }},
        {'q', [this] { emit quitRequested(); }},
        {int(Keyboard::Special::Up), [this] { choose(-1); }},
        {int(Keyboard::Special::Down), [this] { choose(1); }},
    };
    m_screen.setMessage({});
    try {
        if (meanings.contains(key))
            meanings.value(key)();
    } catch (const Failure &failure) {
        m_screen.setMessage(failure.reason());
    }
    emit changed();
}

// Beyond either end nothing is chosen.
void WatchControls::choose(int step)
{
    const QList<CallPath> calls = m_monitor.state().calls.keys();
    int index = -1;
    for (int i = 0; i < calls.size(); ++i) {
        if (calls.at(i).path == m_screen.chosen().path)
            index = i;
    }
    if (index < 0 && step < 0)
        index = calls.size();
    m_screen.setChosen(calls.value(index + step));
}

Deed WatchControls::holdOrTakeBack() const
{
    const HostState &state = m_monitor.state();
    if (state.calls.contains(m_screen.chosen())) {
        const bool isHeld = state.calls.value(m_screen.chosen()).status() == QLatin1String("held");
        return isHeld ? Deed::TakeBack : Deed::Hold;
    }
    const bool isAnyActive = std::any_of(state.calls.cbegin(), state.calls.cend(),
        [](const CallInfo &call) { return call.status() == QLatin1String("active"); });
    return isAnyActive ? Deed::Hold : Deed::TakeBack;
}

void WatchControls::drive(Deed deed)
{
    static const QMap<Deed, const char *> methods
        = {{Deed::Answer, "Answer"}, {Deed::HangUp, "Hangup"}, {Deed::Hold, "Hold"}, {Deed::TakeBack, "Hold"}};
    const HostState &state = m_monitor.state();
    const CallPath path = state.calls.contains(m_screen.chosen()) ? m_screen.chosen() : CallChoice::only(state, deed);
    CallChoice::check(state.calls.value(path), deed);
    const bool isHold = deed == Deed::Hold || deed == Deed::TakeBack;
    send(path.path, "Call1", methods.value(deed), isHold ? QVariantList({deed == Deed::Hold}) : QVariantList());
}

void WatchControls::toggleMute()
{
    send(HostMonitor::rootPath(), "Audio1", "SetMicrophoneMuted", {!m_monitor.state().microphoneMuted});
}

void WatchControls::send(const QString &path, const char *interface, const char *method, const QVariantList &arguments)
{
    QDBusMessage command = QDBusMessage::createMethodCall(HostMonitor::serviceName(), path,
        QStringLiteral("org.tarnwickle.voicecall.") + QLatin1String(interface), QLatin1String(method));
    command.setArguments(arguments);
    auto *watcher = new QDBusPendingCallWatcher(m_connection.asyncCall(command), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [=] {
        watcher->deleteLater();
        if (!watcher->isError())
            return;
        m_screen.setMessage(watcher->error().message());
        emit changed();
    });
}
