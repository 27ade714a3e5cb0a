// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "hostmonitor.h"

#include <QtDBus/QDBusError>
#include <QtDBus/QDBusObjectPath>
#include <QtDBus/QDBusPendingCallWatcher>
#include <QtDBus/QDBusPendingReply>
#include <algorithm>
#include <chrono>
#include <limits>

static const QString objectManager = QStringLiteral("org.freedesktop.DBus.ObjectManager");
static const QString properties = QStringLiteral("org.freedesktop.DBus.Properties");
static const QString callInterface = QStringLiteral("org.tarnwickle.voicecall.Call1");
static const QString managerInterface = QStringLiteral("org.tarnwickle.voicecall.Manager1");
static const QString providersProperty = QStringLiteral("Providers");
static const QString audioInterface = QStringLiteral("org.tarnwickle.voicecall.Audio1");
static const std::chrono::milliseconds patience(5000);
static const std::chrono::milliseconds pauseBeforeAskingAgain(1000);
static const std::chrono::milliseconds waitForProviderSignals(100);
// A host that is stopped answers when it goes on; asking it again would only fill its queue.
static const int noLimit = std::numeric_limits<int>::max();

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
    m_patience.setSingleShot(true);
    m_again.setSingleShot(true);
    m_untold.setSingleShot(true);
    connect(&m_patience, &QTimer::timeout, this,
        [this] { emit failed(QStringLiteral("voicecalld is running, but does not answer")); });
    connect(&m_again, &QTimer::timeout, this, &HostMonitor::read);
    connect(&m_untold, &QTimer::timeout, this, &HostMonitor::readManager);
}

void HostMonitor::start()
{
    subscribe();
    read();
}

void HostMonitor::subscribe()
{
    connect(&m_owner, &QDBusServiceWatcher::serviceOwnerChanged, this,
        [this](const QString &, const QString &, const QString &newOwner) { onOwnerChanged(newOwner); });
    const QString service = serviceName();
    m_connection.connect(service, rootPath(), objectManager, QStringLiteral("InterfacesAdded"),
        QStringLiteral("oa{sa{sv}}"), this, SLOT(onInterfacesAdded(QDBusMessage)));
    m_connection.connect(service, rootPath(), objectManager, QStringLiteral("InterfacesRemoved"), QStringLiteral("oas"),
        this, SLOT(onInterfacesRemoved(QDBusMessage)));
    m_connection.connect(service, QString(), properties, QStringLiteral("PropertiesChanged"),
        QStringLiteral("sa{sv}as"), this, SLOT(onPropertiesChanged(QDBusMessage)));
    m_connection.connect(service, rootPath(), managerInterface, QStringLiteral("ProviderAdded"), QStringLiteral("ss"),
        this, SLOT(onProviderAdded(QString, QString)));
    m_connection.connect(service, rootPath(), managerInterface, QStringLiteral("ProviderRemoved"), QStringLiteral("s"),
        this, SLOT(onProviderRemoved(QString)));
    m_connection.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
        QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this, SIGNAL(busLost()));
}

// --- Reading

static QDBusMessage question(const QString &interface, const QString &method)
{
    return QDBusMessage::createMethodCall(HostMonitor::serviceName(), HostMonitor::rootPath(), interface, method);
}

void HostMonitor::read()
{
    m_isReading = true;
    m_patience.start(patience);
    readManager();
    ask(Source::Audio, question(properties, QStringLiteral("GetAll")) << audioInterface);
    ask(Source::Calls, question(objectManager, QStringLiteral("GetManagedObjects")));
}

void HostMonitor::readManager()
{
    ask(Source::Manager, question(properties, QStringLiteral("GetAll")) << managerInterface);
}

void HostMonitor::ask(Source source, const QDBusMessage &question)
{
    auto *watcher = new QDBusPendingCallWatcher(m_connection.asyncCall(question, noLimit), this);
    const int round = m_round;
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [=] {
        watcher->deleteLater();
        if (round == m_round)
            take(source, watcher->reply());
    });
}

void HostMonitor::onOwnerChanged(const QString &newOwner)
{
    const bool wasPresent = m_state.isPresent;
    const bool wasReading = m_isReading;
    ++m_round;
    m_known.clear();
    m_state = HostState();
    m_isReading = m_tellsProviders = false;
    for (QTimer *timer : {&m_patience, &m_again, &m_untold})
        timer->stop();
    if (wasPresent)
        emit gone();
    if (!newOwner.isEmpty())
        read();
    else if (wasReading)
        emit failed(QStringLiteral("voicecalld has left the bus while it was asked"));
}

QString HostMonitor::notRunning()
{
    return QStringLiteral("voicecalld is not running: nobody owns %1 on the session bus; start it with 'voicecalld'")
        .arg(serviceName());
}

void HostMonitor::refuse(const QDBusMessage &answer)
{
    // Of several answers that are errors the first is enough.
    ++m_round;
    m_known.clear();
    m_state = HostState();
    m_isReading = false;
    m_patience.stop();
    if (QDBusError(answer).type() == QDBusError::ServiceUnknown) {
        emit failed(notRunning());
    } else {
        m_again.start(pauseBeforeAskingAgain);
        emit failed(QStringLiteral("voicecalld does not answer as it should: %1").arg(answer.errorMessage()));
    }
}

void HostMonitor::take(Source source, const QDBusMessage &answer)
{
    if (answer.type() != QDBusMessage::ReplyMessage)
        return refuse(answer);
    m_known.insert(int(source));
    if (source == Source::Calls)
        takeObjects(answer);
    else if (source == Source::Audio)
        takeAudio(shaped<QVariantMap>(answer.arguments().value(0), "a{sv}"));
    else
        takeManager(shaped<QVariantMap>(answer.arguments().value(0), "a{sv}"));
    if (m_known.size() < 3 || m_state.isPresent)
        return;
    m_patience.stop();
    m_isReading = false;
    m_state.isPresent = true;
    emit ready();
}

// --- Calls

void HostMonitor::changeCall(const QString &path, const QVariantMap &changes)
{
    CallInfo &call = m_state.calls[{path}];
    for (auto change = changes.cbegin(); change != changes.cend(); ++change) {
        // What is not read would keep its whole message.
        if (change->userType() != qMetaTypeId<QDBusArgument>())
            call.properties.insert(change.key(), change.value());
    }
    if (m_state.isPresent)
        emit callChanged(path);
}

void HostMonitor::takeObjects(const QDBusMessage &answer)
{
    const auto objects = shaped<ObjectMap>(answer.arguments().value(0), "a{oa{sa{sv}}}");
    for (auto object = objects.cbegin(); object != objects.cend(); ++object) {
        if (object->contains(callInterface))
            changeCall(object.key().path(), object->value(callInterface));
    }
}

void HostMonitor::onInterfacesAdded(const QDBusMessage &message)
{
    const auto interfaces = shaped<InterfaceMap>(message.arguments().value(1), "a{sa{sv}}");
    if (!isKnown(Source::Calls) || !interfaces.contains(callInterface))
        return;
    const QString path = message.arguments().at(0).value<QDBusObjectPath>().path();
    m_state.calls.remove({path});
    changeCall(path, interfaces.value(callInterface));
}

void HostMonitor::onInterfacesRemoved(const QDBusMessage &message)
{
    if (!isKnown(Source::Calls) || !message.arguments().value(1).toStringList().contains(callInterface))
        return;
    const QString path = message.arguments().at(0).value<QDBusObjectPath>().path();
    m_state.calls.remove({path});
    if (m_state.isPresent)
        emit callChanged(path);
}

void HostMonitor::onPropertiesChanged(const QDBusMessage &message)
{
    const QString interface = message.arguments().value(0).toString();
    const auto changes = shaped<QVariantMap>(message.arguments().value(1), "a{sv}");
    if (interface == callInterface && m_state.calls.contains({message.path()})) {
        changeCall(message.path(), changes);
    } else if (interface == managerInterface && isKnown(Source::Manager)) {
        takeManager(changes);
        if (message.arguments().value(2).toStringList().contains(providersProperty))
            onProvidersInvalidated();
    } else if (interface == audioInterface && isKnown(Source::Audio)) {
        takeAudio(changes);
    }
}

// --- Providers

void HostMonitor::takeManager(const QVariantMap &properties)
{
    if (properties.contains(providersProperty))
        setProviders(shaped<ProviderList>(properties.value(providersProperty), "a(ss)"));
}

void HostMonitor::setProviders(const ProviderList &providers)
{
    const ProviderList before = m_state.providers;
    m_state.providers = providers;
    if (!m_state.isPresent)
        return;
    QSet<QString> ids;
    for (const Provider &provider : before + providers) {
        if (!ids.contains(provider.id))
            emit providerChanged(provider.id);
        ids.insert(provider.id);
    }
}

void HostMonitor::onProviderAdded(const QString &id, const QString &type)
{
    onProviderRemoved(id);
    if (!isKnown(Source::Manager))
        return;
    m_state.providers.append({id, type});
    if (m_state.isPresent)
        emit providerChanged(id);
}

void HostMonitor::onProviderRemoved(const QString &id)
{
    m_tellsProviders = true;
    m_untold.stop();
    const auto isMeant = [&](const Provider &provider) { return provider.id == id; };
    const auto left = std::remove_if(m_state.providers.begin(), m_state.providers.end(), isMeant);
    const bool wasThere = left != m_state.providers.end();
    m_state.providers.erase(left, m_state.providers.end());
    if (wasThere && m_state.isPresent)
        emit providerChanged(id);
}

void HostMonitor::onProvidersInvalidated()
{
    // Which ones it is may have been said just before, or may be said just behind.
    if (!m_tellsProviders && !m_untold.isActive())
        m_untold.start(waitForProviderSignals);
}

// --- Audio

void HostMonitor::takeAudio(const QVariantMap &properties)
{
    for (auto property = properties.cbegin(); property != properties.cend(); ++property) {
        if (property.key() == QLatin1String("Devices"))
            m_state.devices = shaped<AudioDeviceList>(property.value(), "a(sibbsa{sv})");
        else if (property.key() == QLatin1String("InputDevice"))
            m_state.inputDevice = property->toString();
        else if (property.key() == QLatin1String("OutputDevice"))
            m_state.outputDevice = property->toString();
        else if (property.key() == QLatin1String("MicrophoneMuted"))
            m_state.microphoneMuted = property->toBool();
    }
    if (m_state.isPresent)
        emit audioChanged();
}
