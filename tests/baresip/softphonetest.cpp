// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "softphonetest.h"

#include "printers.h"
#include "waitfor.h"

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <csignal>

static Baresip::Settings settings(
    const PortBlock &ports, int number, const char *name, int tone, const QStringList &otherUsers = {})
{
    Baresip::Settings settings;
    settings.name = QLatin1String(name) + QStringLiteral(" Example");
    settings.user = QString::fromLatin1(name).toLower();
    settings.sipPort = ports.port(1 + 2 * number);
    settings.controlPort = ports.port(7 + number);
    settings.keyboardPort = ports.port(10 + number);
    settings.rtpPort = ports.port(number == 0 ? 20 : 50 + 10 * number);
    settings.rtpPorts = number == 0 ? 40 : 10;
    settings.toneHertz = tone;
    settings.otherUsers = otherUsers;
    return settings;
}

SoftphoneTest::SoftphoneTest()
    : ann(settings(ports, 0, "Ann", nearTone, {QStringLiteral("office")})),
      ben(settings(ports, 1, "Ben", farTone)),
      cid(settings(ports, 2, "Cid", farTone))
{
}

void SoftphoneTest::SetUp()
{
    ASSERT_TRUE(host.start()) << host.program().errorOutput().toStdString();
    ASSERT_TRUE(ann.start(Baresip::ControlledBy::Bridge)) << ann.log().toStdString();
    ASSERT_TRUE(ben.start(Baresip::ControlledBy::Test)) << ben.log().toStdString();
}

void SoftphoneTest::TearDown()
{
    if (!HasFailure())
        return;
    for (const QString &log : {bridge.lines().join(QLatin1Char('\n')) + bridge.errorOutput(), ann.log(), ben.log()})
        std::cerr << log.toStdString() << "\n----\n";
}

bool SoftphoneTest::startBridge(const QStringList &options)
{
    const QString control = QStringLiteral("127.0.0.1:%1").arg(ann.controlPort());
    bridge.setMustStay();
    return bridge.start(QStringLiteral(RINGLET_BARESIP), QStringList{QStringLiteral("--control"), control} + options)
        && bridge.waitForOutput(QStringLiteral("connected to baresip"))
        && bridge.waitForOutput(QStringLiteral("host: registered"));
}

int SoftphoneTest::stopBridge()
{
    bridge.signal(SIGTERM);
    return bridge.waitForExit();
}

void SoftphoneTest::killBridge()
{
    bridge.signal(SIGKILL);
    bridge.waitForExit();
}

bool SoftphoneTest::ring()
{
    ben.ask(QStringLiteral("dial"), ann.address());
    return host.waitForStatus(QStringLiteral("incoming"));
}

bool SoftphoneTest::talk()
{
    return ring() && command(ben.address(), QStringLiteral("Answer")).isEmpty()
        && host.waitForStatus(QStringLiteral("active")) && ben.waitForEvent(QStringLiteral("CALL_ESTABLISHED"))
        && ben.waitForTone(nearTone) && ann.waitForTone(farTone);
}

QVariantMap SoftphoneTest::hostCall(const QString &address) const
{
    const QMap<QString, QVariantMap> calls = host.calls();
    for (const QVariantMap &call : calls) {
        if (call.value(QStringLiteral("Uri")) == address)
            return call;
    }
    return {};
}

QString SoftphoneTest::command(const QString &address, const QString &method, const QVariantList &arguments) const
{
    const QString id = hostCall(address).value(QStringLiteral("HandlerId")).toString();
    QDBusMessage message
        = QDBusMessage::createMethodCall(DesktopHost::name(), QStringLiteral("/org/tarnwickle/voicecall/calls/") + id,
            QStringLiteral("org.tarnwickle.voicecall.Call1"), method);
    message.setArguments(arguments);
    return QDBusConnection::sessionBus().call(message, QDBus::Block, waitLimitMs).errorName();
}

QString SoftphoneTest::row(const Baresip &peer, const char *status)
{
    return peer.address() + QLatin1Char('=') + QLatin1String(status);
}
