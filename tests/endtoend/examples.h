// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_EXAMPLES_H
#define TESTS_EXAMPLES_H

#include <QtCore/QString>
#include <QtCore/QStringList>
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
        return {isSimulator() ? QStringLiteral("--incoming") : QStringLiteral("--address"), address,
            QStringLiteral("--name"), callerName};
    }

    QString manager() const
    {
        return isSimulator() ? QStringLiteral("/ringlet/sim") : QStringLiteral("/ringlet/example");
    }

    QString callPath() const { return manager() + QStringLiteral("/call1"); }

    /** What is typed for the far end to hang up. */
    QString hangUp() const { return isSimulator() ? QStringLiteral("hangup call1") : QStringLiteral("hangup"); }

    /** The name of its tests. */
    std::string testName() const { return QString(name).remove(QLatin1Char('-')).toStdString(); }
};

inline void PrintTo(const Example &example, std::ostream *stream) { *stream << example.name.toStdString(); }

inline std::vector<Example> examples()
{
    return {{"qt"}, {"glib"}, {"sd-bus"}, {"sdbus-cpp"}, {"libdbus"}, {"dasbus"}, {"node"}};
}

inline std::vector<Example> simulatorAndExamples()
{
    std::vector<Example> all = examples();
    all.insert(all.begin(), {"simulator"});
    return all;
}

#endif
