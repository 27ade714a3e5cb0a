// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// Loads a plug-in the way a host does, first without an application object, and prints what it found as one
// JSON object. It links neither the plug-in nor the host library, and has no message bus.

#include <QtCore/QCoreApplication>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QMetaType>
#include <QtCore/QPluginLoader>
#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusMetaType>
#include <cstdio>
#include <memory>

static const char hostInterface[] = "org.tarnwickle.voicecall.ManagerPlugin/1.0";

static QJsonObject describe(QObject *instance)
{
    if (!instance)
        return {};
    return {{"className", instance->metaObject()->className()},
        {"hostInterface", instance->qt_metacast(hostInterface) != nullptr}};
}

/** Uses the code behind each type that was registered since the program began: makes, copies and marshals a value. */
static QJsonObject exerciseRegisteredTypes()
{
    QJsonObject signatures;
    for (int type = QMetaType::User; QMetaType::isRegistered(type); ++type) {
        const QVariant value(type, nullptr);
        const QByteArray signature = QDBusMetaType::typeToSignature(type);
        QDBusArgument argument;
        // Not every structure has a bus form while it is empty, but every array has.
        if (signature.startsWith('a') && !QDBusMetaType::marshall(argument, type, value.constData()))
            continue;
        signatures.insert(QMetaType::typeName(type), QString::fromLatin1(signature));
    }
    return signatures;
}

int main(int argc, char *argv[])
{
    if (argc != 2) {
        std::fputs("usage: pluginprobe FILE\n", stderr);
        return 2;
    }
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
    QPluginLoader loader(QFileInfo(QString::fromLocal8Bit(argv[1])).absoluteFilePath());
    // Older versions of Qt really unload a library; newer ones do when they are not told to keep it.
    loader.setLoadHints({});
    QJsonObject found{{"metaData", loader.metaData()}, {"loadedByLooking", loader.isLoaded()}};
    if (!loader.load()) {
        std::fprintf(stderr, "%s\n", qPrintable(loader.errorString()));
        return 1;
    }
    found["loadedWithoutApplication"] = true;

    const QCoreApplication application(argc, argv);
    QJsonArray instances;
    for (int i = 0; i < 2; ++i) {
        const std::unique_ptr<QObject> instance(loader.instance());
        instances.append(describe(instance.get()));
        if (loader.instance() != instance.get())
            found["hadTwoInstances"] = true;
    }
    found["instances"] = instances;
    found["unloaded"] = loader.unload();
    found["typesAfterwards"] = exerciseRegisteredTypes();
    std::puts(QJsonDocument(found).toJson().constData());
    return 0;
}
