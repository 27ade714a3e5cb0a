// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALL_ABSTRACTVOICECALLPROVIDER_H
#define VOICECALL_ABSTRACTVOICECALLPROVIDER_H

#include "voicecallglobal.h"

#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QString>

class AbstractVoiceCallHandler;

/**
 * A source of calls: one line, modem or application.
 *
 * A plug-in makes providers and owns them. It hands each to the host with
 * VoiceCallManagerInterface::addProvider() and takes it back with removeProvider() before it releases
 * it, which it does through deleteLater(). The host connects to the signals when the provider is added,
 * and reads voiceCalls() then for those that already exist; what was announced before is found there.
 */
class VOICECALL_EXPORT AbstractVoiceCallProvider : public QObject
{
    Q_OBJECT

public:
    explicit AbstractVoiceCallProvider(QObject *parent = nullptr);
    ~AbstractVoiceCallProvider() override;

    /** Unique among the host's providers, constant. */
    virtual QString providerId() const = 0;

    /** The kind of provider, the same for all that a plug-in makes; constant. */
    virtual QString providerType() const = 0;

    /** The calls that exist now, in no particular order; they stay the provider's. */
    virtual QList<AbstractVoiceCallHandler *> voiceCalls() const = 0;

    /** Why the last dial() was refused, for people; empty when nothing went wrong. */
    virtual QString errorString() const = 0;

public Q_SLOTS:
    /**
     * Starts an outgoing call to `msisdn`, which shows as a call of its own when it comes about.
     * False when it is refused at once; errorString() then tells why.
     */
    virtual bool dial(const QString &msisdn) = 0;

Q_SIGNALS:
    /**
     * A call exists from now on: its state is complete and can be read. What the handler signalled before
     * this, from its constructor for example, was heard by nobody.
     */
    void voiceCallAdded(AbstractVoiceCallHandler *handler);

    /**
     * The call with this id is over; its handler goes once control is back in the event loop, and the host
     * no longer listens to it.
     */
    void voiceCallRemoved(const QString &handlerId);

    /** voiceCalls() has changed; follows each of the two signals above, for hosts that keep no list. */
    void voiceCallsChanged();
};

#endif
