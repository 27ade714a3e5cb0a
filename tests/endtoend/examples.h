// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_EXAMPLES_H
#define TESTS_EXAMPLES_H

#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <ostream>
#include <string>
#include <vector>

/** A program of the kit with one incoming call, named call1, that a host can do everything with. */
struct Example
{
    /** "simulator", or the folder in kit/examples. */
    QString name;

    bool isSimulator() const { return name == QLatin1String("simulator"); }

    QString program() const
    {
        return isSimulator() ? QStringLiteral(RINGLET_SIM)
                             : QStringLiteral(EXAMPLES "/%1/ringlet-example-%1").arg(name);
    }

    QStringList options(const QString &address, const QString &callerName) const
    {
        return isSimulator() ? QStringList{"--incoming", address, "--name", callerName}
                             : QStringList{address, callerName};
    }

    QString manager() const
    {
        return isSimulator() ? QStringLiteral("/ringlet/sim") : QStringLiteral("/ringlet/example");
    }

    QString callPath() const { return manager() + QStringLiteral("/call1"); }

    /** In some languages a dictionary is in another order in every run. */
    bool ordersByChance() const { return QStringList{"perl", "go", "rust"}.contains(name); }

    /** The name of its tests. */
    std::string testName() const { return QString(name).remove(QLatin1Char('-')).toStdString(); }
};

inline void PrintTo(const Example &example, std::ostream *stream) { *stream << example.name.toStdString(); }

/** Those that are built with the tree, or, if RINGLET_EXAMPLES in the environment names any, those. */
inline std::vector<Example> examples()
{
    const QString all = QStringLiteral("qt glib sd-bus sdbus-cpp libdbus dasbus gjs perl");
    std::vector<Example> examples;
    for (const QString &name : qEnvironmentVariable("RINGLET_EXAMPLES", all).split(QLatin1Char(' ')))
        examples.push_back({name});
    return examples;
}

inline std::vector<Example> simulatorAndExamples()
{
    std::vector<Example> all = examples();
    all.insert(all.begin(), {"simulator"});
    return all;
}

/** Unique name of the only application that is registered with the host. */
inline QString registeredApplication(const QString &hostName)
{
    const QDBusMessage request = QDBusMessage::createMethodCall(hostName, QStringLiteral("/zelkovar/call/service"),
        QStringLiteral("zelkovar.Call.ServiceManager1"), QStringLiteral("ListCallManagers"));
    const auto list = QDBusConnection::sessionBus().call(request).arguments().value(0).value<QDBusArgument>();
    QString application;
    list.beginArray();
    list.beginStructure();
    list >> application;
    list.endStructure();
    list.endArray();
    return application;
}

#endif
