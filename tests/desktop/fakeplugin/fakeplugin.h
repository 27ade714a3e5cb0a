// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_FAKEPLUGIN_H
#define TESTS_FAKEPLUGIN_H

#include <abstractvoicecallmanagerplugin.h>

#include <memory>

class RemoteControl;

/** Tells each step of its life on standard error; fails in the one that it was built to fail in. */
class FakePlugin : public AbstractVoiceCallManagerPlugin
{
    Q_OBJECT
    Q_INTERFACES(AbstractVoiceCallManagerPlugin)
    Q_PLUGIN_METADATA(IID "org.example.fakeplugin")

public:
    FakePlugin();
    ~FakePlugin() override;

    QString pluginId() const override;
    bool initialize() override;
    bool configure(VoiceCallManagerInterface *manager) override;
    bool start() override;
    bool suspend() override;
    bool resume() override;
    void finalize() override;

private:
    bool step(const char *name);

    std::unique_ptr<RemoteControl> m_control;
};

#endif
