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
 * and before it runs its event loop; any of them may refuse with false, and the plug-in is then destroyed.
 * Before that, and at the end of one that ran, comes finalize(), unless it was initialize() that refused.
 * suspend() and resume() come in pairs while it runs, from hosts that suspend at all.
 *
 * The host has let go of all providers and handlers when it destroys a plug-in. It may then still have the
 * plug-in's code mapped, so static objects of the library live to the end of the process.
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

    /** Begins to work; providers may be added from here on, if not already in configure(). */
    virtual bool start() = 0;

    /** Stops using the bus and timers for a while; false when it cannot. */
    virtual bool suspend() = 0;

    /** Takes up again what suspend() has stopped. */
    virtual bool resume() = 0;

    /** The last call before the plug-in is destroyed: providers may be taken back from the host here. */
    virtual void finalize() = 0;
};

#define AbstractVoiceCallManagerPlugin_iid "org.tarnwickle.voicecall.ManagerPlugin/1.0"
Q_DECLARE_INTERFACE(AbstractVoiceCallManagerPlugin, AbstractVoiceCallManagerPlugin_iid)

#endif
