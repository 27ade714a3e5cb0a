// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALL_ABSTRACTVOICECALLHANDLER_H
#define VOICECALL_ABSTRACTVOICECALLHANDLER_H

#include "voicecallglobal.h"

#include <QtCore/QDateTime>
#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QString>

class AbstractVoiceCallProvider;

/**
 * One call, as the host sees it.
 *
 * A handler belongs to the provider that announced it with voiceCallAdded() and stays valid until the
 * provider has announced voiceCallRemoved() and control has returned to the event loop: providers
 * release handlers with deleteLater(). The host reads the getters at any time from the main thread, so
 * they must be cheap and must not block. Not every getter has a change signal: any of the signals means
 * that any of the state may have changed, and the host then reads the whole call anew.
 *
 * Commands return at once and report nothing; their effect shows in the state later, or never.
 */
class VOICECALL_EXPORT AbstractVoiceCallHandler : public QObject
{
    Q_OBJECT

public:
    enum VoiceCallStatus {
        StatusNull = 0, ///< no status known
        StatusActive = 1, ///< the parties are talking
        StatusHeld = 2, ///< established, and on hold
        StatusDialing = 3, ///< outgoing, not yet ringing at the far end
        StatusAlerting = 4, ///< outgoing, ringing at the far end
        StatusIncoming = 5, ///< incoming, ringing here
        StatusWaiting = 6, ///< incoming while another call is up
        StatusDisconnected = 7 ///< over; the call is shown until it is removed
    };
    Q_ENUM(VoiceCallStatus)

    explicit AbstractVoiceCallHandler(QObject *parent = nullptr);
    ~AbstractVoiceCallHandler() override;

    /** The provider that owns this call; never null. */
    virtual AbstractVoiceCallProvider *provider() const = 0;

    /** The id that VoiceCallManagerInterface::newHandlerId() gave for this call; constant. */
    virtual QString handlerId() const = 0;

    /** Who is at the other end, as shown to people; empty when unknown. */
    virtual QString lineId() const = 0;

    /** When the call became active; an invalid date-time when no start is kept. */
    virtual QDateTime startedAt() const = 0;

    /** Call time in whole seconds. */
    virtual int duration() const = 0;

    virtual bool isIncoming() const = 0;

    /** Whether the call is a member of a conference. */
    virtual bool isMultiparty() const = 0;

    virtual bool isEmergency() const = 0;

    virtual bool isForwarded() const = 0;

    /** Whether the far end, or the application on its behalf, has put the call on hold. */
    virtual bool isRemoteHeld() const = 0;

    /** Id of the conference that this call is a member of; empty when of none. */
    virtual QString parentHandlerId() const = 0;

    /** Members of this conference; empty for a plain call. The handlers stay their provider's. */
    virtual QList<AbstractVoiceCallHandler *> childCalls() const = 0;

    /** Address of the other end, in a scheme of the provider's choice; empty when unknown. */
    virtual QString uri() const = 0;

    /** Id of the application that carries the call; empty when unknown. */
    virtual QString appId() const = 0;

    virtual bool supportsDtmf() const = 0;

    virtual bool supportsMultiparty() const = 0;

    /** Whether hold() is offered for this call. */
    virtual bool holdable() const = 0;

    virtual VoiceCallStatus status() const = 0;

    /** Whether the call's time runs: by default when it is active or held. */
    virtual bool isOngoing() const;

public Q_SLOTS:
    virtual void answer() = 0;

    /** Ends the call in any state: rejects it while it rings. */
    virtual void hangup() = 0;

    virtual void hold(bool on = true) = 0;

    /** Passes a ringing call on to `target`. */
    virtual void deflect(const QString &target) = 0;

    /** Sends `tones` (0-9, *, #, A-D) one after the other. */
    virtual void sendDtmf(const QString &tones) = 0;

    /** Joins this call with the call of the id `callHandle`. */
    virtual void merge(const QString &callHandle) = 0;

    /** Takes this call out of its conference. */
    virtual void split() = 0;

Q_SIGNALS:
    void statusChanged(AbstractVoiceCallHandler::VoiceCallStatus status);
    void lineIdChanged(const QString &lineId);
    /** In whole seconds. */
    void durationChanged(int duration);
    void startedAtChanged(const QDateTime &startedAt);
    void emergencyChanged(bool emergency);
    void multipartyChanged(bool multiparty);
    void forwardedChanged(bool forwarded);
    void remoteHeldChanged(bool remoteHeld);
    void supportsDtmfChanged(bool supportsDtmf);
    void parentHandlerIdChanged(const QString &parentHandlerId);
    void childCallsChanged();
};

#endif
