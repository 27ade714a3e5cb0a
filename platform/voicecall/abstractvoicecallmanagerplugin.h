// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALL_ABSTRACTVOICECALLMANAGERPLUGIN_H
#define VOICECALL_ABSTRACTVOICECALLMANAGERPLUGIN_H

#include "voicecallglobal.h"

#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QtPlugin>

class VoiceCallManagerInterface;

/**
 * What a plug-in library gives to the host: the root object of a QPluginLoader, found by qobject_cast.
 *
 * The host calls initialize(), configure() and start() once each, in this order, from the main thread
 * and before it runs its event loop; any of them may refuse with false, and the plug-in is then dropped.
 * suspend() and resume() come in pairs while it runs, finalize() before it is destroyed.
 *
 * A plug-in derives from this class, adds Q_INTERFACES(AbstractVoiceCallManagerPlugin) and
 * Q_PLUGIN_METADATA with an IID of its own, and is installed in the directory that the variable
 * `plugindir` of voicecall.pc names.
 */
class VOICECALL_EXPORT AbstractVoiceCallManagerPlugin : public QObject
{
    Q_OBJECT

public:
    explicit AbstractVoiceCallManagerPlugin(QObject *parent = nullptr);
    ~AbstractVoiceCallManagerPlugin() override;

    /** Names the plug-in in messages; constant. */
    virtual QString pluginId() const = 0;

    /** Takes what the plug-in needs to be reachable; false when it cannot. */
    virtual bool initialize() = 0;

    /** Hands over the host, which outlives the plug-in; false when it is not accepted. */
    virtual bool configure(VoiceCallManagerInterface *manager) = 0;

    virtual bool start() = 0;
    virtual bool suspend() = 0;
    virtual bool resume() = 0;
    virtual void finalize() = 0;
};

#define AbstractVoiceCallManagerPlugin_iid "org.tarnwickle.voicecall.ManagerPlugin/1.0"
Q_DECLARE_INTERFACE(AbstractVoiceCallManagerPlugin, AbstractVoiceCallManagerPlugin_iid)

#endif
