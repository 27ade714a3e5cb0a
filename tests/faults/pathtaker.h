// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_PATHTAKER_H
#define TESTS_PATHTAKER_H

#include <abstractvoicecallmanagerplugin.h>

/** A plug-in of somebody else's that exports an object at /zelkovar/call/service, and does nothing more. */
class PathTaker : public AbstractVoiceCallManagerPlugin
{
    Q_OBJECT
    Q_INTERFACES(AbstractVoiceCallManagerPlugin)
    Q_PLUGIN_METADATA(IID "org.example.pathtaker")

public:
    QString pluginId() const override { return QStringLiteral("pathtaker"); }
    bool initialize() override;
    bool configure(VoiceCallManagerInterface *) override { return true; }
    bool start() override { return true; }
    bool suspend() override { return true; }
    bool resume() override { return true; }
    void finalize() override { }
};

#endif
