// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_STRICTHOST_H
#define TESTS_STRICTHOST_H

#include "stage.h"

#include <QtCore/QHash>
#include <QtCore/QPointer>
#include <QtCore/QSet>
#include <QtCore/QVector>
#include <abstractvoicecallhandler.h>
#include <abstractvoicecallprovider.h>
#include <optional>
#include <voicecallmanagerinterface.h>

/**
 * A host that takes plug-ins at their word: every provider and every call is announced once and removed once, and
 * calls go before their provider does. What breaks that is a finding. It reads all there is to read of a call
 * whenever it hears of it, as call screens do.
 */
class StrictHost : public VoiceCallManagerInterface
{
    Q_OBJECT

public:
    StrictHost();

    void addProvider(AbstractVoiceCallProvider *provider) override;
    void removeProvider(AbstractVoiceCallProvider *provider) override;
    QString newHandlerId() override;
    AudioRouteState audioRouteState() const override { return m_audio; }
    void selectInputDevice(const QString &id) override;
    void selectOutputDevice(const QString &id) override;

    /** Takes a step towards calls, providers or audio. */
    void act(const HostStep &step);

    /** The next step is taken from inside a signal. */
    void reactWith(const HostStep &step) { m_reaction = step; }

    /** Requires that nothing is left: no provider, no call, no object that the plug-in has made. */
    void requireEmpty() const;

    /** Calls that were announced, and those that were removed again. */
    unsigned added() const { return m_added; }
    unsigned removed() const { return m_removed; }

    /** The plug-in was deleted, with everything that it had announced. */
    void forget();

private:
    void actOnCall(const HostStep &step);
    void actOnProvider(const HostStep &step);
    void addCall(AbstractVoiceCallHandler *call);
    void removeCall(const QString &id);
    void changed(AbstractVoiceCallHandler *call);
    void react();
    void track(QObject *object);

    QVector<AbstractVoiceCallProvider *> m_providers;
    QVector<QPointer<AbstractVoiceCallHandler>> m_calls; // removed ones, too, until they are deleted
    QHash<QString, AbstractVoiceCallHandler *> m_listed; // by id
    QSet<QString> m_issuedIds;
    int m_lastId = 0;
    int m_objects = 0;
    unsigned m_added = 0;
    unsigned m_removed = 0;
    AudioRouteState m_audio;
    std::optional<HostStep> m_reaction;
};

#endif
