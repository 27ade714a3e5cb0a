// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_SOAKPROBE_H
#define TESTS_SOAKPROBE_H

#include <QtCore/QVariantMap>
#include <abstractvoicecallmanagerplugin.h>

/**
 * A plug-in that makes no calls: loaded into the host beside the real one, it counts what the process holds
 * that nobody outside can see. It answers at /org/ringlet/soakprobe.
 */
class SoakProbe : public AbstractVoiceCallManagerPlugin
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.ringlet.SoakProbe")
    Q_INTERFACES(AbstractVoiceCallManagerPlugin)
    Q_PLUGIN_METADATA(IID "org.ringlet.soakprobe")

public:
    /** From here on objects are counted. */
    SoakProbe();
    ~SoakProbe() override;

    QString pluginId() const override { return QStringLiteral("soakprobe"); }
    bool initialize() override;
    bool configure(VoiceCallManagerInterface *) override { return true; }
    bool start() override { return true; }
    bool suspend() override { return true; }
    bool resume() override { return true; }
    void finalize() override { }

public Q_SLOTS:
    /**
     * "objects": QObjects of all threads made since this one, less those destroyed. "pending calls",
     * "signal hooks", "watched peers": what Qt's bus layer keeps for the session bus. "heap": bytes that
     * are allocated and not freed; 0 where the allocator is a sanitizer's. Each time the leak that
     * SOAK_LEAK in the environment names happens first.
     */
    Q_SCRIPTABLE QVariantMap Counts() const;

    /** A call has ended: the leak that goes with calls happens. */
    Q_SCRIPTABLE void EndCall() const;
};

#endif
