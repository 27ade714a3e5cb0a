// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "honestapplication.h"

#include "desktophost.h"
#include "patience.h"
#include "printers.h"
#include "textoutput.h"

#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusPendingCall>
#include <QtDBus/QDBusVariant>
#include <gtest/gtest.h>

static const QString manager = QStringLiteral("/honest");
static const QString lastingCall = QStringLiteral("/honest/lasting");
static const QString hostRoot = QStringLiteral("/org/tarnwickle/voicecall");
static const QString hostCall = QStringLiteral("org.tarnwickle.voicecall.Call1");
static const QString properties = QStringLiteral("org.freedesktop.DBus.Properties");

QString HonestApplication::providerId() const
{
    return QStringLiteral("ringlet/%1@%2").arg(m_application.name(), manager);
}

// Does not block, so that whatever the cell has started can be read from meanwhile.
QDBusMessage HonestApplication::ask(
    const QString &path, const QString &interface, const QString &method, const QVariantList &arguments) const
{
    QDBusMessage message = QDBusMessage::createMethodCall(DesktopHost::name(), path, interface, method);
    message.setArguments(arguments);
    const QDBusPendingCall pending = QDBusConnection::sessionBus().asyncCall(message, m_patience);
    holdsWithin(m_patience + 1000, [&] { return pending.isFinished(); });
    return pending.isFinished() ? pending.reply() : QDBusMessage::createError(QDBusError::NoReply, QString());
}

QString HonestApplication::statusOf(const QString &path) const
{
    const QDBusMessage reply
        = ask(m_shownAs.value(path), properties, QStringLiteral("Get"), {hostCall, QStringLiteral("StatusText")});
    return reply.type() == QDBusMessage::ErrorMessage
        ? reply.errorName()
        : reply.arguments().constFirst().value<QDBusVariant>().variant().toString();
}

int HonestApplication::roundTrip()
{
    QElapsedTimer clock;
    clock.start();
    const QDBusMessage reply = ask(hostRoot, properties, QStringLiteral("Get"),
        {QStringLiteral("org.tarnwickle.voicecall.Manager1"), QStringLiteral("Providers")});
    EXPECT_EQ(reply.type(), QDBusMessage::ReplyMessage)
        << "the host's main thread does not answer: " << reply.errorMessage().toStdString();
    return int(clock.elapsed());
}

// The address of a call is its path, so that it can be found again.
QString HonestApplication::findInHost(const QString &path) const
{
    const QMap<QString, QVariantMap> calls = DesktopHost().calls();
    for (auto call = calls.cbegin(); call != calls.cend(); ++call) {
        if (call->value(QStringLiteral("Uri")) == QVariant("honest:" + path))
            return hostRoot + QStringLiteral("/calls/") + call.key();
    }
    return QString();
}

void HonestApplication::bringIn(const QString &path)
{
    m_application.announce(manager, path,
        QStringLiteral("{'zelkovar.Call.Call1': {'Status': <uint32 3>, 'Incoming': <true>, 'Holdable': <true>,"
                       " 'Uri': <'honest:%1'>}, 'zelkovar.Call.AudioControl1': {}}")
            .arg(path));
    QString shown;
    ASSERT_TRUE(holdsWithin(m_patience,
        [&] {
            shown = findInHost(path);
            return !shown.isEmpty();
        }))
        << path << " is not shown";
    m_shownAs.insert(path, shown);
    EXPECT_EQ(statusOf(path), "incoming");
    // The host has handled the announcement, so it follows the call by now.
    ASSERT_NO_FATAL_FAILURE(roundTrip());
}

void HonestApplication::command(const QString &path, const QString &method, const QVariantList &arguments,
    const QString &expected, const std::function<void()> &meanwhile)
{
    m_application.forgetWhatArrived();
    QDBusMessage message = QDBusMessage::createMethodCall(DesktopHost::name(), m_shownAs.value(path), hostCall, method);
    message.setArguments(arguments);
    QElapsedTimer clock;
    clock.start();
    const QDBusPendingCall pending = QDBusConnection::sessionBus().asyncCall(message, m_patience);
    meanwhile();
    const QString arriving = path + QStringLiteral(" zelkovar.Call.Call1.") + expected;
    ASSERT_TRUE(holdsWithin(m_patience, [&] { return m_application.commands().contains(arriving); }))
        << arriving << " did not arrive on " << method;
    commandTimes.append(clock.nsecsElapsed() / 1000);
    ASSERT_TRUE(holdsWithin(m_patience, [&] { return pending.isFinished(); }));
    EXPECT_FALSE(pending.isError()) << pending.error().message();
    EXPECT_EQ(m_application.commands().filter(QStringLiteral("Call1.")).size(), 1) << "a command too many";
}

void HonestApplication::tellStatus(const QString &path, uint status, const QString &shown)
{
    QElapsedTimer clock;
    clock.start();
    m_application.changeStatus(path, status);
    ASSERT_TRUE(holdsWithin(m_patience, [&] { return statusOf(path) == shown; }))
        << path << " is not shown as " << shown << " but as " << statusOf(path);
    statusTimes.append(clock.nsecsElapsed() / 1000);
}

void HonestApplication::withdraw(const QString &path)
{
    m_application.withdraw(
        manager, path, {QStringLiteral("zelkovar.Call.Call1"), QStringLiteral("zelkovar.Call.AudioControl1")});
    ASSERT_TRUE(holdsWithin(
        m_patience, [&] { return statusOf(path) == QLatin1String("org.freedesktop.DBus.Error.UnknownObject"); }))
        << path << " does not go";
}

void HonestApplication::bringUp()
{
    ASSERT_TRUE(m_application.registerCallManager(manager, DesktopHost::name()));
    ASSERT_NO_FATAL_FAILURE(bringIn(lastingCall));
    ASSERT_NO_FATAL_FAILURE(command(lastingCall, QStringLiteral("Answer"), {}, QStringLiteral("Accept()")));
    ASSERT_NO_FATAL_FAILURE(tellStatus(lastingCall, 5, QStringLiteral("active")));
}

void HonestApplication::makeCall()
{
    const QString path = QStringLiteral("/honest/%1").arg(++m_calls);
    ASSERT_NO_FATAL_FAILURE(bringIn(path));
    ASSERT_NO_FATAL_FAILURE(command(path, QStringLiteral("Answer"), {}, QStringLiteral("Accept()")));
    ASSERT_NO_FATAL_FAILURE(tellStatus(path, 5, QStringLiteral("active")));
    ASSERT_NO_FATAL_FAILURE(command(path, QStringLiteral("Hangup"), {}, QStringLiteral("Reject(uint32 1)")));
    ASSERT_NO_FATAL_FAILURE(tellStatus(path, 0, QStringLiteral("disconnected")));
    ASSERT_NO_FATAL_FAILURE(withdraw(path));
}

void HonestApplication::exchange(const std::function<void()> &meanwhile)
{
    m_isHeld = !m_isHeld;
    ASSERT_NO_FATAL_FAILURE(command(lastingCall, QStringLiteral("Hold"), {m_isHeld},
        QStringLiteral("SetHold(%1)").arg(QLatin1String(m_isHeld ? "true" : "false")), meanwhile));
    ASSERT_NO_FATAL_FAILURE(
        tellStatus(lastingCall, m_isHeld ? 7 : 5, m_isHeld ? QStringLiteral("held") : QStringLiteral("active")));
}

void HonestApplication::hangUp()
{
    ASSERT_NO_FATAL_FAILURE(command(lastingCall, QStringLiteral("Hangup"), {}, QStringLiteral("Reject(uint32 1)")));
    ASSERT_NO_FATAL_FAILURE(tellStatus(lastingCall, 0, QStringLiteral("disconnected")));
    ASSERT_NO_FATAL_FAILURE(withdraw(lastingCall));
}

bool HonestApplication::hearsCommands()
{
    m_application.forgetWhatArrived();
    ask(m_shownAs.value(lastingCall), hostCall, QStringLiteral("Answer"), {});
    // The answer to this comes behind the command.
    EXPECT_TRUE(m_application.settle(DesktopHost::name()));
    return m_application.commands().contains(lastingCall + QStringLiteral(" zelkovar.Call.Call1.Accept()"));
}
