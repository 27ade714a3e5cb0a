// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALLD_PLUGINSET_H
#define VOICECALLD_PLUGINSET_H

#include <QtCore/QStringList>
#include <QtCore/QVector>

class AbstractVoiceCallManagerPlugin;
class VoiceCallManager;

/** The plug-ins that run, from their files to their end. */
class PluginSet
{
public:
    /** `manager` must live longer. */
    explicit PluginSet(VoiceCallManager *manager);

    /** Finalises all, makes the host let go of what is theirs, and destroys them, the last one first. */
    ~PluginSet();

    PluginSet(const PluginSet &) = delete;
    PluginSet &operator=(const PluginSet &) = delete;

    /** The plug-in files of a directory, by name. */
    static QStringList filesIn(const QString &directory);

    /**
     * Loads a file, relative ones from the working directory, and brings the plug-in up to start(). One that
     * fails is removed again whatever state it was in. Empty when it runs, otherwise the reason why not.
     */
    QString add(const QString &file);

    bool isEmpty() const { return m_plugins.isEmpty(); }

    /** The ids of the plug-ins that run. */
    QStringList ids() const;

private:
    QString bringUp(AbstractVoiceCallManagerPlugin *plugin);
    static void destroy(AbstractVoiceCallManagerPlugin *plugin);

    VoiceCallManager *m_manager;
    QStringList m_files;
    QVector<AbstractVoiceCallManagerPlugin *> m_plugins;
};

#endif
