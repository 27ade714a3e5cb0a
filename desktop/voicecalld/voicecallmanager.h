// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALLD_VOICECALLMANAGER_H
#define VOICECALLD_VOICECALLMANAGER_H

#include "bounds.h"
#include "providerinfo.h"
#include "quota.h"

#include <voicecallmanagerinterface.h>

#include <QtCore/QSet>
#include <QtCore/QVector>

class AbstractVoiceCallHandler;
class AudioRouting;
class Call;

/**
 * The host as plug-ins see it: keeps the providers and the call list, and passes audio on to AudioRouting.
 *
 * A provider or handler that is destroyed without having been taken back is dropped all the same.
 *
 * Of what plug-ins announce, as much is shown as the bounds allow. The rest is hidden, and shown when there is
 * room; it counts as not there meanwhile. A provider's application is what its id begins with, up to the second
 * slash: the plug-ins put the application's unique bus name there.
 */
class VoiceCallManager : public VoiceCallManagerInterface
{
    Q_OBJECT

public:
    /** `audio` must live longer. */
    VoiceCallManager(AudioRouting *audio, const Bounds &bounds);

    void addProvider(AbstractVoiceCallProvider *provider) override;
    void removeProvider(AbstractVoiceCallProvider *provider) override;
    QString newHandlerId() override;
    AudioRouteState audioRouteState() const override;
    void selectInputDevice(const QString &id) override;
    void selectOutputDevice(const QString &id) override;

    /** Those that are shown, in the order in which they came. */
    ProviderList providers() const;

    /** Null when there is none of this id. */
    AbstractVoiceCallProvider *provider(const QString &id) const;

    /** Those that are shown, in the order in which they came. */
    const QVector<Call *> &calls() const { return m_calls; }

    /** How many providers were ever added: marks a point that removeProvidersSince() can go back to. */
    int providerCount() const { return m_serial; }

    /** Removes all that were added after providerCount() was `count`. */
    void removeProvidersSince(int count);

Q_SIGNALS:
    void providerAdded(const ProviderInfo &provider);
    void providerRemoved(const QString &id);

    /** `call` is complete, and stays valid until callRemoved() was emitted and the event loop has passed. */
    void callAdded(Call *call);
    void callRemoved(const QString &id);

private:
    struct Provider
    {
        AbstractVoiceCallProvider *object = nullptr;
        ProviderInfo info;
        int serial = 0;
        bool isShown = false;
    };

    using Handlers = QSet<const AbstractVoiceCallHandler *>;

    const Provider *find(const AbstractVoiceCallProvider *object) const;
    /** Whether it is shown now. */
    bool show(Provider *provider);
    /** All but those that are known. */
    void addCalls(AbstractVoiceCallProvider *provider, const Handlers &known);
    void addCall(AbstractVoiceCallProvider *provider, AbstractVoiceCallHandler *handler);
    void removeCall(Call *call);
    void removeCall(AbstractVoiceCallProvider *provider, const QString &id);
    void forget(AbstractVoiceCallProvider *provider);
    /** Room has become free, and what is hidden may have it when control is back in the event loop. */
    void revealLater();
    void reveal();

    AudioRouting *m_audio;
    Bounds m_bounds;
    Quota m_providerQuota;
    Quota m_callQuota;
    bool m_hidesSomething = false;
    bool m_isToReveal = false;
    bool m_hasWarnedOfIds = false;
    QVector<Provider> m_providers;
    QVector<Call *> m_calls;
    int m_serial = 0;
    quint64 m_handlerIds = 0;
};

#endif
