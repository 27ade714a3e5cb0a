// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "audioswitch.h"

#include "baresipcontrol.h"
#include "replytext.h"

static const QString sourceCommand = QStringLiteral("ausrc");
static const QString playerCommand = QStringLiteral("auplay");

AudioSwitch::AudioSwitch(const DeviceMap &inputs, const DeviceMap &outputs, BaresipControl &control, QObject *parent)
    : QObject(parent),
      m_control(control),
      m_input{sourceCommand, inputs, {}, {}},
      m_output{playerCommand, outputs, {}, {}}
{
}

void AudioSwitch::follow(const Ringlet::AudioRoute &route, const QVector<Command> &selection)
{
    follow(m_input, route.input, selection);
    follow(m_output, route.output, selection);
}

void AudioSwitch::reset()
{
    for (Direction *direction : {&m_input, &m_output}) {
        direction->hostDevice.clear();
        direction->inUse.clear();
    }
}

void AudioSwitch::follow(Direction &direction, const QString &hostDevice, const QVector<Command> &selection)
{
    const QString device = direction.devices.value(hostDevice);
    if (direction.hostDevice == hostDevice || device.isEmpty())
        return;
    direction.hostDevice = hostDevice;
    const Command look{QStringLiteral("audio_debug"), {}, {}};
    m_control.run({selection + QVector<Command>{look, {direction.command, device, {}}, look},
        [this, &direction, device, selection](
            const CommandSequence::Result &result) { onSwitched(direction, device, selection, result); }});
}

static QString deviceFor(const QString &command, const QString &text)
{
    const ReplyText::AudioDevices devices = ReplyText::audioDevices(text);
    return command == sourceCommand ? devices.source : devices.player;
}

static QString driver(const QString &device) { return device.section(QLatin1Char(','), 0, 0); }

// A failed switch leaves the call without sound: what was in use before is put back.
void AudioSwitch::onSwitched(Direction &direction, const QString &device, const QVector<Command> &selection,
    const CommandSequence::Result &result)
{
    if (!result.isComplete) {
        direction.hostDevice.clear();
        return;
    }
    const int last = result.replies.size() - 1;
    const QString fault = ReplyText::switchingFault(result.replies.at(last - 1).text);
    const QString now = deviceFor(direction.command, result.replies.at(last).text);
    if (fault.isEmpty() && driver(now) == driver(device)) {
        direction.inUse = device;
        return;
    }
    emit warning(QStringLiteral("baresip cannot use %1 (%2 for the host's %3): %4")
                     .arg(device, direction.command, direction.hostDevice,
                         fault.isEmpty() ? QStringLiteral("it uses %1").arg(now) : fault));
    const QString before
        = direction.inUse.isEmpty() ? deviceFor(direction.command, result.replies.at(last - 2).text) : direction.inUse;
    if (!before.isEmpty() && driver(before) != QLatin1String("none"))
        m_control.run({selection + QVector<Command>{{direction.command, before, {}}}, {}});
}
