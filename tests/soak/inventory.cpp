// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "inventory.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QMap>
#include <QtCore/QVariantMap>
#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusVariant>
#include <algorithm>
#include <stdexcept>

namespace {

const QString host = QStringLiteral("org.tarnwickle.voicecall");
const QString root = QStringLiteral("/org/tarnwickle/voicecall");
const QString daemon = QStringLiteral("org.freedesktop.DBus");

class Asking
{
public:
    explicit Asking(const QDBusConnection &bus) : m_bus(bus) { }

    QVariant operator()(const QString &service, const QString &path, const QString &interface, const char *member,
        const QVariantList &arguments = {}) const
    {
        QDBusMessage request = QDBusMessage::createMethodCall(service, path, interface, QLatin1String(member));
        request.setArguments(arguments);
        const QDBusMessage reply = m_bus.call(request);
        if (reply.type() != QDBusMessage::ReplyMessage)
            throw std::runtime_error(std::string(member) + ": " + reply.errorMessage().toStdString());
        return reply.arguments().value(0);
    }

    /** How many elements the answer has, an array or a dictionary. */
    qint64 size(const QString &service, const QString &path, const QString &interface, const char *member,
        const QVariantList &arguments = {}) const
    {
        QVariant value = (*this)(service, path, interface, member, arguments);
        if (value.userType() == qMetaTypeId<QDBusVariant>())
            value = value.value<QDBusVariant>().variant();
        return elements(value.value<QDBusArgument>());
    }

private:
    static qint64 elements(const QDBusArgument &argument)
    {
        const bool isMap = argument.currentType() == QDBusArgument::MapType;
        qint64 count = 0;
        for (isMap ? argument.beginMap() : argument.beginArray(); !argument.atEnd(); ++count) {
            if (isMap) {
                argument.beginMapEntry();
                argument.asVariant();
            }
            argument.asVariant();
            if (isMap)
                argument.endMapEntry();
        }
        // An argument that is left half read never lets go of its message.
        isMap ? argument.endMap() : argument.endArray();
        return count;
    }

    QDBusConnection m_bus;
};

qint64 entries(const QString &directory)
{
    return QDir(directory).entryList(QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot).size();
}

qint64 residentBytes(const QString &process)
{
    QFile file(process + QStringLiteral("/status"));
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("the host is gone");
    for (QByteArray line = file.readLine(); !line.isEmpty(); line = file.readLine()) {
        if (line.startsWith("VmRSS:"))
            return line.simplified().split(' ').at(1).toLongLong() * 1024;
    }
    throw std::runtime_error("the kernel does not tell how much memory the host uses");
}

QStringList sortedRules(const QVariant &all, const QString &owner)
{
    QMap<QString, QStringList> rules;
    all.value<QDBusArgument>() >> rules;
    QStringList own = rules.value(owner);
    own.sort();
    return own;
}

QStringList without(QStringList from, const QStringList &what)
{
    for (const QString &element : what)
        from.removeOne(element);
    return from;
}

} // namespace

Inventory Inventory::take(const QDBusConnection &bus, qint64 pid)
{
    const Asking ask(bus);
    const QString statistics = daemon + QStringLiteral(".Debug.Stats");
    const QString process = QStringLiteral("/proc/%1").arg(pid);
    const QString daemonPath = QStringLiteral("/org/freedesktop/DBus");
    const QString owner = ask(daemon, daemonPath, daemon, "GetNameOwner", {host}).toString();

    Inventory inventory;
    inventory.matchRules = sortedRules(ask(daemon, daemonPath, statistics, "GetAllMatchRules"), owner);
    QVariantMap inside;
    ask(host, QStringLiteral("/org/ringlet/soakprobe"), QStringLiteral("org.ringlet.SoakProbe"), "Counts")
            .value<QDBusArgument>()
        >> inside;
    inventory.counts = {
        {"call managers registered",
            ask.size(host, QStringLiteral("/zelkovar/call/service"), QStringLiteral("zelkovar.Call.ServiceManager1"),
                "ListCallManagers")},
        {"host's providers",
            ask.size(host, root, QStringLiteral("org.freedesktop.DBus.Properties"), "Get",
                {host + QStringLiteral(".Manager1"), QStringLiteral("Providers")})},
        {"host's calls",
            ask.size(host, root, QStringLiteral("org.freedesktop.DBus.ObjectManager"), "GetManagedObjects")},
        {"objects (QObject)", inside.value(QStringLiteral("objects")).toLongLong()},
        {"match rules at the daemon", inventory.matchRules.size()},
        {"subscriptions in Qt's bus layer", inside.value(QStringLiteral("signal hooks")).toLongLong()},
        {"peers watched by Qt's bus layer", inside.value(QStringLiteral("watched peers")).toLongLong()},
        {"pending calls", inside.value(QStringLiteral("pending calls")).toLongLong()},
        {"file descriptors", entries(process + QStringLiteral("/fd"))},
        {"threads", entries(process + QStringLiteral("/task"))},
        {"connections to the bus", ask.size(daemon, daemonPath, statistics, "GetAllMatchRules")},
    };
    inventory.heap = inside.value(QStringLiteral("heap")).toLongLong();
    inventory.resident = residentBytes(process);
    return inventory;
}

bool Inventory::operator==(const Inventory &other) const
{
    const auto sameValue = [](const Count &one, const Count &another) { return one.value == another.value; };
    return matchRules == other.matchRules
        && std::equal(counts.begin(), counts.end(), other.counts.begin(), other.counts.end(), sameValue);
}

QString Inventory::comparedWith(const Inventory &other) const
{
    QString table = QString::asprintf("%-34s %12s %12s\n", "", "begin", "end");
    for (int i = 0; i < counts.size(); ++i) {
        const qint64 before = other.counts.at(i).value;
        const qint64 now = counts.at(i).value;
        table += QString::asprintf(
            "%-34s %12lld %12lld%s\n", counts.at(i).name, before, now, now == before ? "" : "   differs");
    }
    for (const QString &rule : without(matchRules, other.matchRules))
        table += QStringLiteral("    a rule that was not there: %1\n").arg(rule);
    for (const QString &rule : without(other.matchRules, matchRules))
        table += QStringLiteral("    a rule that is no longer there: %1\n").arg(rule);
    return table;
}
