// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "fakeplugin.h"

#include "remotecontrol.h"

#include <cstdio>

FakePlugin::FakePlugin() { step("loaded"); }

FakePlugin::~FakePlugin()
{
    m_control.reset();
    step("destroyed");
}

bool FakePlugin::step(const char *name)
{
    std::fprintf(stderr, FAKE_PLUGIN_ID ": %s\n", name);
    return qstrcmp(name, FAKE_PLUGIN_FAILS_IN) != 0;
}

QString FakePlugin::pluginId() const { return QStringLiteral(FAKE_PLUGIN_ID); }

bool FakePlugin::initialize()
{
    m_control = std::make_unique<RemoteControl>(QStringLiteral("/" FAKE_PLUGIN_ID));
    return step("initialize") && m_control->isPublished();
}

bool FakePlugin::configure(VoiceCallManagerInterface *manager)
{
    m_control->configure(manager);
    return step("configure");
}

bool FakePlugin::start()
{
    // Here before the host is seen on the bus; of a plug-in that fails here the host must let go again.
    m_control->AddProviderWithCall(
        QStringLiteral(FAKE_PLUGIN_ID "/first"), {{QStringLiteral("LineId"), QStringLiteral("Early")}});
    if (qEnvironmentVariableIsEmpty("FAKE_PLUGIN_KEEPS_PROVIDER"))
        m_control->RemoveProvider(QStringLiteral(FAKE_PLUGIN_ID "/first"));
    return step("start");
}

bool FakePlugin::suspend() { return step("suspend"); }

bool FakePlugin::resume() { return step("resume"); }

void FakePlugin::finalize() { step("finalize"); }
