// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "pluginset.h"

#include "voicecallmanager.h"

#include <abstractvoicecallmanagerplugin.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QLibrary>
#include <QtCore/QPluginLoader>

PluginSet::PluginSet(VoiceCallManager *manager) : m_manager(manager) { }

PluginSet::~PluginSet()
{
    for (auto plugin = m_plugins.crbegin(); plugin != m_plugins.crend(); ++plugin)
        (*plugin)->finalize();
    // Whatever they have not taken back themselves, before the first of them goes.
    m_manager->removeProvidersSince(0);
    while (!m_plugins.isEmpty())
        destroy(m_plugins.takeLast());
}

QStringList PluginSet::filesIn(const QString &directory)
{
    QStringList files;
    const QFileInfoList entries = QDir(directory).entryInfoList(QDir::Files | QDir::System, QDir::Name);
    for (const QFileInfo &entry : entries) {
        if (QLibrary::isLibrary(entry.fileName()))
            files.append(entry.filePath());
    }
    return files;
}

QString PluginSet::add(const QString &file)
{
    // The loader searches for relative names elsewhere than in the working directory.
    const QFileInfo info(file);
    if (!info.exists())
        return QStringLiteral("there is no such file");
    if (m_files.contains(info.canonicalFilePath()))
        return QStringLiteral("it is loaded already");
    QPluginLoader loader(info.absoluteFilePath());
    // Types that the plug-in has registered cannot be unregistered: its code stays mapped when it goes.
    loader.setLoadHints(QLibrary::ResolveAllSymbolsHint | QLibrary::PreventUnloadHint);
    QObject *root = loader.instance();
    if (!root)
        return loader.errorString();
    auto *plugin = qobject_cast<AbstractVoiceCallManagerPlugin *>(root);
    if (!plugin) {
        const QString reason = QStringLiteral("it is no voice-call plug-in: its root object, a %1, is no %2")
                                   .arg(QLatin1String(root->metaObject()->className()),
                                       QLatin1String(AbstractVoiceCallManagerPlugin_iid));
        delete root;
        return reason;
    }
    const QString reason = bringUp(plugin);
    if (reason.isEmpty())
        m_files.append(info.canonicalFilePath());
    return reason;
}

QString PluginSet::bringUp(AbstractVoiceCallManagerPlugin *plugin)
{
    const int providersBefore = m_manager->providerCount();
    if (!plugin->initialize()) {
        destroy(plugin);
        return QStringLiteral("it could not be initialised");
    }
    const bool configured = plugin->configure(m_manager);
    if (configured && plugin->start()) {
        m_plugins.append(plugin);
        return QString();
    }
    plugin->finalize();
    // It may have got as far as adding providers.
    m_manager->removeProvidersSince(providersBefore);
    destroy(plugin);
    return configured ? QStringLiteral("it could not be started") : QStringLiteral("it could not be configured");
}

void PluginSet::destroy(AbstractVoiceCallManagerPlugin *plugin)
{
    // What it has left to the event loop to delete would outlive it.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    delete plugin;
}

QStringList PluginSet::ids() const
{
    QStringList ids;
    for (const AbstractVoiceCallManagerPlugin *plugin : m_plugins)
        ids.append(plugin->pluginId());
    return ids;
}
