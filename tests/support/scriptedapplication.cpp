// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// GLib first: its headers use `signals` as a name, which Qt's make a keyword.
#include <gio/gio.h>
#include <gio/gunixfdlist.h>

#include "scriptedapplication.h"

#include "waitfor.h"

#include <QtCore/QHash>
#include <QtCore/QMutex>
#include <QtDBus/QDBusConnection>
#include <stdexcept>

namespace {

const QString servicePath = QStringLiteral("/zelkovar/call/service");
constexpr auto objectManagerInterface = "org.freedesktop.DBus.ObjectManager";

struct Unref
{
    void operator()(GVariant *variant) const { g_variant_unref(variant); }
    void operator()(gpointer object) const { g_object_unref(object); }
    void operator()(GError *error) const { g_error_free(error); }
    void operator()(char *text) const { g_free(text); }
};
using Message = std::unique_ptr<GDBusMessage, Unref>;
using Text = std::unique_ptr<char, Unref>;

GVariant *tryParse(const QByteArray &text, QByteArray *why)
{
    GError *error = nullptr;
    GVariant *variant = g_variant_parse(nullptr, text.constData(), nullptr, nullptr, &error);
    if (!error)
        return variant;
    *why = error->message;
    g_error_free(error);
    return nullptr;
}

// A tuple of one needs a comma behind it, one of several must not have it.
GVariant *parseArguments(const QString &arguments)
{
    QByteArray why;
    const QByteArray text = arguments.toUtf8();
    GVariant *body = tryParse('(' + text + ')', &why);
    if (!body)
        body = tryParse('(' + text + ",)", &why);
    if (!body)
        throw std::invalid_argument("'" + text.toStdString() + "': " + why.toStdString());
    return body;
}

QString printArguments(GDBusMessage *message)
{
    GVariant *body = g_dbus_message_get_body(message);
    QString arguments = QStringLiteral("()");
    if (body)
        arguments = QString::fromUtf8(Text(g_variant_print(body, TRUE)).get());
    return arguments.replace(QStringLiteral(",)"), QStringLiteral(")"));
}

QString print(GDBusMessage *message)
{
    return QString::fromUtf8(g_dbus_message_get_path(message)) + QLatin1Char(' ')
        + QString::fromUtf8(g_dbus_message_get_interface(message)) + QLatin1Char('.')
        + QString::fromUtf8(g_dbus_message_get_member(message)) + printArguments(message);
}

QString printContents(GDBusMessage *message)
{
    switch (g_dbus_message_get_message_type(message)) {
    case G_DBUS_MESSAGE_TYPE_METHOD_RETURN:
        return QStringLiteral("reply ") + printArguments(message);
    case G_DBUS_MESSAGE_TYPE_ERROR:
        return QStringLiteral("error ") + QString::fromUtf8(g_dbus_message_get_error_name(message));
    default:
        return print(message);
    }
}

QString printWithAddresses(GDBusMessage *message)
{
    const char *destination = g_dbus_message_get_destination(message);
    return QString::fromUtf8(g_dbus_message_get_sender(message)) + QStringLiteral(" > ")
        + QString::fromUtf8(destination ? destination : "*") + QStringLiteral(": ") + printContents(message);
}

void attach(GDBusMessage *message, const QVector<int> &descriptors)
{
    if (descriptors.isEmpty())
        return;
    const std::unique_ptr<GUnixFDList, Unref> list(g_unix_fd_list_new());
    for (const int descriptor : descriptors)
        g_unix_fd_list_append(list.get(), descriptor, nullptr);
    g_dbus_message_set_unix_fd_list(message, list.get());
}

} // namespace

class ScriptedApplication::Private
{
public:
    void sendMessage(GDBusMessage *message);
    void answer(GDBusMessage *call);
    void answerSnapshot(GDBusMessage *call);
    Message replyTo(GDBusMessage *call) const;
    bool receive(GDBusMessage *message);

    static GDBusMessage *filter(GDBusConnection *connection, GDBusMessage *message, gboolean incoming, gpointer self);

    GDBusConnection *connection = nullptr;
    guint filterId = 0;

    // Below: also used by the bus library's thread.
    QMutex mutex;
    QStringList calls;
    QStringList signalsHeard;
    QStringList traffic;
    bool isMonitor = false;
    QVector<int> snapshotDescriptors;
    QString snapshotBody = QStringLiteral("@a{oa{sa{sv}}} {}");
    QString snapshotError;
    QString errorBody;
    bool snapshotHeld = false;
    std::vector<Message> heldRequests;
    QHash<QString, QString> properties;
    QString commandError;
};

void ScriptedApplication::Private::sendMessage(GDBusMessage *message)
{
    g_dbus_connection_send_message(connection, message, G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr, nullptr);
}

void ScriptedApplication::Private::answerSnapshot(GDBusMessage *call)
{
    Message reply;
    if (snapshotError.isEmpty()) {
        reply.reset(g_dbus_message_new_method_reply(call));
        g_dbus_message_set_body(reply.get(), parseArguments(snapshotBody));
        attach(reply.get(), snapshotDescriptors);
    } else {
        reply.reset(g_dbus_message_new_method_error_literal(call, snapshotError.toUtf8().constData(), "refused"));
        if (!errorBody.isEmpty())
            g_dbus_message_set_body(reply.get(), parseArguments(errorBody));
    }
    sendMessage(reply.get());
}

void ScriptedApplication::Private::answer(GDBusMessage *call)
{
    if (qstrcmp(g_dbus_message_get_interface(call), objectManagerInterface) == 0) {
        if (snapshotHeld)
            heldRequests.emplace_back(G_DBUS_MESSAGE(g_object_ref(call)));
        else
            answerSnapshot(call);
        return;
    }
    if (g_dbus_message_get_flags(call) & G_DBUS_MESSAGE_FLAGS_NO_REPLY_EXPECTED)
        return;
    sendMessage(replyTo(call).get());
}

Message ScriptedApplication::Private::replyTo(GDBusMessage *call) const
{
    if (!commandError.isEmpty())
        return Message(g_dbus_message_new_method_error_literal(call, commandError.toUtf8().constData(), "refused"));

    Message reply(g_dbus_message_new_method_reply(call));
    if (qstrcmp(g_dbus_message_get_interface(call), "org.freedesktop.DBus.Properties") == 0) {
        const char *name = "";
        g_variant_get_child(g_dbus_message_get_body(call), 1, "&s", &name);
        if (properties.contains(QString::fromUtf8(name)))
            g_dbus_message_set_body(
                reply.get(), parseArguments(QStringLiteral("<%1>").arg(properties.value(QString::fromUtf8(name)))));
    }
    return reply;
}

// True when the message is of no further interest to the bus library.
bool ScriptedApplication::Private::receive(GDBusMessage *message)
{
    const QMutexLocker lock(&mutex);
    if (isMonitor) {
        traffic.append(printWithAddresses(message));
        return g_dbus_message_get_message_type(message) == G_DBUS_MESSAGE_TYPE_METHOD_CALL; // would be answered
    }
    switch (g_dbus_message_get_message_type(message)) {
    case G_DBUS_MESSAGE_TYPE_METHOD_CALL:
        calls.append(print(message));
        answer(message);
        return true;
    case G_DBUS_MESSAGE_TYPE_SIGNAL:
        signalsHeard.append(print(message));
        return false;
    default:
        return false;
    }
}

GDBusMessage *ScriptedApplication::Private::filter(
    GDBusConnection *, GDBusMessage *message, gboolean incoming, gpointer self)
{
    if (!incoming || !static_cast<Private *>(self)->receive(message))
        return message;
    g_object_unref(message);
    return nullptr;
}

ScriptedApplication::ScriptedApplication() : d(new Private)
{
    GError *error = nullptr;
    d->connection = g_dbus_connection_new_for_address_sync(qgetenv("DBUS_SESSION_BUS_ADDRESS").constData(),
        GDBusConnectionFlags(
            G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, &error);
    if (!d->connection) {
        const std::unique_ptr<GError, Unref> owned(error);
        throw std::runtime_error(owned->message);
    }
    d->filterId = g_dbus_connection_add_filter(d->connection, Private::filter, d.get(), nullptr);
}

ScriptedApplication::~ScriptedApplication()
{
    leave();
    g_dbus_connection_remove_filter(d->connection, d->filterId);
    g_object_unref(d->connection);
}

QString ScriptedApplication::name() const
{
    return QString::fromUtf8(g_dbus_connection_get_unique_name(d->connection));
}

void ScriptedApplication::leave() { g_dbus_connection_close_sync(d->connection, nullptr, nullptr); }

void ScriptedApplication::signal(const QString &path, const QString &interface, const QString &member,
    const QString &arguments, const QString &destination, const QVector<int> &descriptors)
{
    const Message message(g_dbus_message_new_signal(
        path.toUtf8().constData(), interface.toUtf8().constData(), member.toUtf8().constData()));
    if (!destination.isEmpty())
        g_dbus_message_set_destination(message.get(), destination.toUtf8().constData());
    if (!arguments.isEmpty())
        g_dbus_message_set_body(message.get(), parseArguments(arguments));
    attach(message.get(), descriptors);
    d->sendMessage(message.get());
    g_dbus_connection_flush_sync(d->connection, nullptr, nullptr);
}

static Message methodCall(const QString &destination, const QString &path, const QString &interface,
    const QString &member, const QString &arguments)
{
    Message message(g_dbus_message_new_method_call(destination.toUtf8().constData(), path.toUtf8().constData(),
        interface.isEmpty() ? nullptr : interface.toUtf8().constData(), member.toUtf8().constData()));
    if (!arguments.isEmpty())
        g_dbus_message_set_body(message.get(), parseArguments(arguments));
    return message;
}

void ScriptedApplication::send(const QString &destination, const QString &path, const QString &interface,
    const QString &member, const QString &arguments)
{
    const Message message = methodCall(destination, path, interface, member, arguments);
    g_dbus_message_set_flags(message.get(), G_DBUS_MESSAGE_FLAGS_NO_REPLY_EXPECTED);
    d->sendMessage(message.get());
    g_dbus_connection_flush_sync(d->connection, nullptr, nullptr);
}

QString ScriptedApplication::call(const QString &destination, const QString &path, const QString &interface,
    const QString &member, const QString &arguments, const QVector<int> &descriptors)
{
    // Shared with the callback, which may come after the wait was given up.
    auto reply = std::make_shared<QString>();
    using Shared = std::shared_ptr<QString>;
    const auto finished = [](GObject *source, GAsyncResult *result, gpointer data) {
        const std::unique_ptr<Shared> shared(static_cast<Shared *>(data));
        const Message message(
            g_dbus_connection_send_message_with_reply_finish(G_DBUS_CONNECTION(source), result, nullptr));
        if (!message)
            **shared = QStringLiteral("(no reply)");
        else if (g_dbus_message_get_message_type(message.get()) == G_DBUS_MESSAGE_TYPE_ERROR)
            **shared = QString::fromUtf8(g_dbus_message_get_error_name(message.get()));
        else if (GVariant *body = g_dbus_message_get_body(message.get()))
            **shared = QString::fromUtf8(Text(g_variant_print(body, FALSE)).get());
        else
            **shared = QStringLiteral("()");
    };
    const Message message = methodCall(destination, path, interface, member, arguments);
    attach(message.get(), descriptors);
    g_dbus_connection_send_message_with_reply(d->connection, message.get(), G_DBUS_SEND_MESSAGE_FLAGS_NONE, waitLimitMs,
        nullptr, nullptr, finished, new Shared(reply));
    waitFor([&] { return !reply->isEmpty(); });
    return *reply;
}

// A call that the host's main thread answers: messages of one connection keep their order both ways.
bool ScriptedApplication::settle(const QString &host)
{
    return call(host, servicePath, QStringLiteral("zelkovar.Call.ServiceManager1"), QStringLiteral("ListCallManagers"))
        .startsWith(QLatin1Char('('));
}

bool ScriptedApplication::registerCallManager(const QString &path, const QString &host)
{
    return call(host, servicePath, QStringLiteral("zelkovar.Call.Service1"), QStringLiteral("RegisterCallManager"),
               QStringLiteral("objectpath '%1'").arg(path))
        == QLatin1String("()");
}

void ScriptedApplication::announce(
    const QString &manager, const QString &object, const QString &interfaces, const QVector<int> &descriptors)
{
    signal(manager, QLatin1String(objectManagerInterface), QStringLiteral("InterfacesAdded"),
        QStringLiteral("objectpath '%1', @a{sa{sv}} %2").arg(object, interfaces), {}, descriptors);
}

void ScriptedApplication::withdraw(const QString &manager, const QString &object, const QStringList &interfaces)
{
    const QString names = interfaces.isEmpty()
        ? QString()
        : QLatin1Char('\'') + interfaces.join(QStringLiteral("', '")) + QLatin1Char('\'');
    signal(manager, QLatin1String(objectManagerInterface), QStringLiteral("InterfacesRemoved"),
        QStringLiteral("objectpath '%1', @as [%2]").arg(object, names));
}

void ScriptedApplication::changeStatus(const QString &object, uint status)
{
    signal(object, QStringLiteral("zelkovar.Call.Call1"), QStringLiteral("StatusChanged"),
        QStringLiteral("uint32 %1").arg(status));
}

void ScriptedApplication::setObjects(const QString &objects)
{
    setSnapshotBody(QStringLiteral("@a{oa{sa{sv}}} ") + objects);
}

void ScriptedApplication::setSnapshotBody(const QString &arguments, const QVector<int> &descriptors)
{
    g_variant_unref(parseArguments(arguments)); // throws here rather than in the bus library's thread
    const QMutexLocker lock(&d->mutex);
    d->snapshotBody = arguments;
    d->snapshotDescriptors = descriptors;
    d->snapshotError.clear();
}

void ScriptedApplication::refuseSnapshot(const QString &errorName, const QString &arguments)
{
    const QMutexLocker lock(&d->mutex);
    d->snapshotError = errorName;
    d->errorBody = arguments;
}

void ScriptedApplication::holdSnapshot()
{
    const QMutexLocker lock(&d->mutex);
    d->snapshotHeld = true;
}

void ScriptedApplication::releaseSnapshot()
{
    const QMutexLocker lock(&d->mutex);
    d->snapshotHeld = false;
    for (const Message &request : d->heldRequests)
        d->answerSnapshot(request.get());
    d->heldRequests.clear();
}

void ScriptedApplication::setProperty(const QString &name, const QString &value)
{
    g_variant_unref(parseArguments(value)); // throws here rather than in the bus library's thread
    const QMutexLocker lock(&d->mutex);
    d->properties.insert(name, value);
}

void ScriptedApplication::refuseCommands(const QString &errorName)
{
    const QMutexLocker lock(&d->mutex);
    d->commandError = errorName;
}

QStringList ScriptedApplication::calls() const
{
    const QMutexLocker lock(&d->mutex);
    return d->calls;
}

QStringList ScriptedApplication::commands() const
{
    QStringList commands = calls();
    for (int i = commands.size() - 1; i >= 0; --i) {
        if (commands.at(i).contains(QLatin1String(objectManagerInterface)))
            commands.removeAt(i);
    }
    return commands;
}

QStringList ScriptedApplication::signalsHeard() const
{
    const QMutexLocker lock(&d->mutex);
    return d->signalsHeard;
}

void ScriptedApplication::subscribe(const QString &rule)
{
    call(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("AddMatch"), QStringLiteral("\"%1\"").arg(rule));
}

void ScriptedApplication::forgetWhatArrived()
{
    const QMutexLocker lock(&d->mutex);
    d->calls.clear();
    d->signalsHeard.clear();
}

void ScriptedApplication::becomeMonitor()
{
    {
        const QMutexLocker lock(&d->mutex);
        d->isMonitor = true;
    }
    call(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus.Monitoring"), QStringLiteral("BecomeMonitor"),
        QStringLiteral("@as [], uint32 0"));
}

QStringList ScriptedApplication::traffic() const
{
    const QMutexLocker lock(&d->mutex);
    return d->traffic;
}

QString ScriptedApplication::thisProcess() { return QDBusConnection::sessionBus().baseService(); }
