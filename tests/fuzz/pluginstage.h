// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_PLUGINSTAGE_H
#define TESTS_PLUGINSTAGE_H

#include "plugin/callproviderfactory.h"
#include "stage.h"
#include "stricthost.h"
#include "testbed.h"

#include <map>
#include <memory>

/** The plug-in in this process, between a strict host and the stub bus. One per input. */
class PluginStage : public Stage
{
public:
    explicit PluginStage(TestBed &bed);

    std::string hostName() const override { return StubBus::clientName(); }
    std::string name(int application) override;
    void send(int application, Message message) override;
    Message takeRequest(int application) override;
    void leave(int application) override;
    void settle() override;
    void act(const HostStep &step) override;
    void announceOwner(const std::string &name, const std::string &before, const std::string &after) override;
    void distort(Query query, Answer answer) override;

    /** Everybody leaves; requires that nothing of them is left, and after the plug-in nothing of it. */
    void finish();

private:
    bool actOnPlugin(const HostStep &step);
    void requireNobodyListed();
    void requireBroadcasts() const;
    void requireNoDescriptorHeld() const;

    TestBed &m_bed;
    StrictHost m_host;
    std::unique_ptr<CallProviderFactory> m_plugin;
    std::map<int, std::string> m_names;
    bool m_isExported = false;
    unsigned m_addedBefore;
    unsigned m_removedBefore;
    int m_descriptorsBefore;
};

#endif
