// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "callhistory.h"

#include "desktophost.h"

#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusObjectPath>

static const QString rootPath = QStringLiteral("/org/tarnwickle/voicecall");
static const QString callInterface = QStringLiteral("org.tarnwickle.voicecall.Call1");

CallHistory::CallHistory()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    const QString objectManager = QStringLiteral("org.freedesktop.DBus.ObjectManager");
    bus.connect(QString(), rootPath, objectManager, QStringLiteral("InterfacesAdded"), QStringLiteral("oa{sa{sv}}"),
        this, SLOT(onInterfacesAdded(QDBusMessage)));
    bus.connect(QString(), rootPath, objectManager, QStringLiteral("InterfacesRemoved"), QStringLiteral("oas"), this,
        SLOT(onInterfacesRemoved(QDBusMessage)));
    bus.connect(QString(), QString(), QStringLiteral("org.freedesktop.DBus.Properties"),
        QStringLiteral("PropertiesChanged"), {callInterface}, QStringLiteral("sa{sv}as"), this,
        SLOT(onPropertiesChanged(QDBusMessage)));

    m_watcher.setConnection(bus);
    m_watcher.addWatchedService(DesktopHost::name());
    connect(&m_watcher, &QDBusServiceWatcher::serviceUnregistered, this, [this] {
        m_calls.clear();
        note();
    });
}

void CallHistory::onInterfacesAdded(const QDBusMessage &signal)
{
    QMap<QString, QVariantMap> interfaces;
    signal.arguments().at(1).value<QDBusArgument>() >> interfaces;
    m_calls.insert(signal.arguments().at(0).value<QDBusObjectPath>().path(), interfaces.value(callInterface));
    note();
}

void CallHistory::onInterfacesRemoved(const QDBusMessage &signal)
{
    m_calls.remove(signal.arguments().at(0).value<QDBusObjectPath>().path());
    note();
}

void CallHistory::onPropertiesChanged(const QDBusMessage &signal)
{
    if (!m_calls.contains(signal.path()))
        return;
    QVariantMap &call = m_calls[signal.path()];
    const QVariantMap changed = qdbus_cast<QVariantMap>(signal.arguments().at(1));
    for (auto property = changed.begin(); property != changed.end(); ++property)
        call.insert(property.key(), property.value());
    note();
}

void CallHistory::note()
{
    QStringList calls;
    for (const QVariantMap &call : qAsConst(m_calls))
        calls.append(call.value(QStringLiteral("Uri")).toString() + QLatin1Char('=')
            + call.value(QStringLiteral("StatusText")).toString());
    calls.sort();
    const QString table = calls.isEmpty() ? QStringLiteral("nothing") : calls.join(QLatin1Char(' '));
    const QString last = m_tables.isEmpty() ? QStringLiteral("nothing") : m_tables.constLast();
    if (table != last)
        m_tables.append(table);
}
