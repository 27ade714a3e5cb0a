// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "desktophost.h"

#include "waitfor.h"

#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusConnectionInterface>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusReply>
#include <QtDBus/QDBusVariant>
#include <csignal>
#include <gtest/gtest.h>

static const QString rootPath = QStringLiteral("/org/tarnwickle/voicecall");
static const QString callPath = rootPath + QStringLiteral("/calls/");
static const QString prefix = QStringLiteral("org.tarnwickle.voicecall.");

static bool isOwned()
{
    return QDBusConnection::sessionBus().interface()->isServiceRegistered(DesktopHost::name()).value();
}

static QDBusMessage request(
    const QString &path, const QString &interface, const QString &method, const QVariantList &arguments)
{
    QDBusMessage message = QDBusMessage::createMethodCall(DesktopHost::name(), path, interface, method);
    message.setArguments(arguments);
    return QDBusConnection::sessionBus().call(message, QDBus::Block, waitLimitMs);
}

QString DesktopHost::name() { return QStringLiteral("org.tarnwickle.voicecall"); }

bool DesktopHost::start(const QStringList &options)
{
    m_program.setMustStay();
    return m_program.start(QStringLiteral(VOICECALLD),
               QStringList{QStringLiteral("--plugin"), QStringLiteral(RINGLET_PLUGIN)} + options)
        && m_program.waitForOutput(QStringLiteral("voicecalld: ready")) && waitFor(isOwned);
}

int DesktopHost::stop()
{
    m_program.signal(SIGTERM);
    return m_program.waitForExit();
}

void DesktopHost::kill()
{
    m_program.signal(SIGKILL);
    m_program.waitForExit();
    waitFor([] { return !isOwned(); });
}

QMap<QString, QVariantMap> DesktopHost::calls() const
{
    const QDBusMessage reply = request(
        rootPath, QStringLiteral("org.freedesktop.DBus.ObjectManager"), QStringLiteral("GetManagedObjects"), {});
    QMap<QString, QVariantMap> calls;
    // No answer is no empty table.
    if (reply.signature() != QLatin1String("a{oa{sa{sv}}}")) {
        ADD_FAILURE() << "the host's calls: " << reply.errorMessage().toStdString();
        return calls;
    }
    const QDBusArgument objects = reply.arguments().constFirst().value<QDBusArgument>();
    objects.beginMap();
    while (!objects.atEnd()) {
        QDBusObjectPath path;
        QMap<QString, QVariantMap> interfaces;
        objects.beginMapEntry();
        objects >> path >> interfaces;
        objects.endMapEntry();
        if (path.path().startsWith(callPath))
            calls.insert(path.path().mid(callPath.size()), interfaces.value(prefix + QStringLiteral("Call1")));
    }
    objects.endMap();
    return calls;
}

QVariantMap DesktopHost::call() const
{
    const QMap<QString, QVariantMap> all = calls();
    return all.size() == 1 ? all.first() : QVariantMap();
}

QStringList DesktopHost::table() const
{
    QStringList table;
    const QMap<QString, QVariantMap> all = calls();
    for (const QVariantMap &call : all)
        table.append(call.value(QStringLiteral("Uri")).toString() + QLatin1Char('=')
            + call.value(QStringLiteral("StatusText")).toString());
    table.sort();
    return table;
}

bool DesktopHost::waitForTable(const QStringList &expected) const
{
    return waitFor([&] { return table() == expected; });
}

bool DesktopHost::waitForStatus(const QString &statusText) const
{
    return waitFor([&] { return call().value(QStringLiteral("StatusText")) == statusText; });
}

static QString commandCall(const QVariantMap &call, const QString &method, const QVariantList &arguments)
{
    const QString id = call.value(QStringLiteral("HandlerId")).toString();
    return request(callPath + id, prefix + QStringLiteral("Call1"), method, arguments).errorName();
}

QString DesktopHost::command(const QString &method, const QVariantList &arguments) const
{
    return commandCall(call(), method, arguments);
}

QString DesktopHost::commandTo(const QString &uri, const QString &method, const QVariantList &arguments) const
{
    QVariantMap wanted;
    waitFor([&] {
        const QMap<QString, QVariantMap> all = calls();
        for (const QVariantMap &call : all) {
            if (call.value(QStringLiteral("Uri")) == uri)
                wanted = call;
        }
        return !wanted.isEmpty();
    });
    return commandCall(wanted, method, arguments);
}

QString DesktopHost::manage(const QString &interface, const QString &method, const QVariantList &arguments) const
{
    return request(rootPath, prefix + interface, method, arguments).errorName();
}

QVariant DesktopHost::property(const QString &interface, const QString &property) const
{
    const QDBusMessage reply = request(rootPath, QStringLiteral("org.freedesktop.DBus.Properties"),
        QStringLiteral("Get"), {prefix + interface, property});
    return reply.arguments().value(0).value<QDBusVariant>().variant();
}

QStringList DesktopHost::providers() const
{
    const QVariant value = property(QStringLiteral("Manager1"), QStringLiteral("Providers"));
    QStringList providers;
    if (value.userType() != qMetaTypeId<QDBusArgument>()) {
        ADD_FAILURE() << "the host does not tell its providers";
        return providers;
    }
    const QDBusArgument list = value.value<QDBusArgument>();
    list.beginArray();
    while (!list.atEnd()) {
        QString id;
        QString type;
        list.beginStructure();
        list >> id >> type;
        list.endStructure();
        providers.append(type + QLatin1Char(' ') + id);
    }
    list.endArray();
    return providers;
}
