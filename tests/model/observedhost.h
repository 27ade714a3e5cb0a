// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_OBSERVEDHOST_H
#define TESTS_OBSERVEDHOST_H

#include "expectedlog.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QPointer>
#include <abstractvoicecallhandler.h>
#include <abstractvoicecallprovider.h>
#include <functional>
#include <map>
#include <voicecallmanagerinterface.h>

/**
 * A host that writes down what it is told and asked for, in the words of CallModel, and does at once what it is
 * asked for: it selects any device, it mutes. It listens on to providers and calls that were taken back, so
 * that a word from beyond shows.
 */
class ObservedHost : public VoiceCallManagerInterface
{
    Q_OBJECT

public:
    /** `peerName` gives the name that an application has in histories, by its bus name. */
    explicit ObservedHost(std::function<std::string(const QString &)> peerName);

    void addProvider(AbstractVoiceCallProvider *provider) override;
    void removeProvider(AbstractVoiceCallProvider *provider) override;
    QString newHandlerId() override;
    AudioRouteState audioRouteState() const override { return m_audio; }
    void selectInputDevice(const QString &id) override;
    void selectOutputDevice(const QString &id) override;

    // What the host does of itself.
    void setMuted(bool muted);
    void setInputDevice(const QString &id);
    void setOutputDevice(const QString &id);
    void setDevices(unsigned count);

    /** Null when the host has none of that id. */
    AbstractVoiceCallHandler *call(const std::string &id) const;
    AbstractVoiceCallProvider *provider(const std::string &id) const;

    /**
     * Writes down a line: as a signal on the plug-in's own connection, so that the bus keeps it in order with
     * what the plug-in sends.
     */
    void note(const std::string &line);

    /** As CallModel::state() has it; what is wrong in itself follows as further lines. */
    Lines state() const;

    /** Objects that were announced as removed, or whose factory has gone, and that are still there. */
    Lines leftOver(bool all) const;

private:
    struct Provider
    {
        std::string id;
        QPointer<AbstractVoiceCallProvider> provider;
        bool removed = false;
    };

    struct Call
    {
        std::string id;
        std::string providerId;
        QPointer<AbstractVoiceCallHandler> handler;
        QElapsedTimer age;
        bool removed = false;
    };

    std::string idOf(const AbstractVoiceCallProvider *provider) const;
    void addCall(const std::string &providerId, AbstractVoiceCallHandler *handler);
    void removeCall(const std::string &providerId, const QString &id);
    void listen(const std::string &id, AbstractVoiceCallHandler *handler);
    std::string described(const Call &call) const;
    Lines oddities(const Call &call) const;

    std::function<std::string(const QString &)> m_peerName;
    std::vector<Provider> m_providers;
    std::vector<Call> m_calls;
    AudioRouteState m_audio;
    /** Since each id was asked for. */
    std::vector<QElapsedTimer> m_ages;
};

#endif
