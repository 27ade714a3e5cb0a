// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "fakehost.h"

#include "waitfor.h"

#include <QtDBus/QDBusMetaType>
#include <QtDBus/QDBusPendingCallWatcher>
#include <algorithm>

static const QString servicePath = QStringLiteral("/zelkovar/call/service");
static const QString objectManagerInterface = QStringLiteral("org.freedesktop.DBus.ObjectManager");
static const QString callInterface = QStringLiteral("zelkovar.Call.Call1");

QDBusArgument &operator<<(QDBusArgument &argument, const FakeDevice &device)
{
    argument.beginStructure();
    argument << device.id << device.type << device.isInput << device.isOutput << device.name << device.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, FakeDevice &device)
{
    argument.beginStructure();
    argument >> device.id >> device.type >> device.isInput >> device.isOutput >> device.name >> device.properties;
    argument.endStructure();
    return argument;
}

static QDBusConnection newConnection()
{
    static int count = 0;
    return QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("fake host %1").arg(++count));
}

static QString statusOf(const InterfaceMap &interfaces)
{
    return interfaces.value(callInterface).value(QStringLiteral("Status"), QStringLiteral("none")).toString();
}

FakeHost::FakeHost() : m_connection(newConnection()), m_tree(m_connection, servicePath)
{
    qDBusRegisterMetaType<FakeDevice>();
    qDBusRegisterMetaType<FakeDeviceList>();
    serve();
    subscribe(objectManagerInterface, QStringLiteral("InterfacesAdded"), QStringLiteral("oa{sa{sv}}"));
    subscribe(objectManagerInterface, QStringLiteral("InterfacesRemoved"), QStringLiteral("oas"));
    subscribe(callInterface, QStringLiteral("StatusChanged"), QStringLiteral("u"));
    subscribe(QStringLiteral("zelkovar.Call.AudioControl1"), QStringLiteral("RequestMute"), QStringLiteral("b"));
    subscribe(QStringLiteral("zelkovar.Call.AudioControl1"), QStringLiteral("RequestAudioRoute"), QStringLiteral("ss"));
}

FakeHost::~FakeHost() { QDBusConnection::disconnectFromBus(m_connection.name()); }

void FakeHost::serve()
{
    m_tree.addToRoot(std::make_unique<BusInterface>(QStringLiteral("zelkovar.Call.Service1"),
        BusInterface::Methods{{QStringLiteral("RegisterCallManager"),
            [this](const QDBusMessage &message) { return onRegistration(message); }}}));
    auto announcements = std::make_unique<BusInterface>(QStringLiteral("zelkovar.Call.ServiceManager1"),
        BusInterface::Methods{{QStringLiteral("ListCallManagers"), [](const QDBusMessage &message) {
                                   return message.createErrorReply(
                                       QDBusError::NotSupported, QStringLiteral("not by this host"));
                               }}});
    m_announcements = announcements.get();
    m_tree.addToRoot(std::move(announcements));
    m_tree.publish();
}

// From everybody: a host that subscribes late would not see what came too early.
void FakeHost::subscribe(const QString &interface, const QString &member, const QString &signature)
{
    m_connection.connect(QString(), QString(), interface, member, signature, this, SLOT(onSignal(QDBusMessage)));
}

bool FakeHost::takeName(const QString &name) { return m_connection.registerService(name); }

void FakeHost::dropName(const QString &name) { m_connection.unregisterService(name); }

static bool startsWith(const QString &line, const QString &start)
{
    return line == start || line.startsWith(start + QLatin1Char(' ')) || line.startsWith(start + QLatin1Char(':'));
}

bool FakeHost::waitForWire(const QString &start, int count) const
{
    return waitFor([&] {
        return std::count_if(m_wire.begin(), m_wire.end(), [&](const QString &line) { return startsWith(line, start); })
            >= count;
    });
}

QDBusMessage FakeHost::onRegistration(const QDBusMessage &message)
{
    const QString manager = message.arguments().constFirst().value<QDBusObjectPath>().path();
    m_wire.append(QStringLiteral("RegisterCallManager ") + manager);
    m_application = message.service();
    m_registered.insert(m_application);
    if (!m_refusal.isEmpty())
        return message.createErrorReply(m_refusal, QStringLiteral("not \"today\""));
    askForObjects(manager);
    if (!m_holdsAnswers)
        return message.createReply();
    m_held.append(message);
    return {};
}

void FakeHost::answerRegistrations()
{
    m_holdsAnswers = false;
    for (const QDBusMessage &message : qAsConst(m_held))
        m_connection.send(message.createReply());
    m_held.clear();
}

void FakeHost::askForObjects(const QString &manager)
{
    const QDBusMessage request = QDBusMessage::createMethodCall(
        m_application, manager, objectManagerInterface, QStringLiteral("GetManagedObjects"));
    auto *watcher = new QDBusPendingCallWatcher(m_connection.asyncCall(request), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, manager, application = m_application] {
        const auto objects = qdbus_cast<ObjectMap>(watcher->reply().arguments().value(0));
        QString line = QStringLiteral("GetManagedObjects %1:").arg(manager);
        for (auto object = objects.begin(); object != objects.end(); ++object)
            line += QStringLiteral(" %1=%2").arg(object.key().path(), statusOf(object.value()));
        m_wire.append(line);
        for (auto object = objects.begin(); object != objects.end(); ++object)
            onReported(application, object.key(), object.value());
        watcher->deleteLater();
    });
}

void FakeHost::onReported(const QString &application, const QDBusObjectPath &path, const InterfaceMap &interfaces)
{
    m_calls.insert(path, interfaces);
    if (!m_isQuiet)
        broadcast(path.path(), interfaces, application);
}

void FakeHost::broadcast(const QString &path, const InterfaceMap &interfaces, const QString &application)
{
    emit m_announcements->raised(QStringLiteral("InterfacesAdded"),
        {application.isEmpty() ? m_application : application, QVariant::fromValue(QDBusObjectPath(path)),
            QVariant::fromValue(interfaces)});
}

// Applications name the interfaces in any order.
static QStringList sorted(QStringList names)
{
    names.sort();
    return names;
}

void FakeHost::onSignal(const QDBusMessage &signal)
{
    const QVariantList arguments = signal.arguments();
    QStringList line{signal.member()};
    if (signal.interface() != objectManagerInterface)
        line.append(signal.path());
    for (const QVariant &argument : arguments) {
        if (argument.userType() == qMetaTypeId<QDBusObjectPath>())
            line.append(argument.value<QDBusObjectPath>().path());
        else if (argument.userType() == qMetaTypeId<QDBusArgument>())
            line.append(statusOf(qdbus_cast<InterfaceMap>(argument)));
        else if (argument.userType() == QMetaType::QStringList)
            line.append(sorted(argument.toStringList()));
        else
            line.append(argument.toString());
    }
    m_wire.append(line.join(QLatin1Char(' ')));

    // What comes from an application that has not registered, a host does not hear.
    if (signal.interface() != objectManagerInterface || !m_registered.contains(signal.service()))
        return;
    const auto path = arguments.at(0).value<QDBusObjectPath>();
    if (signal.member() == QLatin1String("InterfacesAdded"))
        onReported(signal.service(), path, qdbus_cast<InterfaceMap>(arguments.at(1)));
    else
        m_calls.remove(path);
}

QDBusMessage FakeHost::call(
    const QString &path, const QString &interface, const QString &member, const QVariantList &arguments) const
{
    QDBusMessage request = QDBusMessage::createMethodCall(m_application, path, interface, member);
    request.setArguments(arguments);
    // Through the watcher's signal: a reply is there as soon as the bus library's own thread has it, but
    // signals that came before it may still be waiting for the event loop.
    QDBusPendingCallWatcher watcher(m_connection.asyncCall(request, waitLimitMs));
    bool isFinished = false;
    connect(&watcher, &QDBusPendingCallWatcher::finished, [&] { isFinished = true; });
    waitFor([&] { return isFinished; });
    return watcher.reply();
}

ObjectMap FakeHost::managedObjects(const QString &manager) const
{
    const QDBusMessage reply = call(manager, objectManagerInterface, QStringLiteral("GetManagedObjects"));
    return qdbus_cast<ObjectMap>(reply.arguments().value(0));
}

bool FakeHost::settle(const QString &manager) const
{
    return call(manager, objectManagerInterface, QStringLiteral("GetManagedObjects")).type()
        == QDBusMessage::ReplyMessage;
}
