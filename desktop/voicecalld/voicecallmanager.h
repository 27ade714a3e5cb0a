// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALLD_VOICECALLMANAGER_H
#define VOICECALLD_VOICECALLMANAGER_H

#include "providerinfo.h"

#include <voicecallmanagerinterface.h>

#include <QtCore/QVector>

class AbstractVoiceCallHandler;
class AudioRouting;
class Call;

/**
 * The host as plug-ins see it: keeps the providers and the call list, and passes audio on to AudioRouting.
 *
 * A provider or handler that is destroyed without having been taken back is dropped all the same.
 */
class VoiceCallManager : public VoiceCallManagerInterface
{
    Q_OBJECT

public:
    /** `audio` must live longer. */
    explicit VoiceCallManager(AudioRouting *audio);

    void addProvider(AbstractVoiceCallProvider *provider) override;
    void removeProvider(AbstractVoiceCallProvider *provider) override;
    QString newHandlerId() override;
    AudioRouteState audioRouteState() const override;
    void selectInputDevice(const QString &id) override;
    void selectOutputDevice(const QString &id) override;

    /** In the order in which they came. */
    ProviderList providers() const;

    /** Null when there is none of this id. */
    AbstractVoiceCallProvider *provider(const QString &id) const;

    /** In the order in which they came. */
    const QVector<Call *> &calls() const { return m_calls; }

    /** How many providers were ever added: marks a point that removeProvidersSince() can go back to. */
    int providerCount() const { return m_serial; }

    /** Removes all that were added after providerCount() was `count`. */
    void removeProvidersSince(int count);

Q_SIGNALS:
    void providersChanged();

    /** `call` is complete, and stays valid until callRemoved() was emitted and the event loop has passed. */
    void callAdded(Call *call);
    void callRemoved(const QString &id);

private:
    struct Provider
    {
        AbstractVoiceCallProvider *object = nullptr;
        ProviderInfo info;
        int serial = 0;
    };

    const Provider *find(const AbstractVoiceCallProvider *object) const;
    void addCall(AbstractVoiceCallProvider *provider, AbstractVoiceCallHandler *handler);
    void removeCall(Call *call);
    void removeCall(AbstractVoiceCallProvider *provider, const QString &id);
    void forget(AbstractVoiceCallProvider *provider);

    AudioRouting *m_audio;
    QVector<Provider> m_providers;
    QVector<Call *> m_calls;
    int m_serial = 0;
    quint64 m_handlerIds = 0;
};

#endif
