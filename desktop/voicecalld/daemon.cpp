// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "daemon.h"

#include "audiobackends.h"
#include "audiointerface.h"
#include "audiorouting.h"
#include "buslink.h"
#include "busserver/bustree.h"
#include "callpublisher.h"
#include "managerinterface.h"
#include "pluginset.h"
#include "programs/log.h"
#include "voicecallmanager.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFileInfo>
#include <QtCore/QTimer>
#include <QtDBus/QDBusConnectionInterface>
#include <QtDBus/QDBusError>
#include <cstdio>
#include <unistd.h>

static const QString serviceName = QStringLiteral("org.tarnwickle.voicecall");
static const QString rootPath = QStringLiteral("/org/tarnwickle/voicecall");

static int fail(const QString &reason)
{
    Log::complain(reason.simplified());
    return 1;
}

Daemon::Daemon(const Options &options)
    : m_options(options),
      m_bus(QDBusConnection::sessionBus()),
      m_questionBus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("questions"))),
      m_hearing(m_bus, m_questionBus)
{
    BusLink::setLargestMessage(m_options.bounds.largestMessage);
    for (const QDBusConnection &bus : {m_bus, m_questionBus}) {
        if (bus.isConnected())
            BusLink::readWithoutLimit(bus);
    }
    connect(&m_hearing, &HearingCheck::isDeaf, this, [] {
        fail(QStringLiteral("the bus daemon answers others, but nothing arrives here any more"));
        // Taking things apart asks the daemon this and that, and would wait for each answer.
        _exit(1);
    });
}

int Daemon::run()
{
    const std::unique_ptr<AudioBackend> backend = AudioBackends::create(m_options.audio);
    if (!backend) {
        return fail(QStringLiteral("there is no audio backend '%1'; known are: %2")
                        .arg(m_options.audio, AudioBackends::names().join(QLatin1String(", "))));
    }
    if (!m_bus.isConnected())
        return fail(QStringLiteral("no session bus: %1").arg(m_bus.lastError().message()));
    m_bus.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
        QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this, SLOT(onBusLost()));

    AudioRouting audio(backend.get());
    // Listens to the audio before the plug-ins do: what they do about a change is published behind it.
    auto audioInterface = std::make_unique<AudioInterface>(&audio);
    VoiceCallManager manager(&audio, m_options.bounds);
    PluginSet plugins(&manager);
    if (!loadPlugins(plugins))
        return 1;

    BusTree tree(m_bus, rootPath);
    if (!tree.publish())
        return fail(QStringLiteral("a plug-in has taken the place of %1 on the bus").arg(rootPath));
    tree.addToRoot(std::make_unique<ManagerInterface>(&manager));
    tree.addToRoot(std::move(audioInterface));
    if (auto more = backend->makeBusInterface())
        tree.addToRoot(std::move(more));
    const CallPublisher publisher(&manager, &tree);
    return serve(plugins);
}

bool Daemon::loadPlugins(PluginSet &plugins) const
{
    QStringList files = m_options.pluginFiles;
    QStringList directories = m_options.pluginDirectories;
    if (files.isEmpty() && directories.isEmpty())
        directories.append(QStringLiteral(VOICECALL_PLUGIN_DIR));
    for (const QString &directory : qAsConst(directories)) {
        const QStringList found = PluginSet::filesIn(directory);
        if (found.isEmpty())
            fail(QStringLiteral("no plug-in files in %1").arg(directory));
        files += found;
    }
    for (const QString &file : qAsConst(files)) {
        const QString reason = plugins.add(file);
        if (!reason.isEmpty())
            fail(QStringLiteral("%1 is left out: %2").arg(file, reason));
    }
    if (plugins.isEmpty())
        fail(QStringLiteral("no plug-in is left to run with"));
    return !plugins.isEmpty();
}

int Daemon::serve(const PluginSet &plugins)
{
    // From inside the event loop: the bus layer holds back what has come before it runs, and an application
    // that saw the name too early could be seen to come after it had called.
    QTimer::singleShot(0, this, [&] {
        if (claimName(plugins) != 0)
            QCoreApplication::exit(1);
    });
    const int code = QCoreApplication::exec();
    m_supervisor.isStopping();
    m_bus.unregisterService(serviceName);
    return code;
}

int Daemon::claimName(const PluginSet &plugins)
{
    // Last of all: whoever sees the name finds everything behind it.
    const QDBusReply<QDBusConnectionInterface::RegisterServiceReply> claimed
        = m_bus.interface()->registerService(serviceName);
    if (!claimed.isValid())
        return fail(QStringLiteral("cannot own %1: %2").arg(serviceName, claimed.error().message()));
    if (claimed.value() != QDBusConnectionInterface::ServiceRegistered)
        return fail(anotherOwner());
    std::printf("voicecalld: ready as %s with %s\n", qUtf8Printable(serviceName),
        qUtf8Printable(plugins.ids().join(QLatin1String(", "))));
    std::fflush(stdout);
    m_supervisor.isReady();
    m_hearing.start(m_options.hearingCheckInterval);
    return 0;
}

QString Daemon::anotherOwner() const
{
    const QDBusReply<uint> pid = m_bus.interface()->servicePid(serviceName);
    const QString who = pid.isValid() ? QStringLiteral(", the process %1").arg(pid.value()) : QString();
    return QStringLiteral("another program owns %1 already%2").arg(serviceName, who);
}

void Daemon::onBusLost()
{
    fail(QStringLiteral("the session bus is gone"));
    QCoreApplication::exit(1);
}
