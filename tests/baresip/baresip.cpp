// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "baresip.h"

#include "waitfor.h"

#include <QtCore/QDir>
#include <QtCore/QRegularExpression>
#include <QtNetwork/QUdpSocket>
#include <csignal>
#include <memory>
#include <optional>

static const QString loopback = QStringLiteral("127.0.0.1");
static constexpr int loud = 5000;
static constexpr int silent = 100;

Baresip::Baresip(const Settings &settings) : m_settings(settings), m_control(loopback, settings.controlPort)
{
    QObject::connect(&m_control, &BaresipControl::eventReceived, [this](const QJsonObject &event) {
        m_events.append(event.value(QStringLiteral("type")).toString() + QLatin1Char(' ')
            + event.value(QStringLiteral("param")).toString());
    });
}

// Asked to end, it waits for half a minute for the far ends of calls that nobody is at.
Baresip::~Baresip() { m_program.signal(SIGKILL); }

bool Baresip::start(ControlledBy controlledBy)
{
    m_events.clear();
    m_program.setMustStay();
    if (!writeConfiguration()
        || !m_program.start(QStringLiteral(BARESIP), {QStringLiteral("-4"), QStringLiteral("-f"), m_directory.path()})
        || !m_program.waitForOutput(QStringLiteral("baresip is ready")))
        return false;
    if (controlledBy == ControlledBy::Bridge)
        return true;
    m_control.start();
    return waitFor([this] { return m_control.isConnected(); });
}

void Baresip::kill()
{
    m_program.signal(SIGKILL);
    m_program.waitForExit();
}

QString Baresip::addressOf(const QString &user) const
{
    return QStringLiteral("sip:%1@%2:%3").arg(user, loopback).arg(m_settings.sipPort);
}

bool Baresip::write(const QString &fileName, const QString &text) const
{
    QFile file(m_directory.filePath(fileName));
    return file.open(QIODevice::WriteOnly) && file.write(text.toUtf8()) == text.toUtf8().size();
}

bool Baresip::writeConfiguration() const
{
    QString accounts = QStringLiteral("\"%1\" <%2>;regint=0\n").arg(m_settings.name, address());
    for (const QString &user : m_settings.otherUsers)
        accounts += QStringLiteral("<%1>;regint=0\n").arg(addressOf(user));
    const QHash<QString, QString> values = {{QStringLiteral("SIP_PORT"), QString::number(m_settings.sipPort)},
        {QStringLiteral("FIRST_RTP_PORT"), QString::number(m_settings.rtpPort)},
        {QStringLiteral("LAST_RTP_PORT"), QString::number(m_settings.rtpPort + m_settings.rtpPorts - 1)},
        {QStringLiteral("CONTROL_PORT"), QString::number(m_settings.controlPort)},
        {QStringLiteral("KEYBOARD_PORT"), QString::number(m_settings.keyboardPort)},
        {QStringLiteral("TONE"), QString::number(m_settings.toneHertz)},
        {QStringLiteral("DIRECTORY"), m_directory.path()},
        {QStringLiteral("MODULES"), QStringLiteral(BARESIP_MODULES)}};
    QFile form(QStringLiteral(BARESIP_CONFIG));
    if (!form.open(QIODevice::ReadOnly))
        return false;
    QString config = QString::fromUtf8(form.readAll());
    for (auto value = values.cbegin(); value != values.cend(); ++value)
        config.replace(QLatin1Char('@') + value.key() + QLatin1Char('@'), *value);
    return write(QStringLiteral("config"), config) && write(QStringLiteral("accounts"), accounts)
        && write(QStringLiteral("contacts"), {});
}

// What is typed is shown as it comes in.
void Baresip::type(const QString &command) const { typeAndRead(command, command); }

QString Baresip::typeAndRead(const QString &command, const QString &expected) const
{
    QUdpSocket keyboard;
    keyboard.writeDatagram('/' + command.toUtf8() + '\n', QHostAddress(loopback), m_settings.keyboardPort);
    QByteArray printed;
    const bool isThere = waitFor([&] {
        while (keyboard.hasPendingDatagrams()) {
            QByteArray datagram(int(keyboard.pendingDatagramSize()), '\0');
            keyboard.readDatagram(datagram.data(), datagram.size());
            printed += datagram;
        }
        return printed.contains(expected.toUtf8());
    });
    return isThere ? QString::fromUtf8(printed) : QString();
}

QString Baresip::ask(const QString &command, const QString &parameter)
{
    const auto answer = std::make_shared<std::optional<QString>>();
    m_control.run({{{command, parameter, {}}},
        [answer](const CommandSequence::Result &result) { *answer = result.replies.constLast().text; }});
    waitFor([&] { return answer->has_value(); });
    return answer->value_or(QString());
}

bool Baresip::waitForEvent(const QString &text) const
{
    return waitFor([&] {
        return std::any_of(
            m_events.cbegin(), m_events.cend(), [&](const QString &event) { return event.startsWith(text); });
    });
}

static QString captured(const QString &text, const QString &pattern)
{
    return QRegularExpression(pattern).match(text).captured(1);
}

Baresip::Stream Baresip::stream()
{
    const QString text = ask(QStringLiteral("audio_debug"));
    return {captured(text, QStringLiteral("TX: packets=(\\d+)")).toInt(),
        captured(text, QStringLiteral("rcvd=(\\d+)")).toInt(), captured(text, QStringLiteral("audio dir=(\\w+)")),
        captured(text, QStringLiteral("source: [^\\n]*\\n +time = ([\\d.]+) sec")).toDouble()};
}

bool Baresip::waitForPackets(int count)
{
    const Stream before = stream();
    return waitFor([&] {
        const Stream now = stream();
        return now.sent >= before.sent + count && now.received >= before.received + count;
    });
}

bool Baresip::waitForStandstill()
{
    Stream last = stream();
    return waitFor([&] {
        const Stream now = stream();
        if (now.sent == last.sent && now.received == last.received)
            return now.seconds >= last.seconds + 0.5;
        last = now;
        return false;
    });
}

QString Baresip::recordingFile() const
{
    const QDir directory(m_directory.path());
    const QStringList files = directory.entryList({QStringLiteral("*-dec.wav")}, QDir::Files, QDir::Name);
    return files.isEmpty() ? QString() : directory.filePath(files.constLast());
}

template <typename Condition>
bool Baresip::waitForSound(int samples, Condition condition) const
{
    const QString before = recordingFile();
    const int start = recording().size();
    return waitFor([&] {
        const Recording since = recordingFile() == before ? recording().from(start) : recording();
        return since.size() >= samples && condition(since.last(samples));
    });
}

bool Baresip::waitForTone(int hertz) const
{
    return waitForSound(Recording::samplesPerSecond / 10,
        [&](const Recording &heard) { return heard.tone(hertz) > loud && heard.peak() < 2 * heard.tone(hertz); });
}

bool Baresip::waitForSilence() const
{
    return waitForSound(Recording::samplesPerSecond / 4, [](const Recording &heard) { return heard.peak() < silent; });
}
