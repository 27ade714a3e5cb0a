// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "hostmonitor.h"

#include <QtDBus/QDBusError>
#include <QtDBus/QDBusObjectPath>
#include <QtDBus/QDBusPendingCallWatcher>
#include <QtDBus/QDBusPendingReply>

static const QString objectManager = QStringLiteral("org.freedesktop.DBus.ObjectManager");
static const QString properties = QStringLiteral("org.freedesktop.DBus.Properties");
static const QString callInterface = QStringLiteral("org.tarnwickle.voicecall.Call1");
static const QString managerInterface = QStringLiteral("org.tarnwickle.voicecall.Manager1");
static const QString audioInterface = QStringLiteral("org.tarnwickle.voicecall.Audio1");
static const int answerLimitMs = 5000;

using InterfaceMap = QMap<QString, QVariantMap>;
using ObjectMap = QMap<QDBusObjectPath, InterfaceMap>;

QString HostMonitor::serviceName() { return QStringLiteral("org.tarnwickle.voicecall"); }

QString HostMonitor::rootPath() { return QStringLiteral("/org/tarnwickle/voicecall"); }

// Takes a value out of a message only when it has the shape that is expected: reading another one is fatal.
template <typename Value>
static Value shaped(const QVariant &variant, const char *signature)
{
    Value value;
    const auto argument = variant.value<QDBusArgument>();
    if (variant.userType() == qMetaTypeId<QDBusArgument>() && argument.currentSignature() == QLatin1String(signature))
        argument >> value;
    return value;
}

HostMonitor::HostMonitor(const QDBusConnection &connection)
    : m_connection(connection),
      m_owner(serviceName(), connection, QDBusServiceWatcher::WatchForOwnerChange)
{
}

void HostMonitor::start()
{
    subscribe();
    read();
}

void HostMonitor::subscribe()
{
    connect(&m_owner, &QDBusServiceWatcher::serviceOwnerChanged, this,
        [this](const QString &, const QString &, const QString &newOwner) {
            forget();
            if (!newOwner.isEmpty())
                read();
        });
    const QString service = serviceName();
    m_connection.connect(service, rootPath(), objectManager, QStringLiteral("InterfacesAdded"),
        QStringLiteral("oa{sa{sv}}"), this, SLOT(onInterfacesAdded(QDBusMessage)));
    m_connection.connect(service, rootPath(), objectManager, QStringLiteral("InterfacesRemoved"), QStringLiteral("oas"),
        this, SLOT(onInterfacesRemoved(QDBusMessage)));
    m_connection.connect(service, QString(), properties, QStringLiteral("PropertiesChanged"),
        QStringLiteral("sa{sv}as"), this, SLOT(onPropertiesChanged(QDBusMessage)));
    m_connection.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
        QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this, SIGNAL(busLost()));
}

void HostMonitor::read()
{
    const auto question = [](const QString &interface, const QString &method) {
        return QDBusMessage::createMethodCall(serviceName(), rootPath(), interface, method);
    };
    ask(Source::Manager, question(properties, QStringLiteral("GetAll")) << managerInterface);
    ask(Source::Audio, question(properties, QStringLiteral("GetAll")) << audioInterface);
    ask(Source::Calls, question(objectManager, QStringLiteral("GetManagedObjects")));
}

void HostMonitor::ask(Source source, const QDBusMessage &question)
{
    auto *watcher = new QDBusPendingCallWatcher(m_connection.asyncCall(question, answerLimitMs), this);
    const int round = m_round;
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [=] {
        watcher->deleteLater();
        if (round == m_round)
            take(source, watcher->reply());
    });
}

void HostMonitor::forget()
{
    const bool wasPresent = m_state.isPresent;
    ++m_round;
    m_known.clear();
    m_state = HostState();
    if (wasPresent)
        emit gone();
}

QString HostMonitor::notRunning()
{
    return QStringLiteral("voicecalld is not running: nobody owns %1 on the session bus; start it with 'voicecalld'")
        .arg(serviceName());
}

static QString reasonOf(const QDBusMessage &error)
{
    if (QDBusError(error).type() == QDBusError::ServiceUnknown)
        return HostMonitor::notRunning();
    return QStringLiteral("voicecalld does not answer as it should: %1").arg(error.errorMessage());
}

void HostMonitor::take(Source source, const QDBusMessage &answer)
{
    if (answer.type() != QDBusMessage::ReplyMessage) {
        ++m_round;
        emit failed(reasonOf(answer));
        return;
    }
    m_known.insert(int(source));
    if (source == Source::Calls)
        takeObjects(answer);
    else
        takeProperties(shaped<QVariantMap>(answer.arguments().value(0), "a{sv}"));
    if (m_known.size() < 3)
        return;
    m_state.isPresent = true;
    emit ready();
}

void HostMonitor::takeObjects(const QDBusMessage &answer)
{
    const auto objects = shaped<ObjectMap>(answer.arguments().value(0), "a{oa{sa{sv}}}");
    for (auto object = objects.cbegin(); object != objects.cend(); ++object) {
        if (object->contains(callInterface))
            m_state.setCall({object.key().path(), object->value(callInterface)});
    }
}

void HostMonitor::takeProperties(const QVariantMap &properties)
{
    for (auto property = properties.cbegin(); property != properties.cend(); ++property) {
        if (property.key() == QLatin1String("Providers"))
            m_state.providers = shaped<ProviderList>(property.value(), "a(ss)");
        else if (property.key() == QLatin1String("Devices"))
            m_state.devices = shaped<AudioDeviceList>(property.value(), "a(sibbsa{sv})");
        else if (property.key() == QLatin1String("InputDevice"))
            m_state.inputDevice = property->toString();
        else if (property.key() == QLatin1String("OutputDevice"))
            m_state.outputDevice = property->toString();
        else if (property.key() == QLatin1String("MicrophoneMuted"))
            m_state.microphoneMuted = property->toBool();
    }
}

void HostMonitor::tellChange()
{
    if (m_state.isPresent)
        emit changed();
}

void HostMonitor::onInterfacesAdded(const QDBusMessage &message)
{
    const auto interfaces = shaped<InterfaceMap>(message.arguments().value(1), "a{sa{sv}}");
    if (!isKnown(Source::Calls) || !interfaces.contains(callInterface))
        return;
    m_state.setCall({message.arguments().at(0).value<QDBusObjectPath>().path(), interfaces.value(callInterface)});
    tellChange();
}

void HostMonitor::onInterfacesRemoved(const QDBusMessage &message)
{
    if (!isKnown(Source::Calls) || !message.arguments().value(1).toStringList().contains(callInterface))
        return;
    m_state.removeCall(message.arguments().at(0).value<QDBusObjectPath>().path());
    tellChange();
}

void HostMonitor::onPropertiesChanged(const QDBusMessage &message)
{
    const QString interface = message.arguments().value(0).toString();
    const auto changes = shaped<QVariantMap>(message.arguments().value(1), "a{sv}");
    if (interface == callInterface && isKnown(Source::Calls)) {
        for (CallInfo &call : m_state.calls) {
            if (call.path != message.path())
                continue;
            for (auto change = changes.cbegin(); change != changes.cend(); ++change)
                call.properties.insert(change.key(), change.value());
        }
    } else if ((interface == managerInterface && isKnown(Source::Manager))
        || (interface == audioInterface && isKnown(Source::Audio))) {
        takeProperties(changes);
    }
    tellChange();
}
