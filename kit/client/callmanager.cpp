// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "callmanager_p.h"

#include "call_p.h"
#include "logging.h"

#include <QtCore/QRegularExpression>
#include <QtDBus/QDBusError>
#include <QtDBus/QDBusPendingCallWatcher>

namespace Ringlet {

using State = CallManager::State;

static const QString defaultHost = QStringLiteral("org.tarnwickle.voicecall");

static bool isObjectPath(const QString &path)
{
    static const QRegularExpression form(QStringLiteral("^(/|(/[A-Za-z0-9_]+)+)$"));
    return form.match(path).hasMatch();
}

static bool isBusName(const QString &name)
{
    static const QRegularExpression form(QStringLiteral(
        "^(:[A-Za-z0-9_-]+(\\.[A-Za-z0-9_-]+)+|[A-Za-z_-][A-Za-z0-9_-]*(\\.[A-Za-z_-][A-Za-z0-9_-]*)+)$"));
    return name.size() <= 255 && form.match(name).hasMatch();
}

static bool isPlain(char byte)
{
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') || byte == '_';
}

// As an element of an object path.
static QString escaped(const QString &name)
{
    QString element;
    for (const char byte : name.toUtf8())
        element += isPlain(byte) ? QString(QLatin1Char(byte))
                                 : QStringLiteral("_%1").arg(uchar(byte), 2, 16, QLatin1Char('0'));
    return element;
}

CallManagerPrivate::CallManagerPrivate(
    CallManager *manager, const QString &managerPath, const QString &hostName, const QDBusConnection &bus)
    : q(manager),
      path(managerPath),
      connection(bus),
      tree(bus, managerPath),
      host(hostName, managerPath, bus, nullptr)
{
    if (!isObjectPath(path))
        fail(QStringLiteral("org.freedesktop.DBus.Error.InvalidArgs"),
            QStringLiteral("\"%1\" is no object path; one is like /org/example/calls").arg(path));
    else if (!isBusName(hostName))
        fail(QStringLiteral("org.freedesktop.DBus.Error.InvalidArgs"),
            QStringLiteral("\"%1\" is no bus name; one is like org.example.Host").arg(hostName));
    else if (!connection.isConnected())
        fail(QStringLiteral("org.freedesktop.DBus.Error.Disconnected"),
            QStringLiteral("no session bus: %1").arg(connection.lastError().message()));
    else if (!tree.publish())
        fail(QStringLiteral("org.freedesktop.DBus.Error.ObjectPathInUse"),
            QStringLiteral("this program has something else on the bus at %1").arg(path));
    else
        followBus();
}

void CallManagerPrivate::fail(const QString &name, const QString &text)
{
    state = State::Failed;
    errorName = name;
    errorString = text;
    qCWarning(client).noquote() << text;
}

void CallManagerPrivate::followBus()
{
    QObject::connect(&tree, &BusTree::called, q, [](const QDBusMessage &message) {
        qCDebug(client).noquote() << message.path() << "received" << message.member() << message.arguments();
    });
    QObject::connect(&tree, &BusTree::missed, q, [this](const QDBusMessage &message) { onMissed(message); });
    followHost();
}

// A host may still send commands to a call that has just gone.
void CallManagerPrivate::onMissed(const QDBusMessage &message) const
{
    if (message.interface().startsWith(QLatin1String("zelkovar.Call.")) && host.refusal(message.service()).isEmpty())
        emit q->lateCommand(message.path(), message.member());
}

void CallManagerPrivate::followHost()
{
    QObject::connect(&host, &HostLink::absent, q, [this] {
        setState(State::Waiting);
        letOut();
    });
    QObject::connect(&host, &HostLink::appeared, q, [this](const QString &owner) {
        qCDebug(client).noquote() << path << "host appeared" << owner;
        emit q->hostAppeared(owner);
    });
    QObject::connect(&host, &HostLink::registering, q, [this] { setState(State::Registering); });
    QObject::connect(&host, &HostLink::registered, q, [this] {
        setState(State::Registered);
        letOut();
    });
    QObject::connect(&host, &HostLink::refused, q, [this](const QString &name, const QString &text) {
        setState(State::Refused, name, text);
        letOut();
    });
    QObject::connect(&host, &HostLink::vanished, q, [this] { onVanished(); });
    QObject::connect(&host, &HostLink::shown, q,
        [this](const QString &object, const BusInterfaceMap &interfaces) { onShown(object, interfaces); });
    QObject::connect(&host, &HostLink::busLost, q, [this] { onBusLost(); });
    host.start();
}

void CallManagerPrivate::setState(State newState, const QString &name, const QString &text)
{
    errorName = name;
    errorString = text;
    if (state == newState)
        return;
    state = newState;
    qCDebug(client).noquote() << path << state << text;
    emit q->stateChanged(state);
}

void CallManagerPrivate::onVanished()
{
    qCDebug(client).noquote() << path << "host vanished";
    letOut();
    const QStringList names = calls.keys();
    for (const QString &name : names) {
        if (CallPrivate *call = calls.value(name))
            call->forgetHost();
    }
    emit q->hostVanished();
}

void CallManagerPrivate::onBusLost()
{
    if (!host.owner().isEmpty())
        onVanished();
    setState(State::Failed, QStringLiteral("org.freedesktop.DBus.Error.Disconnected"),
        QStringLiteral("the session bus has gone"));
    letOut();
}

void CallManagerPrivate::onShown(const QString &object, const BusInterfaceMap &interfaces) const
{
    const QVariant status = interfaces.value(callInterface).value(QStringLiteral("Status"));
    CallPrivate *call = calls.value(object.mid(object.lastIndexOf(QLatin1Char('/')) + 1));
    if (call && call->isAnnounced && call->object.path() == object && status.userType() == QMetaType::UInt)
        call->setShown(CallStatus(status.toUInt()));
}

// --- Calls

QString CallManagerPrivate::nameFor(const CallDescription &description)
{
    if (!description.name.isEmpty())
        return escaped(description.name);
    QString name;
    do
        name = QStringLiteral("call%1").arg(++m_counter);
    while (calls.contains(name));
    return name;
}

Call *CallManagerPrivate::addCall(const CallDescription &description)
{
    const QString name = nameFor(description);
    if (calls.contains(name)) {
        qCWarning(client).noquote() << "there is a call of the name" << description.name;
        return nullptr;
    }
    const QString parent = path == QLatin1String("/") ? QString() : path;
    auto *call = new Call(*this, description, parent + QLatin1Char('/') + name);
    CallPrivate *record = call->d.get();
    calls.insert(name, record);
    emit q->callAdded(call);
    m_keptBack.append(record);
    if (state != State::Looking && state != State::Registering)
        letOut();
    return call;
}

void CallManagerPrivate::letOut()
{
    while (!m_keptBack.isEmpty()) {
        CallPrivate *call = m_keptBack.takeFirst();
        qCDebug(client).noquote() << path << "sends InterfacesAdded" << call->object.path();
        tree.addObject(call->object.path(), call->object.makeInterfaces(host));
        call->setAnnounced();
    }
}

void CallManagerPrivate::withdraw(CallPrivate &call)
{
    calls.remove(call.q->name());
    m_keptBack.removeOne(&call);
    if (!call.isAnnounced)
        return;
    qCDebug(client).noquote() << path << "sends InterfacesRemoved" << call.object.path();
    tree.removeObject(call.object.path());
}

// The bus handles the messages of a connection in order: when it has answered, it has them all.
void CallManagerPrivate::flush()
{
    if (!connection.isConnected()) {
        QMetaObject::invokeMethod(q, &CallManager::flushed, Qt::QueuedConnection);
        return;
    }
    const QDBusMessage ping = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
        QStringLiteral("/org/freedesktop/DBus"), QStringLiteral("org.freedesktop.DBus.Peer"), QStringLiteral("Ping"));
    auto *watcher = new QDBusPendingCallWatcher(connection.asyncCall(ping), q);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, q, [this, watcher] {
        watcher->deleteLater();
        emit q->flushed();
    });
}

// --- CallManager

CallManager::CallManager(const QString &path, QObject *parent)
    : CallManager(path, defaultHost, QDBusConnection::sessionBus(), parent)
{
}

CallManager::CallManager(
    const QString &path, const QString &hostName, const QDBusConnection &connection, QObject *parent)
    : QObject(parent),
      d(std::make_unique<CallManagerPrivate>(this, path, hostName, connection))
{
}

// The calls refer to the private record.
CallManager::~CallManager()
{
    for (Call *call : findChildren<Call *>(QString(), Qt::FindDirectChildrenOnly))
        delete call;
}

QString CallManager::path() const { return d->path; }
QString CallManager::hostName() const { return d->host.name(); }
CallManager::State CallManager::state() const { return d->state; }
QString CallManager::hostOwner() const { return d->host.owner(); }

void CallManager::setCommanders(Commanders commanders) { d->host.setObeysAnyone(commanders == Commanders::Anyone); }

CallManager::Commanders CallManager::commanders() const
{
    return d->host.obeysAnyone() ? Commanders::Anyone : Commanders::Host;
}

QString CallManager::errorName() const { return d->errorName; }
QString CallManager::errorString() const { return d->errorString; }
Call *CallManager::addCall(const CallDescription &description) { return d->addCall(description); }

QList<Call *> CallManager::calls() const
{
    QList<Call *> calls;
    for (const CallPrivate *call : qAsConst(d->calls))
        calls.append(call->q);
    return calls;
}

Call *CallManager::findCall(const QString &name) const
{
    const CallPrivate *call = d->calls.value(escaped(name));
    return call ? call->q : nullptr;
}

void CallManager::registerAgain()
{
    if (d->state == State::Refused)
        d->host.registerManager();
}

void CallManager::endCalls()
{
    const QList<Call *> ending = calls();
    for (Call *call : ending)
        call->end();
    d->flush();
}

} // namespace Ringlet
