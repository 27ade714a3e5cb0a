// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "busstage.h"

#include "finding.h"

#include <QtCore/QStringList>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>

namespace {

/** A host step as one call of the desktop host's; what the plug-in would do by itself there has none. */
struct CallStep
{
    HostStep::Kind kind;
    const char *method;
    enum { Nothing, True, False, Text } argument;
};
constexpr CallStep callSteps[]
    = {{HostStep::Answer, "Answer", CallStep::Nothing}, {HostStep::Hangup, "Hangup", CallStep::Nothing},
        {HostStep::Hold, "Hold", CallStep::True}, {HostStep::Release, "Hold", CallStep::False},
        {HostStep::SendDtmf, "SendDtmf", CallStep::Text}, {HostStep::Deflect, "Deflect", CallStep::Text},
        {HostStep::Merge, "Merge", CallStep::Text}, {HostStep::Split, "Split", CallStep::Nothing}};

QVariantList argumentsOf(const CallStep &call, const HostStep &step)
{
    if (call.argument == CallStep::Nothing)
        return {};
    return {call.argument == CallStep::Text ? QVariant(QString::fromStdString(step.text))
                                            : QVariant(call.argument == CallStep::True)};
}

} // namespace

std::string BusStage::hostName() const { return DesktopHost::name().toStdString(); }

Peer &BusStage::peer(int application) { return m_applications.try_emplace(application, m_address).first->second; }

std::string BusStage::name(int application) { return peer(application).name(); }

void BusStage::send(int application, Message message) { peer(application).send(std::move(message)); }

Message BusStage::takeRequest(int application)
{
    settle();
    while (Message message = peer(application).take()) {
        if (dbus_message_has_member(message.get(), "GetManagedObjects"))
            return message;
    }
    return nullptr;
}

/** The host answers from the thread that handles what came before. */
void BusStage::settle()
{
    if (!m_host.providers().isEmpty())
        return;
    m_host.program().waitForExit();
    reportFinding("the host does not answer any more; it says:\n" + m_host.program().errorOutput().toStdString());
}

void BusStage::act(const HostStep &step)
{
    const QString id = QString::fromStdString(step.text);
    if (step.kind == HostStep::SelectInput || step.kind == HostStep::SelectOutput) {
        m_host.manage("Audio1", step.kind == HostStep::SelectInput ? "SelectInputDevice" : "SelectOutputDevice", {id});
        return;
    }
    if (step.kind == HostStep::ToggleMute) {
        m_host.manage("Audio1", "SetMicrophoneMuted", {step.target % 2 == 0});
        return;
    }
    for (const CallStep &call : callSteps) {
        if (call.kind == step.kind)
            command(step.target, call.method, argumentsOf(call, step));
    }
}

void BusStage::command(unsigned target, const char *method, const QVariantList &arguments)
{
    QStringList ids;
    const QMap<QString, QVariantMap> calls = m_host.calls();
    for (auto call = calls.cbegin(); call != calls.cend(); ++call) {
        if (!call->value("ProviderId").toString().contains(m_spared))
            ids.append(call.key());
    }
    if (ids.isEmpty())
        return;
    QDBusMessage message = QDBusMessage::createMethodCall(DesktopHost::name(),
        "/org/tarnwickle/voicecall/calls/" + ids.at(int(target) % ids.size()), "org.tarnwickle.voicecall.Call1",
        method);
    message.setArguments(arguments);
    QDBusConnection::sessionBus().send(message);
}
